// The second half of a momentum equation, from the assembled system to the new velocity:
//
//   ap  = (ae + aw + an + as + at + ab - sp)/URF      no net outflow in it
//   su += (1 - URF) ap phi
//   dXxi, dXet, dXze = metric component / ap
//
// then Gauss-Seidel sweeps until the sum of |r| is below 0.1 resid or the sweeps are used up. resid
// and scale are renewed at monitor steps only: between them the stop test compares with the value
// that is there, normalised by the outer iteration or not.
//
// Sums in single precision run plane by plane of k, each plane in the order of its cells, and then
// over the planes: the same bits for any number of threads.

#include "solver/momentum_solution.hpp"

#include <cmath>
#include <string>

#include "base/edit.hpp"
#include "solver/constants.hpp"
#include "solver/residual_sum.hpp"
#include "solver/solver_work.hpp"
#include "solver/sweep_phi.hpp"

namespace torvex {

namespace {

constexpr float stop_ratio = 0.1F;

CellRange interior(const GridGeometry& g) {
    return {2, 2, 2, g.nx, g.ny, g.nz};
}

// Sum of |ap| times the speed, added to `start`.
float speed_sum(const SolverContext& c, float start) {
    const GridGeometry& g = c.grid;
    const FlowState& s = c.flow;
    std::vector<float>& plane_sums = c.work.momentum.plane_sums;
    plane_sums.resize(static_cast<std::size_t>(g.nk));
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        float sum = 0;
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                const float u = s.u(i, j, k);
                const float v = s.v(i, j, k);
                const float w = s.w(i, j, k);
                sum += std::abs(s.eq.ap(i, j, k) * std::sqrt(u * u + v * v + w * w));
            }
        }
        plane_sums[static_cast<std::size_t>(k - 1)] = sum;
    }
    float total = start;
    for (int k = 2; k <= g.nz; ++k) {
        total += plane_sums[static_cast<std::size_t>(k - 1)];
    }
    return total;
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
#pragma omp simd
            for (int i = 2; i <= g.nx; ++i) {
                const float sum = eq.ae(i, j, k) + eq.aw(i, j, k) + eq.an(i, j, k) +
                                  eq.as(i, j, k) + eq.at(i, j, k) + eq.ab(i, j, k);
                const float ap =
                    static_cast<float>(static_cast<double>(sum) - eq.sp(i, j, k)) / urf;
                eq.ap(i, j, k) = ap;
                e.dxi(i, j, k) = e.xi(i, j, k) / ap;
                e.det(i, j, k) = e.et(i, j, k) / ap;
                e.dze(i, j, k) = e.ze(i, j, k) / ap;
                eq.su(i, j, k) += static_cast<double>(kept * ap * e.phi(i, j, k));
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
    e.resid = residual_sum(interior(c.grid), c.flow.eq, e.phi, Pinned::skip);
    e.scale = speed_sum(c, e.scale_start);
}

void solve_momentum(const SolverContext& c, Component component) {
    const MomentumEquation e = momentum_equation(c, component);
    const CellRange cells = interior(c.grid);
    const float r0 = e.resid;
    float r1 = 0;
    float a = 0;
    int n = 1;
    for (; n <= e.sweeps; ++n) {
        sweep_phi(cells, c.flow.eq, e.phi, 1.0F);
        r1 = residual_sum(cells, c.flow.eq, e.phi, Pinned::skip);
        a = r1 / r0;  // not a number or infinite for r0 = 0: the sweeps are then used up
        if (stop_ratio > a) {
            break;
        }
    }
    const std::string r = std::string(", r") + e.letter;
    c.report.line(std::string("   ") + e.letter + ": n=" + edit::I(n, 3) + r + "0=" +
                  edit::E(r0, 14, 7) + r + "1=" + edit::E(r1, 14, 7) + ", a=" + edit::E(a, 14, 7));
}

}  // namespace torvex
