#pragma once

#include "solver/solver_context.hpp"

namespace torvex {

// Boundary steps of the turbulence equations, after the sources and before the relaxation: wall
// formulas in the cells beside walls, whose sources go into `target`, values beyond the boundary,
// coefficients towards it. The inflow plane is never written.
void bc_tke(const SolverContext& ctx, Sources target);
void bc_ted(const SolverContext& ctx, Sources target);
void bc_tkl(const SolverContext& ctx, Sources target);

// Values of vis, with model 4 of viskl too, on the boundary.
void bc_vis(const SolverContext& ctx);

}  // namespace torvex
