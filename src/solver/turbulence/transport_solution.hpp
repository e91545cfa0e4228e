#pragma once

#include <string_view>

#include "solver/solver_context.hpp"

namespace torvex {

// How one of the turbulence equations is relaxed, swept and reported.
struct TransportSolution {
    float urf;                  // under-relaxation
    int sweeps_allowed;         // NSWPK or NSWPE
    float sweep_factor;         // relaxation of the sweeps
    std::string_view equation;  // "   k: n="
    std::string_view letter;    // of the residual sums in the report, "k" or "e"
};

// From the assembled system to the new phi: under-relaxation, residual and scale in iterations
// that are a multiple of `interval`, sweeps until the residual sum falls below a tenth of `resid`,
// one line of report. Between those iterations the sums compare with a stale `resid`, on purpose.
void solve_transport(const SolverContext& ctx, int iter, int interval, const TransportSolution& how,
                     Field3& phi, float& resid, float& scale);

// tke and tkl stay at TINY or above, on the inflow and south planes too. A value that is not a
// number stays, so that it is seen.
void clip_energy(const GridGeometry& g, Field3& energy);

}  // namespace torvex
