// CALCKE: transport of turbulence energy, all four models.
//
//   div(den U k) - div((vis/SIGK) grad k) = den gen - CMU den^2 k^2/mu_t + S_canopy
//
// First-order upwind convection; cross diffusion explicit and without SIGK. The dissipation is
// written through mu_t = vis - VISCOS, which lets the k-l model share the equation.
//
// reads   vol, xix..zez, fx..fz, nodes and centres at walls; u, v, w, vis, den, flxU..flxW, z0
// writes  tke in the interior and on the boundary but the inflow, clipped at TINY there too
//         (i = 1..nx, j = 1..ny, k = 2..nz); gen; the equation; resid_k, scale_k
// order   production and sinks, canopy, production out again beside walls, boundary steps,
//         under-relaxation, residual, sweeps with the factor 1.1
// ref     Launder and Spalding (1974); Kato and Launder (1993) for model 3

#include "canopy/canopy_sources_turbulence.hpp"
#include "solver/canopy_cells_of.hpp"
#include "solver/solver_work.hpp"
#include "solver/turbulence/energy_wall.hpp"
#include "solver/turbulence/production.hpp"
#include "solver/turbulence/transport_assembly.hpp"
#include "solver/turbulence/transport_solution.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"
#include "solver/turbulence/turbulence_sources.hpp"

namespace torvex {

namespace {

template <Production production>
void assemble(const SolverContext& ctx) {
    const CaseSettings& set = ctx.settings;
    const GridGeometry& g = ctx.grid;
    FlowState& s = ctx.flow;
    const auto source = [&, viscos = set.VISCOS, c_mu = set.CMU](int j, int k,
                                                                 Row<const float> cross) {
        production_row<production>(g, s, viscos, j, k, ctx.walls.log_faces);
        energy_source_row(g, s, s.tke, c_mu, viscos, j, k, cross);
    };
    assemble_transport(g, s, s.tke, set.SIGK, ctx.work.transport, source, &ctx.walls.log_faces);
}

}  // namespace

void tke_system(const SolverContext& ctx) {
    const CaseSettings& set = ctx.settings;
    FlowState& s = ctx.flow;
    const Sources target = sources_of(s.eq);
    if (set.TURBULENCE_MODEL == 3) {
        assemble<Production::launder_kato>(ctx);
    } else {
        assemble<Production::strain>(ctx);
    }
    if (set.canopy_on()) {
        canopy_sources_tke(canopy_cells_of(ctx, target), set.canopy, s.canopy_source_factor);
    }
    clear_wall_planes(ctx, target);
    bc_tke(ctx, target);
}

SolveRecords CALCKE(const SolverContext& ctx, int iter, int interval) {
    FlowState& s = ctx.flow;
    tke_system(ctx);
    const TransportSolution how{
        .urf = ctx.controls.URFK, .sweeps_allowed = ctx.controls.NSWPK, .sweep_factor = 1.1F};
    const SolveRecord done = solve_transport(ctx, iter, interval, how, s.tke, s.resid_k, s.scale_k);
    clip_energy(ctx.grid, s.tke);
    return {done};
}

}  // namespace torvex
