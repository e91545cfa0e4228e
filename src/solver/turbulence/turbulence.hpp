#pragma once

#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// The turbulence equations of one outer iteration, behind the pressure correction. Which of them
// run, and in this order, is the model:
//
//   1 k-epsilon, 3 with the Launder-Kato production   CALCKE, CALCED, CALCVIS
//   2 k-l                                             CALCKE, CALCLM, CALCVIS
//   4 hybrid                                          CALCKE, CALCED, CALCKLM, CALCLM_, CALCVIS
//
// Residuals and their references are taken in iterations that are a multiple of `interval`.
SolveRecords CALCKE(const SolverContext& ctx, int iter, int interval);
SolveRecords CALCED(const SolverContext& ctx, int iter, int interval);
SolveRecords CALCKLM(const SolverContext& ctx, int iter, int interval);

// Mixing length from tke, and from tkl.
void CALCLM(const SolverContext& ctx);
void CALCLM_(const SolverContext& ctx);

// Effective viscosity.
void CALCVIS(const SolverContext& ctx);

}  // namespace torvex
