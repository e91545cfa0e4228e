#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Mass that leaves a cell over that which enters it, by direction [kg/s], ni*nj*nk.
struct Imbalance {
    Field3 balXi, balEt, balZe;
};

// For checking a solution; no step of a run needs it.
void BALANCE(const GridGeometry& g, const FlowState& s, Imbalance& balance);

}  // namespace torvex
