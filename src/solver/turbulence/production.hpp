#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/log_faces.hpp"

namespace torvex {

// How the shear feeds the turbulence energy.
enum class Production {
    strain,       // the square of the strain rate
    launder_kato  // strain rate times vorticity: none where the flow stagnates
};

// gen of the cells 2..nx of row (j,k), per unit mass [m2/s3]. On `log_faces` the velocity is
// interpolated linearly in the logarithm of the distance from the wall.
template <Production production>
void production_row(const GridGeometry& g, FlowState& s, float viscos, int j, int k,
                    const LogFaces& log_faces = {});

}  // namespace torvex
