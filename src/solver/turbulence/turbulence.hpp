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

// The systems of these equations in flow.eq: coefficients, sources and boundary steps, everything
// before the relaxation. tke and tkl form gen, which that of ted needs.
void tke_system(const SolverContext& ctx);
void ted_system(const SolverContext& ctx);
void tkl_system(const SolverContext& ctx);

// Mixing length from tke, and from tkl.
void CALCLM(const SolverContext& ctx);
void CALCLM_(const SolverContext& ctx);

// Effective viscosity.
void CALCVIS(const SolverContext& ctx);

// The same with another relaxation: vis and viskl move the part `urf` of the way to where CALCVIS
// leads them. In the hybrid model that place depends on the URFVIS of CALCVIS, here `hybrid_urf`.
void eddy_viscosity(const SolverContext& ctx, float urf, float hybrid_urf);

}  // namespace torvex
