#pragma once

#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// The pressure step of an outer iteration: face fluxes from the new velocities, the correction pp,
// and with it new velocities, fluxes and pressure.
SolveRecords CALCP(const SolverContext& c, int iter, int interval);

}  // namespace torvex
