// CALCED: transport of the dissipation, models 1, 3 and 4.
//
//   div(den U e) - div((vis/SIGE) grad e) = CE1 CMU den^2 gen tke/mu_t - CE2 CMU den^2 tke e/mu_t
//                                           + S_canopy,   e = ted
//
// First-order upwind convection; cross diffusion explicit and without SIGE. e/k is written as
// CMU den tke/mu_t. Cells beside walls are pinned, see bc_ted. ted is not clipped: CALCVIS guards
// its division.
//
// reads   vol, xix..zez, fx..fz, nodes and centres at walls; tke, gen, vis, den, flxU..flxW, z0
// writes  ted in the interior and on the boundary but the inflow and an open top; the
//         equation; resid_e, scale_e
// ref     Launder and Spalding (1974)

#include "canopy/canopy_sources_turbulence.hpp"
#include "solver/canopy_cells_of.hpp"
#include "solver/solver_work.hpp"
#include "solver/turbulence/transport_assembly.hpp"
#include "solver/turbulence/transport_solution.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"
#include "solver/turbulence/turbulence_sources.hpp"

namespace torvex {

void ted_system(const SolverContext& ctx) {
    const CaseSettings& set = ctx.settings;
    const GridGeometry& g = ctx.grid;
    FlowState& s = ctx.flow;
    const Sources target = sources_of(s.eq);
    const DissipationConstants constants{set.CE1 * set.CMU, set.CMU * set.CE2};
    const auto source = [&, viscos = set.VISCOS](int j, int k, Row<const float> cross) {
        dissipation_source_row(g, s, constants, viscos, j, k, cross);
    };
    assemble_transport(g, s, s.ted, set.SIGE, ctx.work.transport, source, &ctx.walls.log_faces,
                       LogFlux::of_dissipation);
    if (set.canopy_on()) {
        canopy_sources_ted(canopy_cells_of(ctx, target), set.canopy, s.canopy_source_factor);
    }
    bc_ted(ctx, target);
}

SolveRecords CALCED(const SolverContext& ctx, int iter, int interval) {
    FlowState& s = ctx.flow;
    ted_system(ctx);
    const TransportSolution how{
        .urf = ctx.controls.URFE, .sweeps_allowed = ctx.controls.NSWPE, .sweep_factor = 1.0F};
    return {solve_transport(ctx, iter, interval, how, s.ted, s.resid_e, s.scale_e)};
}

}  // namespace torvex
