#pragma once

#include "solver/accelerated/accelerated_work.hpp"
#include "solver/accelerated/coarse_level.hpp"
#include "solver/accelerated/turbulence_step.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// level.tau = sums over the fine cells of the residuals of the systems that stand in the fine flow,
// r = su + sum of a phi_nb - (sum of a - sp) phi. A pinned cell has none.
void sum_momentum_residuals(const SolverContext& fine, const AcceleratedWork& work,
                            CoarseLevel& level);
void sum_transport_residuals(const SolverContext& fine, Transported which, CoarseLevel& level);

// level.tau -= the residuals of the systems that stand in the coarse flow, in the form that Tau
// has.
void take_momentum_residuals(const SolverContext& coarse, CoarseLevel& level);
void take_transport_residuals(const SolverContext& coarse, Transported which, CoarseLevel& level);

}  // namespace torvex
