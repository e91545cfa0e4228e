// Room for the state of one wind direction.

#include "solver/flow_state.hpp"

#include "solver/flow_fields.hpp"

namespace torvex {

void allocate_fields(FlowState& s, const GridGeometry& g, int turbulence_model) {
    for (const FlowField& field : flow_fields) {
        if (has_field(turbulence_model, field)) {
            (s.*field.member).allocate(g.ni, g.nj, g.nk);
        } else {
            (s.*field.member).release();
        }
    }
    for (const auto field : system_fields) {
        (s.eq.*field).allocate(g.ni, g.nj, g.nk);
    }
    s.eq.su.allocate(g.ni, g.nj, g.nk);
    s.eq.sp.allocate(g.ni, g.nj, g.nk);
}

void release(FlowState& s) {
    s = FlowState{};
}

}  // namespace torvex
