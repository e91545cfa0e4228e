#pragma once

#include "solver/solver_context.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

// The coefficient of a cell towards the wall.
template <Wall wall>
float& towards_wall(LinearSystem& eq, int i, int j, int k) {
    if constexpr (wall == Wall::ground) {
        return eq.ab(i, j, k);
    } else if constexpr (wall == Wall::top) {
        return eq.at(i, j, k);
    } else if constexpr (wall == Wall::south) {
        return eq.as(i, j, k);
    } else {
        return eq.an(i, j, k);
    }
}

enum class OpenTop {
    zero_gradient,
    as_assembled  // the value on the top plane keeps acting on the cells below it
};

// The order of boundary steps that the turbulence equations share. formula.apply<wall>(a, b) is the
// wall formula of one cell, (i,j) on the ground or the top, (i,k) on a side; it must not read cells
// other than its own.
//
//   top       wall in a wind tunnel, else open
//   ground    wall
//   sides     walls in one with side walls, else zero gradient   not with skip_sides
//   outflow   zero gradient, ae stays as assembled                     not with skip_sides
template <class Formula>
void boundary_steps(const SolverContext& ctx, Field3& phi, OpenTop open_top,
                    const Formula& formula) {
    const GridGeometry& g = ctx.grid;
    LinearSystem& eq = ctx.flow.eq;
    const bool wall_on_top = ctx.settings.wall_on_top();
    const bool walls_on_sides = ctx.settings.walls_on_sides();

#pragma omp parallel for schedule(static)
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            if (wall_on_top) {
                formula.template apply<Wall::top>(i, j);
            } else if (open_top == OpenTop::zero_gradient) {
                eq.at(i, j, g.nz) = 0.0F;
                phi(i, j, g.nk) = phi(i, j, g.nz);
            }
            formula.template apply<Wall::ground>(i, j);
        }
    }
    if (ctx.skip_sides != 0) {
        return;
    }

#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        if (walls_on_sides) {
            for (int i = 2; i <= g.nx; ++i) {
                formula.template apply<Wall::north>(i, k);
                formula.template apply<Wall::south>(i, k);
            }
        } else {
            for (int i = 2; i <= g.ni; ++i) {
                eq.an(i, g.ny, k) = 0.0F;
                phi(i, g.nj, k) = phi(i, g.ny, k);
                eq.as(i, 2, k) = 0.0F;
                phi(i, 1, k) = phi(i, 2, k);
            }
        }
        for (int j = 2; j <= g.ny; ++j) {
            phi(g.ni, j, k) = phi(g.nx, j, k);
        }
        phi(g.ni, 1, k) = phi(g.ni, 2, k);
        phi(g.ni, g.nj, k) = phi(g.ni, g.ny, k);
    }
}

}  // namespace torvex
