#pragma once

#include "base/case_settings.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Friction velocity [m/s] of the wind that has the reference speed at the gradient height of this
// roughness [m].
float friction_velocity(float z0);

// The start fields of a direction whose inflow is in equilibrium with the roughness, in place of
// INIT. s.z0 is filled before.
void fill_equilibrium_inflow(const CaseSettings& settings, const GridGeometry& g, FlowState& s);

}  // namespace torvex
