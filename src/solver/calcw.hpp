#pragma once

#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// Momentum along the vertical, after CALCV: it uses the coefficients left by CALCU.
SolveRecords CALCW(const SolverContext& c, int iter, int interval);

}  // namespace torvex
