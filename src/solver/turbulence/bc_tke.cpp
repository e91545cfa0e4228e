// bc_tke: boundary steps of tke. An open top passes no tke: at = 0 there, and the top plane follows
// the cells below it.
//
// reads   tke, u, v, w, den, vol, the wall cells
// writes  ab, at, an, as beside walls and open boundaries; su, sp of the target beside walls; tke
// on the ground,
//         the top, the sides and the outflow

#include "solver/turbulence/boundary_steps.hpp"
#include "solver/turbulence/energy_wall.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"

namespace torvex {

void bc_tke(const SolverContext& ctx, Sources target) {
    boundary_steps(ctx, ctx.flow.tke, OpenTop::zero_gradient,
                   EnergyWall(ctx, ctx.flow.tke, ctx.settings.CMU, target));
}

}  // namespace torvex
