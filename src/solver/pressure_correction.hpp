#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/pressure_gain.hpp"

namespace torvex {

// Applies pp to the velocities, the face fluxes and, under-relaxed by URFP, the pressure.
void correct_flow(const GridGeometry& g, FlowState& s, float URFP);
void correct_flow(const GridGeometry& g, const SharedGains& gains, FlowState& s, float URFP);

}  // namespace torvex
