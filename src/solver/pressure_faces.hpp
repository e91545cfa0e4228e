#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/pressure_gain.hpp"

namespace torvex {

// flxU, flxV, flxW of the faces between two cells by momentum interpolation, and face_coefficients.
void face_fluxes(const GridGeometry& g, FlowState& s);
void face_fluxes(const GridGeometry& g, const SharedGains& gains, FlowState& s);

// coefXi, coefEt, coefZe: what a face's volume flux gains per unit of the difference of pp across
// it; 0 on the boundary.
void face_coefficients(const GridGeometry& g, FlowState& s);
void face_coefficients(const GridGeometry& g, const SharedGains& gains, FlowState& s);

}  // namespace torvex
