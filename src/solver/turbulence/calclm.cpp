// CALCLM, CALCLM_: mixing length of the k-l model from tke, and of the hybrid model from tkl.
//
//   L0 = KL_ALPHA sum(q h dz)/sum(q dz),   q = sqrt(2 E)      over a column
//   lm = 0.4 h/(0.4 h/L0 + 1)
//
// h is the height of the cell centre above the ground. lm tends to 0.4 h near the ground and to L0
// far above it; the 0.4 belongs to this closure and is not the KAPPA of the wall formulas.
//
// reads   tke or tkl; zn, zc
// writes  lm in 2..nx, 2..ny, 2..nz [m]
// order   the sums run upwards in single precision
// ref     Mellor and Yamada (1974), Blackadar (1962)
// plain   tests/solver/reference/plain_turbulence: mixing_length

#include <cmath>

#include "solver/row.hpp"
#include "solver/solver_work.hpp"
#include "solver/turbulence/turbulence.hpp"

namespace torvex {

namespace {

constexpr float mixing_constant = 0.4F;

// Adds plane k to the sums of the columns of row j.
void add_plane(const GridGeometry& g, const Field3& energy, int j, int k, Row<float> s1,
               Row<float> s2) {
    const auto top = row(g.zn, j, k);
    const auto top_south = row(g.zn, j - 1, k);
    const auto bottom = row(g.zn, j, k - 1);
    const auto bottom_south = row(g.zn, j - 1, k - 1);
    const auto zc = row(g.zc, j, k);
    const auto ground = row(g.zc, j, 1);
    const auto e = row(energy, j, k);
#pragma omp simd
    for (int i = 2; i <= g.nx; ++i) {
        const float q = std::sqrt(2.0F * e[i]);
        const float h = zc[i] - ground[i];
        // The south-west node counts twice on top and the north-west one not at all. The closure's
        // constants go with this thickness.
        const float dz =
            0.25F * ((top_south[i - 1] + top_south[i] + top_south[i - 1] + top[i]) -
                     (bottom_south[i - 1] + bottom_south[i] + bottom[i - 1] + bottom[i]));
        s1[i] += q * h * dz;
        s2[i] += q * dz;
    }
}

void length_row(const GridGeometry& g, Field3& lm, int j, int k, Row<const float> L0) {
    const auto zc = row(g.zc, j, k);
    const auto ground = row(g.zc, j, 1);
    const auto length = row(lm, j, k);
#pragma omp simd
    for (int i = 2; i <= g.nx; ++i) {
        const float near_ground = mixing_constant * (zc[i] - ground[i]);
        length[i] = near_ground / (near_ground / L0[i] + 1.0F);
    }
}

void mixing_length(const SolverContext& ctx, const Field3& energy) {
    const GridGeometry& g = ctx.grid;
    const float alpha = ctx.settings.KL_ALPHA;
    Field3& lm = ctx.flow.lm;
    Field2& sums1 = ctx.work.transport.column_moment;
    Field2& sums2 = ctx.work.transport.column_sum;
    fit_columns(ctx.work.transport, g);
#pragma omp parallel for schedule(static)
    for (int j = 2; j <= g.ny; ++j) {
        const auto s1 = row(sums1, j);
        const auto s2 = row(sums2, j);
        for (int i = 2; i <= g.nx; ++i) {
            s1[i] = 0.0F;
            s2[i] = 0.0F;
        }
        for (int k = 2; k <= g.nz; ++k) {
            add_plane(g, energy, j, k, s1, s2);
        }
        const auto L0 = s1;
        for (int i = 2; i <= g.nx; ++i) {
            L0[i] = alpha * s1[i] / s2[i];
        }
        for (int k = 2; k <= g.nz; ++k) {
            length_row(g, lm, j, k, L0);
        }
    }
}

}  // namespace

void CALCLM(const SolverContext& ctx) {
    mixing_length(ctx, ctx.flow.tke);
}

void CALCLM_(const SolverContext& ctx) {
    mixing_length(ctx, ctx.flow.tkl);
}

}  // namespace torvex
