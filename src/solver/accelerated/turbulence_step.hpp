#pragma once

#include <cstdint>

#include "solver/accelerated/accelerated_work.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

enum class Transported : std::uint8_t { tke, ted, tkl };

// Whether a turbulence model transports it.
constexpr bool is_transported(Transported which, int turbulence_model) {
    return which == Transported::tke || (which == Transported::ted && turbulence_model != 2) ||
           (which == Transported::tkl && turbulence_model == 4);
}
Field3& field_of(Transported which, FlowState& s);

// What a level adds to its equation: a Tau, constant or not.
template <class T>
auto& tau_of(Transported which, T& tau) {
    return which == Transported::tke ? tau.tke : (which == Transported::ted ? tau.ted : tau.tkl);
}

// The system of one of them in flow.eq, unrelaxed, with what the level adds. eq.ap is not set.
// ted_system takes the production that that of tke leaves.
void transport_system(const SolverContext& c, const AcceleratedWork& work, Transported which);

// lm, where the model has one, and vis from the energies: vis moves the part `urf` of the way.
void viscosity_step(const SolverContext& c, float urf);

// Every turbulence equation of the model once, and the viscosity. `residuals`: takes resid_k,
// resid_e, resid_klm.
void turbulence_step(const SolverContext& c, AcceleratedWork& work, bool residuals);

}  // namespace torvex
