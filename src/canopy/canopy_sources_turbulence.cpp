// Canopy sources of the turbulence equations.
//
//   tke   su += beta_p den gp_d V^3 vol              sp -= den gp_k gp_d V vol
//   ted   su += cpe1 beta_p den gp_d V^3 ted/tke vol   sp -= den gp_e gp_d V vol
//
// both times canopy_source_factor, 0 until the iteration start_cal_src and 1 from then on. V is the
// wind speed, gp_d the drag density, gp_k and gp_e the dissipation factors. The cells on the ground
// take none of this: their balance is that of the wall. The quotient ted/tke has no guard, tke is
// clipped at TINY.
//
// reads   u, v, w, tke, ted, den, vol, gp_d, gp_k, gp_e
// writes  su, sp in 2..nx, 2..ny, 3..nz

#include "canopy/canopy_sources_turbulence.hpp"

#include <cmath>

#include "solver/turbulence/row.hpp"

namespace torvex {

namespace {

struct CanopyRows {
    Row<const float> u, v, w, den, vol, drag, dissipation;
    Row<double> su, sp;
};

CanopyRows canopy_rows(const GridGeometry& g, FlowState& s, const Field3& dissipation, int j,
                       int k) {
    const FlowState& read = s;
    return {row(read.u, j, k),      row(read.v, j, k),  row(read.w, j, k),
            row(read.den, j, k),    row(g.vol, j, k),   row(read.gp_d, j, k),
            row(dissipation, j, k), row(s.eq.su, j, k), row(s.eq.sp, j, k)};
}

[[gnu::always_inline]] inline float speed(const CanopyRows& r, int i) {
    return std::sqrt(r.u[i] * r.u[i] + r.v[i] * r.v[i] + r.w[i] * r.w[i]);
}

// The run goes on without drag where no canopy was read, and without these sources until they
// start.
bool acts(const SolverContext& ctx) {
    return ctx.flow.canopy_source_factor != 0.0F && ctx.flow.gp_d.size() > 0;
}

template <class RowSources>
void for_rows_above_ground(const GridGeometry& g, RowSources sources) {
#pragma omp parallel for schedule(static)
    for (int k = 3; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            sources(j, k);
        }
    }
}

}  // namespace

void canopy_sources_tke(const SolverContext& ctx) {
    if (!acts(ctx)) {
        return;
    }
    const GridGeometry& g = ctx.grid;
    FlowState& s = ctx.flow;
    const float beta_p = ctx.settings.canopy.beta_p;
    const float factor = s.canopy_source_factor;
    for_rows_above_ground(g, [&, beta_p, factor](int j, int k) {
        const CanopyRows r = canopy_rows(g, s, s.gp_k, j, k);
#pragma omp simd
        for (int i = 2; i <= g.nx; ++i) {
            const float V = speed(r, i);
            const float source = beta_p * r.den[i] * r.drag[i] * (V * V * V) * r.vol[i] * factor;
            const float sink = r.den[i] * r.dissipation[i] * r.drag[i] * V * r.vol[i] * factor;
            r.su[i] += static_cast<double>(source);
            r.sp[i] -= static_cast<double>(sink);
        }
    });
}

void canopy_sources_ted(const SolverContext& ctx) {
    if (!acts(ctx)) {
        return;
    }
    const GridGeometry& g = ctx.grid;
    FlowState& s = ctx.flow;
    const float cpe1 = ctx.settings.canopy.cpe1;
    const float beta_p = ctx.settings.canopy.beta_p;
    const float factor = s.canopy_source_factor;
    for_rows_above_ground(g, [&, cpe1, beta_p, factor](int j, int k) {
        const CanopyRows r = canopy_rows(g, s, s.gp_e, j, k);
        const auto tke = row(std::as_const(s.tke), j, k);
        const auto ted = row(std::as_const(s.ted), j, k);
#pragma omp simd
        for (int i = 2; i <= g.nx; ++i) {
            const float V = speed(r, i);
            const float source = cpe1 * beta_p * r.den[i] * r.drag[i] * (V * V * V) * ted[i] /
                                 tke[i] * r.vol[i] * factor;
            const float sink = r.den[i] * r.dissipation[i] * r.drag[i] * V * r.vol[i] * factor;
            r.su[i] += static_cast<double>(source);
            r.sp[i] -= static_cast<double>(sink);
        }
    });
}

}  // namespace torvex
