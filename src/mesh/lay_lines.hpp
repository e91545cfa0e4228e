#pragma once

#include "base/case_settings.hpp"
#include "mesh/mesh_lines.hpp"
#include "mesh/sizing_report.hpp"

namespace torvex {

// The first cell that reaches a limit: an index that is set stays.
inline void set_once(int& index, int m, bool reached) {
    if (index == 0 && reached) {
        index = m;
    }
}

// The zones round the study circle, with l_diag and grad in mode 1 of BOUNDARY_HEIGHT_MODE. A width
// or slope that no mesh can have ends the run with status 1.
DomainWidths zone_widths(const CaseSettings& settings);

// Mode 1: makes the upwind and downwind buffer zones long enough to come down from the highest
// terrain, Hmax [m], at the slope BUFFER_ZONE_SLOPE_GRADIENT within their inner half.
void connect_to_boundary(float Hmax, DomainWidths& widths);

// The counts n_* from the centre to the end of each zone and the node planes x_line, y_line. Blend
// positions and levels are not set.
MeshLines lay_lines(const CaseSettings& settings, const DomainWidths& widths);

}  // namespace torvex
