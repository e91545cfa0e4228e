#include "mesh/size_domain.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "mesh/lay_lines.hpp"
#include "mesh/mesh_counts.hpp"
#include "mesh/mesh_line_file.hpp"
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

// The zones of this case. In mode 1 Hmax is searched where the mesh of any direction can reach.
DomainWidths domain_widths(const CaseSettings& settings, MapState& maps, RunLog& log) {
    DomainWidths w = zone_widths(settings);
    if (settings.BOUNDARY_HEIGHT_MODE == 1) {
        w.elevation = elevation_in_radius(settings, w.l_diag, maps, log);
        connect_to_boundary(w.elevation.Hmax, w);
    }
    return w;
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
    report_height_mode(settings, log);
    const DomainWidths widths = domain_widths(settings, maps, log);
    MeshLines lines = lay_lines(settings, widths);
    lines.need_length = need_length(settings, widths);
    report_widths(settings, widths, log);
    // The child's own marks would move the lines that it shares with its parent.
    if (settings.DEBUG_MODE == 1 && !settings.nested()) {
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
    // A nested run keeps a part of these lines only; the fit tests what is left.
    if (!settings.nested()) {
        check_mesh_counts(lines.ni, lines.nj, lines.nk, machine_memory());
    }
    return lines;
}

}  // namespace torvex
