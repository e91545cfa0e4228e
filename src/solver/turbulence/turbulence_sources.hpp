#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/row.hpp"

namespace torvex {

// su and sp of an energy, tke or tkl, in the cells 2..nx of row (j,k); gen must stand.
//
//   su = cross + vol den gen,   sp = -vol c_mu den^2 |energy| / (mu_t + TINY)
//
// The sink is the dissipation written through the eddy viscosity, eps/k = c_mu den k / mu_t.
void energy_source_row(const GridGeometry& g, FlowState& s, const Field3& energy, float c_mu,
                       float viscos, int j, int k, Row<const float> cross);

// The constants of the dissipation equation.
struct DissipationConstants {
    float production;  // CE1*CMU
    float sink;        // CE2*CMU
};

// su and sp of ted in the cells 2..nx of row (j,k); gen must stand. Nothing but shear produces.
//
//   su = cross + vol den^2 CE1 CMU gen tke / (mu_t + TINY)
//   sp = -vol den^2 CE2 CMU tke / (mu_t + TINY)
void dissipation_source_row(const GridGeometry& g, FlowState& s, const DissipationConstants& c,
                            float viscos, int j, int k, Row<const float> cross);

}  // namespace torvex
