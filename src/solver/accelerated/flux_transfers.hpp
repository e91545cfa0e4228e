#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/accelerated/coarsening.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// The three face fluxes of a mesh.
struct FluxFields {
    Field3& east;
    Field3& north;
    Field3& top;
};
inline FluxFields fluxes_of(FlowState& s) {
    return {s.flxU, s.flxV, s.flxW};
}

// The flux through each coarse face: the sum over the fine faces in it. What a coarse cell loses is
// the sum of what its fine cells lose.
void restrict_fluxes(const Coarsening& by, const GridGeometry& coarse, const FlowState& fine,
                     const FluxFields& to);

// Adds gain times the change of the coarse fluxes, now - before, to the fine ones: in equal shares
// over the fine faces of a coarse face, linear between two of them. Each fine cell of a coarse one
// then loses the same share of what that loses.
void prolong_fluxes(const Coarsening& by, const GridGeometry& coarse, const FlowState& now,
                    const FlowState& before, float gain, FlowState& fine);

}  // namespace torvex
