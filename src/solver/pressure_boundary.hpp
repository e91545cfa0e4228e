#pragma once

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Volume fluxes through the boundary faces: area times the velocity that stands on the face. The
// top is left to bc_flux.
void boundary_fluxes(const GridGeometry& g, FlowState& s);

// Closes the top, whatever velocity stands there.
void bc_flux(const GridGeometry& g, FlowState& s);

// Zero gradient of the pressure correction on all six boundaries.
void bc_pp(const GridGeometry& g, Field3& pp);

// Zero gradient of the pressure on all six boundaries and the edges between the sides and the
// others.
void bc_p(const GridGeometry& g, Field3& p);

}  // namespace torvex
