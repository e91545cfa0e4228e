#include "canopy/clip_entities_to_cells.hpp"

#include <algorithm>
#include <cmath>

#include "canopy/shape/polygon.hpp"
#include "canopy/shape/polygon_clip.hpp"

namespace torvex {

namespace {

constexpr double least_share = 1.0e-9;  // of a cell; a clip below it is rounding

Polygon ring_of(const std::vector<int>& part_start, const std::vector<double>& x,
                const std::vector<double>& y, std::size_t part) {
    const auto first = static_cast<std::size_t>(part_start[part]);
    const std::size_t end =
        part + 1 < part_start.size() ? static_cast<std::size_t>(part_start[part + 1]) : x.size();
    return polygon_of_ring(x, y, first, end);
}

bool is_hole(const Polygon& ring, std::size_t parts) {
    return parts >= 2 && ring_turn(ring) <= 0;
}

double line_at(const Line1& line, int n) {
    return static_cast<double>(line(n));
}

// The cells first..last between the lines that the stretch low..high covers; none if last < first.
struct Cells {
    int first = 0;
    int last = 0;
};

Cells covered_cells(const Line1& line, double low, double high) {
    const std::vector<float>& at = line.values();
    const auto above_low =
        std::ranges::upper_bound(at, low, {}, [](float v) { return static_cast<double>(v); });
    const auto from_high =
        std::ranges::lower_bound(at, high, {}, [](float v) { return static_cast<double>(v); });
    const auto first = static_cast<int>(above_low - at.begin()) + 1;
    const auto last = static_cast<int>(from_high - at.begin()) + 1;
    return {std::max(first, 2), std::min(last, line.size())};
}

class Clipper {
 public:
    Clipper(const Line1& x_line, const Line1& y_line, ColumnLists& columns)
        : x_line_(x_line), y_line_(y_line), columns_(columns) {}

    void ring(const Polygon& ring, bool hole, const CanopyEntity& entity, int index) {
        piece_.attributes = entity.attributes;
        piece_.entity = index;
        hole_ = hole;
        walk_columns(ring);
    }

 private:
    // The sides of a cell that lie to the left and below are cut once for all cells that follow.
    void walk_columns(const Polygon& ring) {
        if (ring.empty()) {
            return;
        }
        const auto [low, high] = std::ranges::minmax(ring.points, {}, &PolygonPoint::x);
        const Cells cells = covered_cells(x_line_, low.x, high.x);
        if (cells.first > cells.last) {
            return;
        }
        Polygon rest = clip_at_side(ring, low_x_side, line_at(x_line_, cells.first - 1));
        for (int i = cells.first; i <= cells.last && !rest.empty(); ++i) {
            const double side = line_at(x_line_, i);
            walk_rows(clip_at_side(rest, high_x_side, side), i);
            if (i < cells.last) {
                rest = clip_at_side(rest, low_x_side, side);
            }
        }
    }

    void walk_rows(const Polygon& strip, int i) {
        if (strip.empty()) {
            return;
        }
        const auto [low, high] = std::ranges::minmax(strip.points, {}, &PolygonPoint::y);
        const Cells cells = covered_cells(y_line_, low.y, high.y);
        if (cells.first > cells.last) {
            return;
        }
        Polygon rest = clip_at_side(strip, low_y_side, line_at(y_line_, cells.first - 1));
        for (int j = cells.first; j <= cells.last && !rest.empty(); ++j) {
            const double side = line_at(y_line_, j);
            take(std::abs(polygon_area(clip_at_side(rest, high_y_side, side))), i, j);
            if (j < cells.last) {
                rest = clip_at_side(rest, low_y_side, side);
            }
        }
    }

    void take(double area, int i, int j) {
        const double S = (line_at(x_line_, i) - line_at(x_line_, i - 1)) *
                         (line_at(y_line_, j) - line_at(y_line_, j - 1));
        if (!(area >= least_share * S)) {
            return;
        }
        if (hole_) {
            columns_.at(i, j).clear();
            area = std::max(S - area, 0.0);
        }
        piece_.fraction = area / S;
        piece_.area = area;
        columns_.sums(i, j) += area;
        if (area > 0) {
            columns_.at(i, j).push(piece_);
        }
    }

    const Line1& x_line_;
    const Line1& y_line_;
    ColumnLists& columns_;
    CanopyPiece piece_;
    bool hole_ = false;
};

double distance_to_segment(double px, double py, double ax, double ay, double bx, double by) {
    // In the frame of the segment: `along` it from a, and across.
    const double angle = std::atan2(by - ay, bx - ax);
    const double along = (px - ax) * std::cos(angle) + (py - ay) * std::sin(angle);
    const double across = (py - ay) * std::cos(angle) - (px - ax) * std::sin(angle);
    const double beyond = along - std::clamp(along, 0.0, std::hypot(bx - ax, by - ay));
    return std::hypot(beyond, across);
}

}  // namespace

ColumnLists clip_entities_to_cells(const std::vector<CanopyEntity>& entities, const Line1& x_line,
                                   const Line1& y_line, bool exclude_donut_shape) {
    ColumnLists columns(x_line.size(), y_line.size());
    Clipper clipper(x_line, y_line, columns);
    for (std::size_t n = 0; n < entities.size(); ++n) {
        const CanopyEntity& entity = entities[n];
        const std::size_t parts = entity.part_start.size();
        for (std::size_t part = 0; part < parts; ++part) {
            const Polygon ring = ring_of(entity.part_start, entity.x, entity.y, part);
            const bool hole = is_hole(ring, parts);
            if (!(hole && exclude_donut_shape)) {
                clipper.ring(ring, hole, entity, static_cast<int>(n));
            }
        }
    }
    return columns;
}

double outline_area(const std::vector<int>& part_start, const std::vector<double>& x,
                    const std::vector<double>& y) {
    double sum = 0;
    for (std::size_t part = 0; part < part_start.size(); ++part) {
        const Polygon ring = ring_of(part_start, x, y, part);
        sum += is_hole(ring, part_start.size()) ? 0 : std::abs(polygon_area(ring));
    }
    return sum;
}

double distance_to_polyline(double px, double py, const std::vector<double>& x,
                            const std::vector<double>& y) {
    double least = 1.0e20;
    for (std::size_t n = 1; n < x.size(); ++n) {
        least = std::min(least, distance_to_segment(px, py, x[n - 1], y[n - 1], x[n], y[n]));
    }
    return least;
}

}  // namespace torvex
