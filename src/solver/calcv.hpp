#pragma once

#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// Momentum along j, after CALCU: it uses the coefficients left there.
SolveRecords CALCV(const SolverContext& c, int iter, int interval);

}  // namespace torvex
