#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// How the shear feeds the turbulence energy.
enum class Production {
    strain,       // the square of the strain rate
    launder_kato  // strain rate times vorticity: none where the flow stagnates
};

// gen of the cells 2..nx of row (j,k), per unit mass [m2/s3].
template <Production production>
void production_row(const GridGeometry& g, FlowState& s, float viscos, int j, int k);

}  // namespace torvex
