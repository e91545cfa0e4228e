// The lines of a nested mesh. With L(1..n) the planes of the parent along one axis and c the
// half-width of the child, the first and the last plane of the child are
//
//   a = max { i : L(i) <= -c },   b = min { i : L(i) >= c }
//
// and between L(i) and L(i+1) stand the planes L(i) + m (L(i+1) - L(i))/div, m = 1..div-1.
//
// reads   nest_site%n_x_div, %n_y_div, %c2xmax, %c2ymax; x_line, y_line, i_centre, j_centre
// writes  x_line, y_line, the counts nx, ny, ni, nj, i_centre, j_centre and the marks n_*

#include "nest/nest_lines.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "maps/local_metric.hpp"
#include "mesh/mesh_counts.hpp"
#include "mesh/next_spacing.hpp"
#include "results/bracket.hpp"

namespace torvex {

namespace {

constexpr const char* block = "block nest_points";

std::string metres(float value) {
    return std::string(trimmed(edit::F(value, 12, 1))) + " m";
}

void check_nest_points(const NestPoints& nest) {
    const auto above_zero = [](const char* key, bool fits, const std::string& value) {
        if (!fits) {
            stop(180, std::string(key) + " is " + value + ", expected a value above 0", block,
                 "give half-widths in metres and divisions of 1 or more");
        }
    };
    above_zero("nest_site%c2xmax", nest.c2xmax > 0.0F, metres(nest.c2xmax));
    above_zero("nest_site%c2ymax", nest.c2ymax > 0.0F, metres(nest.c2ymax));
    above_zero("nest_site%n_x_div", nest.n_x_div >= 1, std::to_string(nest.n_x_div));
    above_zero("nest_site%n_y_div", nest.n_y_div >= 1, std::to_string(nest.n_y_div));
}

[[noreturn]] void stop_beyond_parent(const char* key, float half_width, const Line1& line) {
    stop(182,
         "the child reaches beyond the mesh of its parent: " + std::string(key) + " is " +
             metres(half_width) + ", the parent's planes go from " + metres(line(1)) + " to " +
             metres(line(line.size())),
         block, "give a smaller half-width, or run a larger parent");
}

// One axis of the fit: what it is called, the parent's planes and the plane through the centre.
struct Axis1 {
    const char* key;
    float half_width;
    int div;
    const Line1& line;
    int centre;
};

// Parent planes at the ends of the child, and between them the one through the centre.
struct Ends {
    int first = 0;
    int last = 0;
};

Ends ends_of(const Axis1& axis) {
    const Line1& line = axis.line;
    Ends ends;
    for (int i = 1; i <= line.size(); ++i) {
        if (line(i) <= -axis.half_width) {
            ends.first = i;
        }
        if (line(i) >= axis.half_width && ends.last == 0) {
            ends.last = i;
        }
    }
    if (ends.first < 1 || ends.last < 1 || ends.first >= axis.centre || ends.last <= axis.centre) {
        stop_beyond_parent(axis.key, axis.half_width, line);
    }
    return ends;
}

// As many parent cells on either side of the centre: lines across the wind are symmetric in count.
void widen_to_larger_side(const Axis1& axis, Ends& ends) {
    const int cells = std::max(axis.centre - ends.first, ends.last - axis.centre);
    ends = {axis.centre - cells, axis.centre + cells};
    if (ends.first < 1 || ends.last > axis.line.size()) {
        stop_beyond_parent(axis.key, axis.half_width, axis.line);
    }
}

void check_division(const Axis1& axis, Ends ends) {
    const std::int64_t cells = std::max(axis.centre - ends.first, ends.last - axis.centre);
    if (cells * axis.div > most_cells_outward) {
        stop(1,
             "the child needs more than " + std::to_string(most_cells_outward) +
                 " cells from its centre to an edge",
             block, "divide a parent cell into fewer cells, or give a smaller half-width");
    }
}

Line1 divided(const Axis1& axis, Ends ends) {
    Line1 fine((ends.last - ends.first) * axis.div + 1);
    int n = 0;
    for (int i = ends.first; i < ends.last; ++i) {
        const float width = axis.line(i + 1) - axis.line(i);
        for (int m = 0; m < axis.div; ++m) {
            fine(++n) =
                axis.line(i) + width * (static_cast<float>(m) / static_cast<float>(axis.div));
        }
    }
    fine(++n) = axis.line(ends.last);
    return fine;
}

// A nested mesh has no zones round its study area: all marks stand on its edges.
void set_marks(MeshLines& lines) {
    lines.n_up = lines.i_centre - 1;
    lines.n_down = lines.nx - lines.i_centre;
    lines.n_side = lines.j_centre - 1;
    lines.n_add = lines.n_blend_up = lines.n_up;
    lines.n_blend_down = lines.n_down;
    lines.n_inner = std::min(lines.n_down, lines.n_side);
    lines.n_blend_side = lines.n_side;
    lines.n_connect_up = lines.n_connect_down = 0;
}

// The circle that no buffer zone touches: the study circle, or less where lines given by hand put
// the inner edges of the zones nearer.
float unchanged_radius(const MeshLines& lines) {
    const Line1& x = lines.x_line;
    const int up = std::max(lines.i_centre - lines.n_add, 1);
    const int down = std::min(lines.i_centre + lines.n_inner, lines.nx);
    return std::min({lines.max_rad, -x(up), x(down)});
}

void warn_of_flattened_parent(const NestPoints& nest, float max_rad, RunLog& log) {
    const float farthest = std::max(nest.c2xmax, nest.c2ymax);
    if (farthest > max_rad) {
        log.warn("the child reaches " + metres(farthest) +
                 " from the centre, the study area of the parent " + metres(max_rad) +
                 ": beyond it the parent's ground is flattened and the child's is not.");
    }
}

}  // namespace

ParentLines nest_fit_lines(const CaseSettings& settings, RunLog& log, MeshLines& lines) {
    const NestPoints& nest = settings.nest;
    check_nest_points(nest);
    const float unchanged = unchanged_radius(lines);
    ParentLines parent{.x_line = std::move(lines.x_line),
                       .y_line = std::move(lines.y_line),
                       .unchanged_radius = unchanged};
    const Axis1 x{"nest_site%c2xmax", nest.c2xmax, nest.n_x_div, parent.x_line, lines.i_centre};
    const Axis1 y{"nest_site%c2ymax", nest.c2ymax, nest.n_y_div, parent.y_line, lines.j_centre};
    const Ends x_ends = ends_of(x);
    Ends y_ends = ends_of(y);
    widen_to_larger_side(y, y_ends);
    check_division(x, x_ends);
    check_division(y, y_ends);

    lines.i_centre = (x.centre - x_ends.first) * x.div + 1;
    lines.j_centre = (y.centre - y_ends.first) * y.div + 1;
    lines.nx = (x_ends.last - x_ends.first) * x.div + 1;
    lines.ny = (y_ends.last - y_ends.first) * y.div + 1;
    lines.ni = lines.nx + 1;
    lines.nj = lines.ny + 1;
    check_mesh_counts(lines.ni, lines.nj, lines.nk, machine_memory(),
                      "block nest_points, keys MIN_DZ, MESH_VRATIO");
    lines.x_line = divided(x, x_ends);
    lines.y_line = divided(y, y_ends);
    set_marks(lines);
    warn_of_flattened_parent(nest, lines.max_rad, log);
    return parent;
}

void nest_check_domain(const CaseSettings& settings, const ParentLines& parent) {
    const NestPoints& nest = settings.nest;
    check_nest_points(nest);
    const Line1& x_line = parent.x_line;
    const Line1& y_line = parent.y_line;
    const float half_x = 0.5F * (x_line(x_line.size()) - x_line(1));
    const float half_y = 0.5F * (y_line(y_line.size()) - y_line(1));
    for (int iwd = 1; iwd <= settings.N_WIND_DIRECTION; ++iwd) {
        const float angle = settings.WIND_DIRECTION_ANGLE(iwd);
        const MeshPosition at = position_from_centre(
            minutes_of(nest.lon), minutes_of(nest.lat), minutes_of(settings.CENT_LON),
            minutes_of(settings.CENT_LAT), settings.GS, angle);
        const std::string direction =
            " (wind from " + std::string(trimmed(edit::F(angle, 5, 1))) + " deg)";
        if (!(at.x >= -half_x && at.x <= half_x && at.y >= -half_y && at.y <= half_y)) {
            stop(181,
                 "the centre of the child lies " + metres(at.x) + " downwind and " + metres(at.y) +
                     " to the left of the parent's centre, outside the parent" + direction,
                 block, "a child has its centre inside its parent");
        }
        const bool inside =
            bracket(at.x + nest.c2xmax, x_line) >= 1 && bracket(at.x - nest.c2xmax, x_line) >= 1;
        if (!inside) {
            stop_beyond_parent("nest_site%c2xmax", nest.c2xmax, x_line);
        }
        if (bracket(at.y + nest.c2ymax, y_line) < 1 || bracket(at.y - nest.c2ymax, y_line) < 1) {
            stop_beyond_parent("nest_site%c2ymax", nest.c2ymax, y_line);
        }
    }
}

}  // namespace torvex
