// bc_vis: the viscosity on the boundary. Sides and outflow copy the cells beside them, the ground
// carries the molecular viscosity; inflow and top keep theirs, but for their rows on the sides.
// Walls of a wind tunnel change nothing here.
//
// reads   vis, viskl
// writes  vis, with model 4 viskl too, at j = 1, j = nj, k = 1 and i = ni

#include "solver/turbulence/turbulence_boundary.hpp"

namespace torvex {

namespace {

void boundary_values(const GridGeometry& g, float viscos, Field3& vis) {
    for (int k = 1; k <= g.nk; ++k) {
        for (int i = 1; i <= g.ni; ++i) {
            vis(i, 1, k) = vis(i, 2, k);
            vis(i, g.nj, k) = vis(i, g.ny, k);
        }
    }
    for (int j = 1; j <= g.nj; ++j) {
        for (int i = 1; i <= g.ni; ++i) {
            vis(i, j, 1) = viscos;
        }
    }
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            vis(g.ni, j, k) = vis(g.nx, j, k);
        }
    }
}

}  // namespace

void bc_vis(const SolverContext& ctx) {
    boundary_values(ctx.grid, ctx.settings.VISCOS, ctx.flow.vis);
    if (ctx.settings.TURBULENCE_MODEL == 4) {
        boundary_values(ctx.grid, ctx.settings.VISCOS, ctx.flow.viskl);
    }
}

}  // namespace torvex
