#pragma once

#include <array>

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// What only the plain iteration works in.
inline constexpr std::array plain_members{&FlowState::dUxi, &FlowState::dUet, &FlowState::dUze,
                                          &FlowState::dVxi, &FlowState::dVet, &FlowState::dVze,
                                          &FlowState::dWxi, &FlowState::dWet, &FlowState::dWze};

inline void release_plain_fields(FlowState& s) {
    for (const auto member : plain_members) {
        (s.*member).release();
    }
    s.eq.res.release();
}

inline void allocate_plain_fields(const GridGeometry& g, FlowState& s) {
    for (const auto member : plain_members) {
        (s.*member).allocate(g.ni, g.nj, g.nk);
    }
    s.eq.res.allocate(g.ni, g.nj, g.nk);
}

}  // namespace torvex
