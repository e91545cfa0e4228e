#include "mesh/lay_lines.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/stop.hpp"
#include "mesh/next_spacing.hpp"

namespace torvex {

namespace {

float not_negative(float width, const char* zone, const char* keys) {
    if (!(width >= 0.0F)) {
        stop(1, std::string(zone) + " has a negative width", std::string("keys ") + keys,
             "give ratios and limits of 0 or more");
    }
    return width;
}

// Cells from the centre to the end of each zone; a node exactly on a limit ends the zone.
void count_cells(const SpacingLaw& law, const DomainWidths& w, MeshLines& lines) {
    const float max_rad = w.max_rad;
    SpacingWalk walk;
    while (lines.n_inner == 0 || lines.n_side == 0 || lines.n_up == 0 || lines.n_down == 0) {
        next_spacing(law, walk);
        set_once(lines.n_inner, walk.m, walk.acc >= max_rad);
        set_once(lines.n_side, walk.m, walk.acc >= max_rad + w.delta_s);
        set_once(lines.n_add, walk.m, walk.acc >= max_rad + w.add_length);
        set_once(lines.n_up, walk.m, walk.acc >= max_rad + w.add_length + w.delta_u_hat);
        set_once(lines.n_down, walk.m, walk.acc >= max_rad + w.delta_d_hat);
    }
}

void lay_planes(const SpacingLaw& law, MeshLines& lines) {
    lines.nx = lines.n_up + lines.n_down + 1;
    lines.ny = 2 * lines.n_side + 1;
    lines.i_centre = lines.n_up + 1;
    lines.j_centre = lines.n_side + 1;
    lines.x_line = Line1(lines.nx);
    lines.y_line = Line1(lines.ny);
    const int farthest = std::max({lines.n_up, lines.n_down, lines.n_side});
    SpacingWalk walk;
    while (walk.m < farthest) {
        next_spacing(law, walk);
        if (walk.m <= lines.n_side) {
            lines.y_line(lines.j_centre + walk.m) = walk.acc;
            lines.y_line(lines.j_centre - walk.m) = -walk.acc;
        }
        if (walk.m <= lines.n_down) {
            lines.x_line(lines.i_centre + walk.m) = walk.acc;
        }
        if (walk.m <= lines.n_up) {
            lines.x_line(lines.i_centre - walk.m) = -walk.acc;
        }
    }
}

}  // namespace

DomainWidths zone_widths(const CaseSettings& settings) {
    DomainWidths w;
    const float half_we = settings.WE_LENGTH / 2.0F;
    const float half_ns = settings.NS_LENGTH / 2.0F;
    w.max_rad = std::sqrt(half_we * half_we + half_ns * half_ns);
    const float D = 2.0F * w.max_rad;
    const float BZ_LIMIT = settings.BZ_LIMIT;
    w.delta_s = not_negative(std::max(BZ_LIMIT, settings.SIDE_BR * D), "the side buffer zone",
                             "SIDE_BR, BZ_LIMIT");
    w.add_length = not_negative(std::max(settings.ADD_LIMIT, settings.ADD_R * D),
                                "the additional zone", "ADD_R, ADD_LIMIT");
    w.delta_u = not_negative(std::max(BZ_LIMIT, settings.UP_BR * D), "the upwind buffer zone",
                             "UP_BR, BZ_LIMIT");
    w.delta_d = not_negative(std::max(BZ_LIMIT, settings.DOWN_BR * D), "the downwind buffer zone",
                             "DOWN_BR, BZ_LIMIT");
    w.delta_u_hat = w.delta_u;
    w.delta_d_hat = w.delta_d;
    if (settings.BOUNDARY_HEIGHT_MODE == 1) {
        w.grad = settings.BUFFER_ZONE_SLOPE_GRADIENT * 0.01F;
        if (!(w.grad > 0.0F)) {
            stop(1, "BUFFER_ZONE_SLOPE_GRADIENT must be above 0 percent",
                 "key BUFFER_ZONE_SLOPE_GRADIENT", "BOUNDARY_HEIGHT_MODE = 1 needs the slope");
        }
        const float reach = w.max_rad + w.add_length;
        w.l_diag = std::sqrt(w.max_rad * w.max_rad + reach * reach);
    }
    return w;
}

void connect_to_boundary(float Hmax, DomainWidths& w) {
    const float connection = Hmax / w.grad;
    w.delta_u_hat = std::max(w.delta_u, w.delta_u / 2.0F + connection);
    w.delta_d_hat = std::max(w.delta_d, w.delta_d / 2.0F + connection);
    w.reach_up = w.delta_u_hat - w.delta_u / 2.0F;
    w.reach_down = w.delta_d_hat - w.delta_d / 2.0F;
}

MeshLines lay_lines(const CaseSettings& settings, const DomainWidths& widths) {
    const SpacingLaw law = spacing_law(settings);
    MeshLines lines;
    lines.max_rad = widths.max_rad;
    count_cells(law, widths, lines);
    lay_planes(law, lines);
    return lines;
}

}  // namespace torvex
