#pragma once

#include "solver/solver_context.hpp"

namespace torvex {

// Momentum along the vertical, after CALCV: it uses the coefficients left by CALCU.
void CALCW(const SolverContext& c, int iter, int interval);

}  // namespace torvex
