#pragma once

#include "solver/solver_context.hpp"

namespace torvex {

// The pressure step of an outer iteration: face fluxes from the new velocities, the correction pp,
// and with it new velocities, fluxes and pressure.
void CALCP(const SolverContext& c, int iter, int interval);

}  // namespace torvex
