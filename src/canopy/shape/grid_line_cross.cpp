#include "canopy/shape/grid_line_cross.hpp"

#include <algorithm>
#include <string>

#include "base/run_log.hpp"
#include "base/stop.hpp"

namespace torvex {

namespace {

[[noreturn]] void fail(int code, const std::string& text) {
    console(text);
    stop(code, text, {}, "no two points of a line may be equal");
}

bool same(PlanPoint a, PlanPoint b) {
    return a.x == b.x && a.y == b.y;
}

// The number of lines at or below a place.
int last_line(const std::vector<double>& lines, double at) {
    return static_cast<int>(std::ranges::upper_bound(lines, at) - lines.begin());
}

bool on_line(const std::vector<double>& lines, int n, double at) {
    return n > 0 && lines[static_cast<std::size_t>(n - 1)] == at;
}

}  // namespace

void set_grid_lines(GridLines& lines, const std::vector<double>& x, const std::vector<double>& y) {
    lines.x = x;
    lines.y = y;
}

GridLineCross grid_line_cross(const GridLines& lines, PlanPoint line_a, PlanPoint line_b,
                              PlanPoint segment_a, PlanPoint segment_b) {
    if (same(line_a, line_b)) {
        fail(210, "Error[210]: Length of input grid line is ZERO.");
    }
    if (same(segment_a, segment_b)) {
        fail(211, "Error[211]: Length of input polygon segment is ZERO.");
    }
    const PlanPoint d{line_b.x - line_a.x, line_b.y - line_a.y};
    const PlanPoint s{segment_b.x - segment_a.x, segment_b.y - segment_a.y};
    const double turn = d.x * s.y - d.y * s.x;
    GridLineCross cross;
    cross.point = segment_a;
    if (turn != 0) {
        const double t = ((line_a.x - segment_a.x) * d.y - (line_a.y - segment_a.y) * d.x) / -turn;
        cross.point = {segment_a.x + t * s.x, segment_a.y + t * s.y};
    }
    cross.i = last_line(lines.x, cross.point.x);
    cross.j = last_line(lines.y, cross.point.y);
    if (turn == 0) {
        console("Error[212]: ZERO DIVISION.");
        cross.code = (on_line(lines.x, cross.i, cross.point.x) ? 2 : 0) +
                     (on_line(lines.y, cross.j, cross.point.y) ? 1 : 0);
    }
    return cross;
}

}  // namespace torvex
