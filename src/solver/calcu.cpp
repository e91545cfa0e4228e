// CALCU: momentum along +i, and the neighbour coefficients of all three momentum equations.
//
//   div(den U u) = div(mu grad u) + div(mu (dU/dx)) - dp/dx + canopy drag
//
// reads   vol, xix..zez, fx..fz, nodes of the outflow; u, v, w, p, vis, den, tke, flxU..flxW, z0,
//         gp_d; ETA, RATIO, URFU, NSWPU, WIND_TUNNEL_MODE, WIND_TUNNEL_Z0, CMU; outflow_mass
// writes  u in 2..nx, 2..ny, 2..nz and on the boundary but i = 1 and k = 1; su, sp, ap, res;
//         ae..ab, which CALCV and CALCW take over with the zeros of bc_u in them;
//         dUxi, dUet, dUze; resid_u and scale_u when iter is a multiple of interval
// wall    the log law, wholly explicit, see momentum_boundary
// ref     Rhie and Chow (1983) for the collocated arrangement, whose face fluxes CALCP forms

#include "solver/calcu.hpp"

#include "canopy/canopy_sources.hpp"
#include "solver/canopy_cells_of.hpp"
#include "solver/momentum_assembly.hpp"
#include "solver/momentum_boundary.hpp"
#include "solver/momentum_solution.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

SolveRecords CALCU(const SolverContext& c, int iter, int interval) {
    const Sources target = sources_of(c.flow.eq);
    assemble_momentum<Component::u>(c, c.work.momentum);
    if (c.settings.canopy_on()) {
        canopy_momentum_source(canopy_cells_of(c, target));
    }
    bc_u(c, target);
    relax_momentum(c, Component::u);
    if (iter % interval == 0) {
        reference_sums(c, Component::u);
    }
    return {solve_momentum(c, Component::u)};
}

}  // namespace torvex
