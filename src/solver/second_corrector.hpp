#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// The part of the first correction's face fluxes that the equation of pp leaves out on a mesh whose
// cell centres are not joined along the face normals: into coefXi, coefEt, coefZe [m3/s], which
// hold the face coefficients before.
void non_orthogonal_fluxes(const GridGeometry& g, FlowState& s);

// Adds them to flxU, flxV, flxW.
void add_non_orthogonal_fluxes(const GridGeometry& g, FlowState& s);

}  // namespace torvex
