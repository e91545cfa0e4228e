#pragma once

#include <cmath>

#include "mesh/grid_geometry.hpp"
#include "mesh/vec3.hpp"

// The geometry of the wall beside a cell. The ghost index of a wall holds the centre of the wall
// face, the mean of its four nodes, and the metric vectors there.
namespace torvex {

struct WallFace {
    Vec3 normal;     // unit vector towards rising index [-]
    float distance;  // from the wall to the cell centre along the normal [m]
};

// `area` is the metric vector of the direction across the wall, at the ghost index.
[[gnu::always_inline]] inline WallFace wall_face(const Vec3& area, const Vec3& cell,
                                                 const Vec3& ghost) {
    const float size = length(area);
    const Vec3 normal{area.x / size, area.y / size, area.z / size};
    return {normal, std::abs(dot(cell - ghost, normal))};
}

[[gnu::always_inline]] inline Vec3 centre_at(const GridGeometry& g, int i, int j, int k) {
    return {g.xc(i, j, k), g.yc(i, j, k), g.zc(i, j, k)};
}

// A wall across k: the ground has cell = 2 and ghost = 1, the top cell = nz and ghost = nk.
[[gnu::always_inline]] inline WallFace wall_across_k(const GridGeometry& g, int i, int j, int cell,
                                                     int ghost) {
    return wall_face({g.zex(i, j, ghost), g.zey(i, j, ghost), g.zez(i, j, ghost)},
                     centre_at(g, i, j, cell), centre_at(g, i, j, ghost));
}

// A wall across j: the south wall has cell = 2 and ghost = 1, the north wall cell = ny, ghost = nj.
[[gnu::always_inline]] inline WallFace wall_across_j(const GridGeometry& g, int i, int k, int cell,
                                                     int ghost) {
    return wall_face({g.etx(i, ghost, k), g.ety(i, ghost, k), g.etz(i, ghost, k)},
                     centre_at(g, i, cell, k), centre_at(g, i, ghost, k));
}

}  // namespace torvex
