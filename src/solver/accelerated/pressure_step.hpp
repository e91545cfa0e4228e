#pragma once

#include "solver/accelerated/accelerated_work.hpp"
#include "solver/pressure_gain.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// What u, v and w gain from a pressure drop: with the case's relaxation, whatever the working one
// is, for it is a part of the discretisation.
SharedGains shared_gains(const SolverContext& c, const AcceleratedWork& work);

// Fluxes through all faces by momentum interpolation from u, v, w, p and work.rap.
void mass_fluxes(const SolverContext& c, const AcceleratedWork& work);

// The pressure correction: fluxes, velocities and pressure. resid_m as CALCP leaves it.
SolveRecord pressure_step(const SolverContext& c, AcceleratedWork& work);

}  // namespace torvex
