// The common end of the turbulence equations.
//
//   ap = (ae + aw + an + as + at + ab - sp)/urf,   su += (1 - urf) ap phi
//
// The six coefficients are summed in single precision; sp joins in double, for it may be -1e25.
// A pinned cell thus moves the fraction urf of the way to its value.
//
// plain   tests/solver/reference/plain_turbulence

#include "solver/turbulence/transport_solution.hpp"

#include "solver/constants.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/residual_sum.hpp"
#include "solver/row.hpp"
#include "solver/solver_work.hpp"
#include "solver/sweep_until.hpp"

namespace torvex {

namespace {

void relax_row(LinearSystem& eq, const Field3& phi, float urf, int j, int k, int last) {
    const auto ae = row(eq.ae, j, k);
    const auto aw = row(eq.aw, j, k);
    const auto an = row(eq.an, j, k);
    const auto as = row(eq.as, j, k);
    const auto at = row(eq.at, j, k);
    const auto ab = row(eq.ab, j, k);
    const auto sp = row(eq.sp, j, k);
    const auto x = row(phi, j, k);
    const auto ap = row(eq.ap, j, k);
    const auto su = row(eq.su, j, k);
#pragma omp simd
    for (int i = 2; i <= last; ++i) {
        const float sum = ae[i] + aw[i] + an[i] + as[i] + at[i] + ab[i];
        const float central = static_cast<float>(static_cast<double>(sum) - sp[i]) / urf;
        ap[i] = central;
        su[i] += static_cast<double>((1.0F - urf) * central * x[i]);
    }
}

void under_relax(const GridGeometry& g, LinearSystem& eq, const Field3& phi, float urf) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            fetch_row(j + 1, k, eq.ae, eq.aw, eq.an, eq.as, eq.at, eq.ab, eq.sp, phi, eq.ap, eq.su);
            relax_row(eq, phi, urf, j, k, g.nx);
        }
    }
}

}  // namespace

SolveRecord solve_transport(const SolverContext& ctx, int iter, int interval,
                            const TransportSolution& how, Field3& phi, float& resid, float& scale) {
    const GridGeometry& g = ctx.grid;
    LinearSystem& eq = ctx.flow.eq;
    const CellRange inner{2, 2, 2, g.nx, g.ny, g.nz};
    under_relax(g, eq, phi, how.urf);
    if (iter % interval == 0) {
        const EquationSums sums = equation_sums(inner, eq, phi);
        resid = sums.residual;
        scale = sums.scale;
    }
    return sweep_until(ctx.work.solvers.sweep, inner, eq, phi, how.sweep_factor, how.sweeps_allowed,
                       resid);
}

void clip_energy(const GridGeometry& g, Field3& energy) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            const auto e = row(energy, j, k);
#pragma omp simd
            for (int i = 1; i <= g.nx; ++i) {
                e[i] = e[i] < TINY ? TINY : e[i];
            }
        }
    }
}

}  // namespace torvex
