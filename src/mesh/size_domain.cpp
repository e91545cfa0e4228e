#include "mesh/size_domain.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "mesh/mesh_counts.hpp"
#include "mesh/mesh_line_file.hpp"
#include "mesh/next_spacing.hpp"
#include "mesh/refit_lines.hpp"
#include "mesh/sizing_report.hpp"
#include "mesh/tftb_height.hpp"
#include "mesh/vertical_levels.hpp"

namespace torvex {

namespace {

void check_spacing(const CaseSettings& settings) {
    if (!(settings.MIN_DXY <= settings.MAX_DXY)) {
        stop(156, "MIN_DXY is greater than MAX_DXY", "keys MIN_DXY, MAX_DXY",
             "MAX_DXY must be the coarsest spacing of the mesh");
    }
    if (!(settings.MESH_HRATIO >= 1.0F)) {
        stop(157, "MESH_HRATIO is below 1", "key MESH_HRATIO",
             "cells may only grow outward: give 1 or more");
    }
}

void check_sizes(const CaseSettings& settings) {
    const struct {
        const char* key;
        float value;
    } sizes[] = {{"WE_LENGTH", settings.WE_LENGTH},     {"NS_LENGTH", settings.NS_LENGTH},
                 {"MIN_DXY", settings.MIN_DXY},         {"MAX_DXY", settings.MAX_DXY},
                 {"MIN_DXY_RAD", settings.MIN_DXY_RAD}, {"MESH_HRATIO", settings.MESH_HRATIO},
                 {"SIDE_BR", settings.SIDE_BR},         {"UP_BR", settings.UP_BR},
                 {"DOWN_BR", settings.DOWN_BR},         {"ADD_R", settings.ADD_R},
                 {"BZ_LIMIT", settings.BZ_LIMIT},       {"ADD_LIMIT", settings.ADD_LIMIT}};
    for (const auto& size : sizes) {
        if (!std::isfinite(size.value)) {
            stop(1, std::string(size.key) + " is no finite number", "key " + std::string(size.key));
        }
    }
    if (!(settings.MIN_DXY > 0.0F)) {
        stop(1, "MIN_DXY must be above 0 m", "key MIN_DXY", "give the finest horizontal spacing");
    }
}

float not_negative(float width, const char* zone, const char* keys) {
    if (!(width >= 0.0F)) {
        stop(1, std::string(zone) + " has a negative width", std::string("keys ") + keys,
             "give ratios and limits of 0 or more");
    }
    return width;
}

// The zones round the study circle. In mode 1 the upwind and downwind buffer zones are long enough
// to come down from the highest terrain at the slope BUFFER_ZONE_SLOPE_GRADIENT within the inner
// half; Hmax is then searched where the mesh of any direction can reach.
DomainWidths domain_widths(const CaseSettings& settings, MapState& maps, RunLog& log) {
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
        w.elevation = elevation_in_radius(settings, w.l_diag, maps, log);
        const float connection = w.elevation.Hmax / w.grad;
        w.delta_u_hat = std::max(w.delta_u, w.delta_u / 2.0F + connection);
        w.delta_d_hat = std::max(w.delta_d, w.delta_d / 2.0F + connection);
        w.reach_up = w.delta_u_hat - w.delta_u / 2.0F;
        w.reach_down = w.delta_d_hat - w.delta_d / 2.0F;
    }
    return w;
}

void set_once(int& index, int m, bool reached) {
    if (index == 0 && reached) {
        index = m;
    }
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

// Where the flat part of each buffer zone begins: half way out, or in mode 1 behind the connection
// reach. The search ends with the third blend index, so the two n_connect may stay 0; a blend index
// stays 0 where its place lies beyond the edge, which MAKE_MESH reports.
void set_blend_positions(int BOUNDARY_HEIGHT_MODE, const DomainWidths& w, MeshLines& lines) {
    const Line1& x = lines.x_line;
    const Line1& y = lines.y_line;
    const int c = lines.i_centre;
    const int d = lines.j_centre;
    const float T_side = (y(d + lines.n_side) + y(d + lines.n_inner)) / 2.0F;
    float T_up = (x(c - lines.n_up) + x(c - lines.n_add)) / 2.0F;
    float T_down = (x(c + lines.n_down) + x(c + lines.n_inner)) / 2.0F;
    float C_up = 0.0F;
    float C_down = 0.0F;
    if (BOUNDARY_HEIGHT_MODE != 0) {
        T_up = x(c - lines.n_add) - w.reach_up;
        T_down = x(c + lines.n_inner) + w.reach_down;
        C_up = x(1) + w.reach_up;
        C_down = x(lines.nx) - w.reach_down;
    }
    const int farthest = std::max({lines.n_up, lines.n_down, lines.n_side});
    for (int m = 1; m <= farthest; ++m) {
        if (m <= lines.n_side) {
            set_once(lines.n_blend_side, m, y(d + m) >= T_side);
        }
        if (m <= lines.n_up) {
            set_once(lines.n_blend_up, m, -x(c - m) >= -T_up);
            set_once(lines.n_connect_up, m, -x(c - m) >= -C_up);
        }
        if (m <= lines.n_down) {
            set_once(lines.n_blend_down, m, x(c + m) >= T_down);
            set_once(lines.n_connect_down, m, x(c + m) >= C_down);
        }
        if (lines.n_blend_side != 0 && lines.n_blend_up != 0 && lines.n_blend_down != 0) {
            break;
        }
    }
}

MeshLines computed_lines(const CaseSettings& settings, MapState& maps, RunLog& log) {
    check_sizes(settings);
    const SpacingLaw law = spacing_law(settings);
    report_height_mode(settings, log);
    const DomainWidths widths = domain_widths(settings, maps, log);
    MeshLines lines;
    lines.max_rad = widths.max_rad;
    count_cells(law, widths, lines);
    report_widths(settings, widths, log);
    lay_planes(law, lines);
    if (settings.DEBUG_MODE == 1) {
        refit_lines(settings, log, lines);
    }
    set_blend_positions(settings.BOUNDARY_HEIGHT_MODE, widths, lines);
    return lines;
}

// A buffer zone of one cell has no plane between ramp and flat part.
void warn_of_short_zones(const MeshLines& lines, RunLog& log) {
    const auto warn = [&log](const char* zone, int cells) {
        if (cells == 1) {
            log.warn_line(" (Warning) The " + std::string(zone) +
                          " buffer zone is one cell long: widen it or use finer cells.");
        }
    };
    warn("upwind", lines.n_up - lines.n_add);
    warn("downwind", lines.n_down - lines.n_inner);
    warn("side", lines.n_side - lines.n_inner);
}

void set_domain_top(const CaseSettings& settings, MapState& maps, RunLog& log, MeshLines& lines) {
    lines.MAX_Z = settings.USE_DEFAULT_MAX_Z ? std::max(lines.elevation.Hmax + 1000.0F, 1500.0F)
                                             : settings.MAX_Z;
    lines.z_top = lines.MAX_Z;
    if (settings.USE_TFTB) {
        lines.z_top = tftb_height(settings, lines, maps, log);
    }
    report_domain_height(lines.MAX_Z, log);
}

}  // namespace

MeshLines size_domain(const CaseSettings& settings, MapState& maps, RunLog& log) {
    check_spacing(settings);
    MeshLines lines = trimmed(settings.XYCONF).empty() ? computed_lines(settings, maps, log)
                                                       : read_mesh_line_file(settings.XYCONF);
    warn_of_short_zones(lines, log);
    lines.elevation = elevation_in_domain(settings, lines.x_line(1), lines.y_line(1), maps, log);
    set_domain_top(settings, maps, log, lines);
    make_vertical_levels(settings, lines.z_top, lines);
    lines.ni = lines.nx + 1;
    lines.nj = lines.ny + 1;
    lines.nk = lines.nz + 1;
    check_mesh_counts(lines.ni, lines.nj, lines.nk, machine_memory());
    return lines;
}

}  // namespace torvex
