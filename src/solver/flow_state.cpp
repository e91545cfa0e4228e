// Room for the state of one wind direction.

#include "solver/flow_state.hpp"

#include <array>

namespace torvex {

namespace {

constexpr std::array cell_fields{
    &FlowState::u,    &FlowState::v,    &FlowState::w,      &FlowState::p,      &FlowState::pp,
    &FlowState::tke,  &FlowState::ted,  &FlowState::vis,    &FlowState::den,    &FlowState::flxU,
    &FlowState::flxV, &FlowState::flxW, &FlowState::gen,    &FlowState::dUxi,   &FlowState::dUet,
    &FlowState::dUze, &FlowState::dVxi, &FlowState::dVet,   &FlowState::dVze,   &FlowState::dWxi,
    &FlowState::dWet, &FlowState::dWze, &FlowState::coefXi, &FlowState::coefEt, &FlowState::coefZe};

constexpr std::array length_fields{&FlowState::lm, &FlowState::tkl, &FlowState::viskl};

constexpr std::array system_fields{&LinearSystem::ae, &LinearSystem::aw, &LinearSystem::an,
                                   &LinearSystem::as, &LinearSystem::at, &LinearSystem::ab,
                                   &LinearSystem::ap, &LinearSystem::res};

}  // namespace

void allocate_fields(FlowState& s, const GridGeometry& g, int turbulence_model) {
    for (const auto field : cell_fields) {
        (s.*field).allocate(g.ni, g.nj, g.nk);
    }
    for (const auto field : system_fields) {
        (s.eq.*field).allocate(g.ni, g.nj, g.nk);
    }
    s.eq.su.allocate(g.ni, g.nj, g.nk);
    s.eq.sp.allocate(g.ni, g.nj, g.nk);

    const bool with_length = turbulence_model == 2 || turbulence_model == 4;
    for (const auto field : length_fields) {
        if (with_length) {
            (s.*field).allocate(g.ni, g.nj, g.nk);
        } else {
            (s.*field).release();
        }
    }
}

void release(FlowState& s) {
    s = FlowState{};
}

}  // namespace torvex
