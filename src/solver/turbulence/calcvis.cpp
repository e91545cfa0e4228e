// CALCVIS: effective viscosity, molecular plus turbulent.
//
//   models 1, 3   new = CMU den tke^2/(ted + TINY) + VISCOS
//   model 2       the same with ted = CMU^(3/4) tke^(3/2)/lm
//   model 4       (1 - RATIO_KL) of the first and RATIO_KL of viskl, which is the second with
//                 tkl and KL_CMU
//
// vis and viskl move the fraction URFVIS from their old value to the new one. Nothing limits vis: a
// negative ted gives a negative turbulent part.
//
// reads   tke, ted, tkl, lm, den
// writes  vis, with model 4 viskl, in the interior and on the boundary, see bc_vis
// ref     Launder and Spalding (1974)
// plain   tests/solver/reference/plain_turbulence: viscosity

#include <cmath>

#include "solver/constants.hpp"
#include "solver/row.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"

namespace torvex {

namespace {

[[gnu::always_inline]] inline float viscosity(float c_mu, float den, float energy,
                                              float dissipation) {
    return c_mu * den * (energy * energy) / (dissipation + TINY);
}

[[gnu::always_inline]] inline float relaxed(float urf, float value, float old) {
    return urf * value + (1.0F - urf) * old;
}

void from_dissipation(const CaseSettings& set, float urf, FlowState& s, int j, int k, int last) {
    const auto tke = row(s.tke, j, k);
    const auto ted = row(s.ted, j, k);
    const auto den = row(s.den, j, k);
    const auto vis = row(s.vis, j, k);
    const float c_mu = set.CMU;
    const float viscos = set.VISCOS;
#pragma omp simd
    for (int i = 2; i <= last; ++i) {
        vis[i] = relaxed(urf, viscosity(c_mu, den[i], tke[i], ted[i]) + viscos, vis[i]);
    }
}

// From an energy and the mixing length, with the constant c_mu.
void from_length(const CaseSettings& set, float urf, const FlowState& s, const Field3& energy,
                 float c_mu, Field3& out, int j, int k, int last) {
    const auto e = row(energy, j, k);
    const auto lm = row(s.lm, j, k);
    const auto den = row(s.den, j, k);
    const auto vis = row(out, j, k);
    const float cmu34 = std::pow(c_mu, 0.75F);
    const float viscos = set.VISCOS;
#pragma omp simd
    for (int i = 2; i <= last; ++i) {
        const float dissipation = cmu34 * (std::sqrt(e[i]) * e[i]) / lm[i];
        vis[i] = relaxed(urf, viscosity(c_mu, den[i], e[i], dissipation) + viscos, vis[i]);
    }
}

void blend(const CaseSettings& set, FlowState& s, int j, int k, int last) {
    const auto viskl = row(s.viskl, j, k);
    const auto vis = row(s.vis, j, k);
    const float ratio = set.RATIO_KL;
#pragma omp simd
    for (int i = 2; i <= last; ++i) {
        vis[i] = (1.0F - ratio) * vis[i] + ratio * viskl[i];
    }
}

// vis of the hybrid model, relaxed by urf towards what CALCVIS with the factor `U` converges to.
void blend_at_rest(const CaseSettings& set, float urf, float U, FlowState& s, int j, int k,
                   int last) {
    const auto tke = row(s.tke, j, k);
    const auto ted = row(s.ted, j, k);
    const auto den = row(s.den, j, k);
    const auto viskl = row(s.viskl, j, k);
    const auto vis = row(s.vis, j, k);
    const float c_mu = set.CMU;
    const float viscos = set.VISCOS;
    const float ratio = set.RATIO_KL;
    const float part = (1.0F - ratio) * U;
    const float over = 1.0F / (1.0F - (1.0F - ratio) * (1.0F - U));
#pragma omp simd
    for (int i = 2; i <= last; ++i) {
        const float newe = viscosity(c_mu, den[i], tke[i], ted[i]) + viscos;
        vis[i] = relaxed(urf, over * (part * newe + ratio * viskl[i]), vis[i]);
    }
}

template <int model>
void inner_cells(const SolverContext& ctx, float urf) {
    const CaseSettings& set = ctx.settings;
    const GridGeometry& g = ctx.grid;
    FlowState& s = ctx.flow;
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            if constexpr (model == 2) {
                from_length(set, urf, s, s.tke, set.CMU, s.vis, j, k, g.nx);
            } else {
                from_dissipation(set, urf, s, j, k, g.nx);
            }
            if constexpr (model == 4) {
                from_length(set, urf, s, s.tkl, set.KL_CMU, s.viskl, j, k, g.nx);
                blend(set, s, j, k, g.nx);
            }
        }
    }
}

void hybrid_at_rest(const SolverContext& ctx, float urf, float U) {
    const GridGeometry& g = ctx.grid;
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            from_length(ctx.settings, urf, ctx.flow, ctx.flow.tkl, ctx.settings.KL_CMU,
                        ctx.flow.viskl, j, k, g.nx);
            blend_at_rest(ctx.settings, urf, U, ctx.flow, j, k, g.nx);
        }
    }
}

}  // namespace

void eddy_viscosity(const SolverContext& ctx, float urf, float hybrid_urf) {
    switch (ctx.settings.TURBULENCE_MODEL) {
        case 2:
            inner_cells<2>(ctx, urf);
            break;
        case 4:
            hybrid_at_rest(ctx, urf, hybrid_urf);
            break;
        default:
            inner_cells<1>(ctx, urf);
    }
    bc_vis(ctx);
}

void CALCVIS(const SolverContext& ctx) {
    const float urf = ctx.controls.URFVIS;
    switch (ctx.settings.TURBULENCE_MODEL) {
        case 2:
            inner_cells<2>(ctx, urf);
            break;
        case 4:
            inner_cells<4>(ctx, urf);
            break;
        default:
            inner_cells<1>(ctx, urf);
    }
    bc_vis(ctx);
}

}  // namespace torvex
