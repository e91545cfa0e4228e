// bc_tkl: boundary steps of tkl, those of tke with the constant of the k-l model.
//
// reads   tkl, u, v, w, den, vol, the wall cells
// writes  ab, at, an, as beside walls and open boundaries; su, sp of the target beside walls; tkl
// on the ground,
//         the top, the sides and the outflow

#include "solver/turbulence/boundary_steps.hpp"
#include "solver/turbulence/energy_wall.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"

namespace torvex {

void bc_tkl(const SolverContext& ctx, Sources target) {
    boundary_steps(ctx, ctx.flow.tkl, OpenTop::zero_gradient,
                   EnergyWall(ctx, ctx.flow.tkl, ctx.settings.KL_CMU, target));
}

}  // namespace torvex
