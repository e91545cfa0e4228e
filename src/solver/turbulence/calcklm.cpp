// CALCKLM: transport of the turbulence energy of the k-l part of the hybrid model.
//
//   div(den U k) - div((vis/KL_SIGMA_K) grad k) = den gen - KL_CMU den^2 k^2/mu_t,   k = tkl
//
// As CALCKE with its own constants, plain strain and no canopy. mu_t = vis - VISCOS is that of the
// total viscosity, which knows tkl by RATIO_KL only.
//
// reads   vol, xix..zez, fx..fz, nodes and centres at walls; u, v, w, vis, den, flxU..flxW, z0
// writes  tkl as CALCKE does tke; gen; the equation; resid_klm, scale_klm

#include "solver/solver_work.hpp"
#include "solver/turbulence/energy_wall.hpp"
#include "solver/turbulence/production.hpp"
#include "solver/turbulence/transport_assembly.hpp"
#include "solver/turbulence/transport_solution.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"
#include "solver/turbulence/turbulence_sources.hpp"

namespace torvex {

void tkl_system(const SolverContext& ctx) {
    const CaseSettings& set = ctx.settings;
    const GridGeometry& g = ctx.grid;
    FlowState& s = ctx.flow;
    const Sources target = sources_of(s.eq);
    const auto source = [&, viscos = set.VISCOS, c_mu = set.KL_CMU](int j, int k,
                                                                    Row<const float> cross) {
        production_row<Production::strain>(g, s, viscos, j, k, ctx.walls.log_faces);
        energy_source_row(g, s, s.tkl, c_mu, viscos, j, k, cross);
    };
    assemble_transport(g, s, s.tkl, set.KL_SIGMA_K, ctx.work.transport, source,
                       &ctx.walls.log_faces);
    clear_wall_planes(ctx, target);
    bc_tkl(ctx, target);
}

SolveRecords CALCKLM(const SolverContext& ctx, int iter, int interval) {
    const GridGeometry& g = ctx.grid;
    FlowState& s = ctx.flow;
    tkl_system(ctx);
    const TransportSolution how{
        .urf = ctx.controls.URFK, .sweeps_allowed = ctx.controls.NSWPK, .sweep_factor = 1.1F};
    const SolveRecord done =
        solve_transport(ctx, iter, interval, how, s.tkl, s.resid_klm, s.scale_klm);
    clip_energy(g, s.tkl);
    return {done};
}

}  // namespace torvex
