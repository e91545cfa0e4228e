#pragma once

#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// How one of the turbulence equations is relaxed and swept.
struct TransportSolution {
    float urf;           // under-relaxation
    int sweeps_allowed;  // NSWPK or NSWPE
    float sweep_factor;  // relaxation of the sweeps
};

// From the assembled system to the new phi: under-relaxation, residual and scale in iterations
// that are a multiple of `interval`, sweeps until the residual sum falls below a tenth of `resid`.
// Between those iterations the sums compare with a stale `resid`, on purpose.
SolveRecord solve_transport(const SolverContext& ctx, int iter, int interval,
                            const TransportSolution& how, Field3& phi, float& resid, float& scale);

// tke and tkl stay at TINY or above, on the inflow and south planes too. A value that is not a
// number stays, so that it is seen.
void clip_energy(const GridGeometry& g, Field3& energy);

}  // namespace torvex
