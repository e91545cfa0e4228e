// The second half of a momentum equation, from the assembled system to the new velocity:
//
//   ap  = (ae + aw + an + as + at + ab - sp)/URF      no net outflow in it
//   su += (1 - URF) ap phi
//   dXxi, dXet, dXze = pressure_gain(metric component, ap)
//
// then sweeps until the sum of |r| is below 0.1 resid or the sweeps are used up. resid
// and scale are renewed at monitor steps only: between them the stop test compares with the value
// that is there, normalised by the outer iteration or not.
//
// Sums in single precision run plane by plane of k, every eighth cell of the rows of a plane by
// itself, and then over the planes: the same bits for any number of threads.
//
// plain   tests/solver/reference/plain_momentum: relax, reference_sums, solve

#include "solver/momentum_solution.hpp"

#include "solver/fetch_ahead.hpp"
#include "solver/pressure_gain.hpp"
#include "solver/residual_sum.hpp"
#include "solver/solver_work.hpp"
#include "solver/sweep_until.hpp"

namespace torvex {

namespace {

CellRange interior(const GridGeometry& g) {
    return {2, 2, 2, g.nx, g.ny, g.nz};
}

}  // namespace

void relax_momentum(const SolverContext& c, Component component) {
    const GridGeometry& g = c.grid;
    LinearSystem& eq = c.flow.eq;
    const MomentumEquation e = momentum_equation(c, component);
    const float urf = e.urf;
    const float kept = 1.0F - urf;
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            const float* ae = &eq.ae(1, j, k);
            const float* aw = &eq.aw(1, j, k);
            const float* an = &eq.an(1, j, k);
            const float* as = &eq.as(1, j, k);
            const float* at = &eq.at(1, j, k);
            const float* ab = &eq.ab(1, j, k);
            const float* xi = &e.xi(1, j, k);
            const float* et = &e.et(1, j, k);
            const float* ze = &e.ze(1, j, k);
            const float* phi = &e.phi(1, j, k);
            const double* sp = &eq.sp(1, j, k);
            double* su = &eq.su(1, j, k);
            fetch_row(j + 1, k, eq.ae, eq.aw, eq.an, eq.as, eq.at, eq.ab, e.xi, e.et, e.ze, e.phi,
                      eq.sp, eq.su, eq.ap, e.dxi, e.det, e.dze);
            float* ap = &eq.ap(1, j, k);
            float* dxi = &e.dxi(1, j, k);
            float* det = &e.det(1, j, k);
            float* dze = &e.dze(1, j, k);
#pragma omp simd
            for (int n = 1; n < g.nx; ++n) {
                const float sum = ae[n] + aw[n] + an[n] + as[n] + at[n] + ab[n];
                const float central = static_cast<float>(static_cast<double>(sum) - sp[n]) / urf;
                ap[n] = central;
                dxi[n] = pressure_gain(xi[n], central);
                det[n] = pressure_gain(et[n], central);
                dze[n] = pressure_gain(ze[n], central);
                su[n] += static_cast<double>(kept * central * phi[n]);
            }
        }
    }
}

void reference_sums(const SolverContext& c, Component component) {
    const MomentumEquation e = momentum_equation(c, component);
    if (c.grid.nz < 2) {
        e.resid = 0;
        e.scale = 0;
        return;
    }
    const FlowState& s = c.flow;
    const EquationSums sums =
        equation_sums(interior(c.grid), s.eq, e.phi, {.u = s.u, .v = s.v, .w = s.w});
    e.resid = sums.residual;
    e.scale = e.scale_start + sums.scale;
}

SolveRecord solve_momentum(const SolverContext& c, Component component) {
    const MomentumEquation e = momentum_equation(c, component);
    return sweep_until(c.work.solvers.sweep, interior(c.grid), c.flow.eq, e.phi, 1.0F, e.sweeps,
                       e.resid);
}

}  // namespace torvex
