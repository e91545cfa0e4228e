#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Applies pp to the velocities, the face fluxes and, under-relaxed by URFP, the pressure.
void correct_flow(const GridGeometry& g, FlowState& s, float URFP);

}  // namespace torvex
