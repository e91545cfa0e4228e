#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

// The parent's node planes, as the sizing lays them from the keys that child and parent share.
struct ParentLines {
    Line1 x_line;  // along the wind, centre at 0 [m]
    Line1 y_line;  // across the wind [m]
    float unchanged_radius =
        0;  // round the centre, where the parent keeps the ground of the map [m]
};

// Makes the sized lines those of the child and hands back the parent's. Along each axis the child
// reaches from the last parent plane at or below minus its half-width to the first at or above plus
// its half-width, and every parent cell between is divided into n_x_div (n_y_div) equal cells. So
// every parent plane inside the child is one of the child's, the one through the centre too. Across
// the wind the larger count of parent cells is taken on both sides. The marks of the zones become
// those of a mesh without zones; levels and domain top stay.
//
// Stops: 180 half-widths not above 0, divisions below 1; 182 no parent plane far enough out; 1 a
// mesh that no index numbers or no memory holds.
ParentLines nest_fit_lines(const CaseSettings& settings, RunLog& log, MeshLines& lines);

// Tests for all wind directions, before the first of them begins, that the child lies inside the
// parent. Its centre is nest_site%lon, %lat, the parent's is CENT_LON, CENT_LAT. The angles must
// stand. Stops: 180 as above, 181 centre outside, 182 half-widths that reach beyond the parent.
void nest_check_domain(const CaseSettings& settings, const ParentLines& parent);

}  // namespace torvex
