#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Mass and momentum that enter through the plane i = 1, once per direction.
void inflow_sums(const GridGeometry& g, FlowState& s);

}  // namespace torvex
