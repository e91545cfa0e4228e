// CALCV: momentum along j.
//
//   div(den U v) = div(mu grad v) + div(mu (dU/dy)) - dp/dy + canopy drag
//
// reads   as CALCU, with its new u and its coefficients ae..ab; URFV, NSWPV
// writes  v in 2..nx, 2..ny, 2..nz and on the outflow; su, sp, ap, res; ae..ab beside walls;
//         dVxi, dVet, dVze; resid_v and scale_v when iter is a multiple of interval
// convection  the deferred part takes the volume flux, without density, as in CALCW; on purpose

#include "solver/calcv.hpp"

#include "canopy/canopy_sources.hpp"
#include "solver/canopy_cells_of.hpp"
#include "solver/momentum_assembly.hpp"
#include "solver/momentum_boundary.hpp"
#include "solver/momentum_solution.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

SolveRecords CALCV(const SolverContext& c, int iter, int interval) {
    const Sources target = sources_of(c.flow.eq);
    assemble_momentum<Component::v>(c, c.work.momentum);
    if (c.settings.canopy_on()) {
        canopy_momentum_source(canopy_cells_of(c, target));
    }
    bc_v(c, target);
    relax_momentum(c, Component::v);
    if (iter % interval == 0) {
        reference_sums(c, Component::v);
    }
    return {solve_momentum(c, Component::v)};
}

}  // namespace torvex
