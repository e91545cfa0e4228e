#pragma once

#include <cmath>

#include "solver/solver_context.hpp"
#include "solver/wall.hpp"

namespace torvex {

// A cell beside a wall, and what the log law says of it. The cell reaches from the wall to twice
// the distance d of its centre; z0w is the roughness length of the wall.
struct WallLaw {
    int i, j, k;
    WallCell wall;
    float L1;  // ln(d/z0w)
    float L2;  // ln(2 d/z0w)
};

// (a, b) is (i,j) on the ground or the top, (i,k) on a side.
template <Wall wall>
WallLaw wall_law(const SolverContext& ctx, int a, int b) {
    const GridGeometry& g = ctx.grid;
    WallLaw law{a, b, b, wall_cell<wall>(g, a, b), 0.0F, 0.0F};
    float z0w = ctx.settings.WIND_TUNNEL_Z0;
    if constexpr (wall == Wall::ground) {
        law.k = 2;
        z0w = ctx.flow.z0(law.i, law.j);
    } else if constexpr (wall == Wall::top) {
        law.k = g.nz;
    } else {
        law.j = wall == Wall::south ? 2 : g.ny;
    }
    law.L1 = std::log(law.wall.d / z0w);
    law.L2 = std::log(2.0F * law.wall.d / z0w);
    return law;
}

// The coefficient of a cell towards the wall.
template <Wall wall>
float& towards_wall(LinearSystem& eq, const WallLaw& law) {
    if constexpr (wall == Wall::ground) {
        return eq.ab(law.i, law.j, law.k);
    } else if constexpr (wall == Wall::top) {
        return eq.at(law.i, law.j, law.k);
    } else if constexpr (wall == Wall::south) {
        return eq.as(law.i, law.j, law.k);
    } else {
        return eq.an(law.i, law.j, law.k);
    }
}

}  // namespace torvex
