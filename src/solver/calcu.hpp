#pragma once

#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// Momentum along +i, the first of the three: it builds the coefficients of all.
SolveRecords CALCU(const SolverContext& c, int iter, int interval);

}  // namespace torvex
