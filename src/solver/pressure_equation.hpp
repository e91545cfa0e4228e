#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Volume fluxes through the east, north and top faces [m3/s].
struct FaceFlows {
    const Field3& east;
    const Field3& north;
    const Field3& top;
};

// su = minus the mass that leaves each cell, sp = 0. Returns the sum of |su|.
float mass_source(const GridGeometry& g, const FaceFlows& flow, FlowState& s);

// ae..ab and ap of the pressure correction from coefXi, coefEt, coefZe; clears pp.
void pressure_equation(const GridGeometry& g, FlowState& s);

}  // namespace torvex
