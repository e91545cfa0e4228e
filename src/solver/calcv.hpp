#pragma once

#include "solver/solver_context.hpp"

namespace torvex {

// Momentum along j, after CALCU: it uses the coefficients left there.
void CALCV(const SolverContext& c, int iter, int interval);

}  // namespace torvex
