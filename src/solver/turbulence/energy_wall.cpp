// The planes of cells beside walls before the wall formulas of an energy.
//
// plain   tests/solver/reference/plain_turbulence

#include "solver/turbulence/energy_wall.hpp"

namespace torvex {

namespace {

void clear_cell(const GridGeometry& g, const FlowState& s, Sources target, int i, int j, int k) {
    const float production = s.den(i, j, k) * s.gen(i, j, k) * g.vol(i, j, k);
    target.su(i, j, k) -= static_cast<double>(production);
    target.sp(i, j, k) = 0.0;
}

}  // namespace

void clear_wall_planes(const SolverContext& ctx, Sources target) {
    const GridGeometry& g = ctx.grid;
    const FlowState& s = ctx.flow;
    const auto clear_level = [&](int k) {
#pragma omp parallel for schedule(static)
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                clear_cell(g, s, target, i, j, k);
            }
        }
    };
    clear_level(2);
    // Each cell once: a mesh of one layer or one row has its walls on the same cells.
    if (ctx.settings.wall_on_top() && g.nz > 2) {
        clear_level(g.nz);
    }
    if (ctx.settings.walls_on_sides()) {
#pragma omp parallel for schedule(static)
        for (int k = 3; k <= g.nz - 1; ++k) {
            for (int i = 2; i <= g.nx; ++i) {
                clear_cell(g, s, target, i, 2, k);
                if (g.ny > 2) {
                    clear_cell(g, s, target, i, g.ny, k);
                }
            }
        }
    }
}

}  // namespace torvex
