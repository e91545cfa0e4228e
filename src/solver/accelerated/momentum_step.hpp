#pragma once

#include "solver/accelerated/accelerated_work.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// The systems of u, v and w from one old state, unrelaxed: their common coefficients in eq.ae..ab,
// canopy drag in eq.sp (canopy runs only), the right sides with wall shear and what the level adds
// in work.su_u, su_v, su_w. eq.ap is not set.
void momentum_systems(const SolverContext& c, AcceleratedWork& work);

// work.rap of these systems.
void momentum_centres(const SolverContext& c, AcceleratedWork& work);

// Relaxes and sweeps them: new u, v, w, and work.rap. `residuals`: takes resid_u, resid_v, resid_w,
// which relaxation does not change.
void solve_momentum_systems(const SolverContext& c, AcceleratedWork& work, bool residuals);

}  // namespace torvex
