#include "solver/accelerated/accelerated_iteration.hpp"

#include "solver/accelerated/coarse_cycle.hpp"
#include "solver/accelerated/coarse_level.hpp"
#include "solver/accelerated/momentum_step.hpp"
#include "solver/accelerated/pressure_step.hpp"
#include "solver/accelerated/turbulence_step.hpp"

namespace torvex {

SolveRecord accelerated_iteration(const SolverContext& c, AcceleratedWork& work,
                                  const Cycling& cycling, Coarse coarse, bool residuals) {
    if (work.coarser) {
        if (coarse == Coarse::start) {
            coarse_start(c, work, cycling);
        } else if (coarse == Coarse::cycle) {
            coarse_cycle(c, work, cycling);
        }
    }
    momentum_systems(c, work);
    solve_momentum_systems(c, work, residuals);
    const SolveRecord record = pressure_step(c, work);
    turbulence_step(c, work, residuals);
    return record;
}

}  // namespace torvex
