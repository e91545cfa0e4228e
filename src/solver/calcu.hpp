#pragma once

#include "solver/solver_context.hpp"

namespace torvex {

// Momentum along +i, the first of the three: it builds the coefficients of all.
void CALCU(const SolverContext& c, int iter, int interval);

}  // namespace torvex
