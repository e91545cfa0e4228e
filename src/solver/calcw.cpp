// CALCW: vertical momentum; no buoyancy, the flow is neutral.
//
//   div(den U w) = div(mu grad w) + div(mu (dU/dz)) - dp/dz + canopy drag
//
// reads   as CALCU, with the new u and v and the coefficients ae..ab of CALCU; URFW, NSWPW
// writes  w in 2..nx, 2..ny, 2..nz, on the sides and on the outflow; su, sp, ap, res; ae..ab beside
//         walls; dWxi, dWet, dWze; resid_w and scale_w when iter is a multiple of interval
// convection  the deferred part takes the volume flux, without density, as in CALCV; on purpose

#include "solver/calcw.hpp"

#include "canopy/canopy_sources.hpp"
#include "solver/canopy_cells_of.hpp"
#include "solver/momentum_assembly.hpp"
#include "solver/momentum_boundary.hpp"
#include "solver/momentum_solution.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

SolveRecords CALCW(const SolverContext& c, int iter, int interval) {
    const Sources target = sources_of(c.flow.eq);
    assemble_momentum<Component::w>(c, c.work.momentum);
    if (c.settings.canopy_on()) {
        canopy_momentum_source(canopy_cells_of(c, target));
    }
    bc_w(c, target);
    relax_momentum(c, Component::w);
    if (iter % interval == 0) {
        reference_sums(c, Component::w);
    }
    return {solve_momentum(c, Component::w)};
}

}  // namespace torvex
