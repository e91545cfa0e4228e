#pragma once

#include <string>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// The start fields of a direction and, on the plane i = 1, its inflow. s.z0 is filled before.
// `tag` names the direction in "log-upwind_roughness-<tag>".
void INIT(const CaseSettings& settings, const GridGeometry& g, float wd_angle,
          const std::string& tag, RunLog& log, FlowState& s);

// Steps of INIT for a start whose u and tke come from elsewhere: ted (and lm, where it exists) from
// tke in 2..nk, then vis (and tkl, viskl) from tke and ted. The row k = 1 is set too.
void fill_dissipation(const CaseSettings& settings, const GridGeometry& g, FlowState& s);
void fill_viscosity(const CaseSettings& settings, FlowState& s);

// Of the centre of cell (i,j,k) above the ground of its column [m].
inline float height_above_ground(const GridGeometry& g, int i, int j, int k) {
    return g.zc(i, j, k) - g.zc(i, j, 1);
}

// k = 1 takes the values of k = 2.
void copy_lowest_level(Field3& field);

// Replaces the start fields by those of a stored start, ni*nj*nk as well, but the profile on the
// plane i = 1 (all but p) stays.
void apply_stored_start(FlowState& s, FlowState stored);

}  // namespace torvex
