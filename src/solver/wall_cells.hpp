#pragma once

#include "base/case_settings.hpp"
#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/log_faces.hpp"

namespace torvex {

enum class Wall { ground, top, south, north };

// What the wall formulas of momentum and turbulence need of a cell beside a wall. The cell reaches
// from the wall to twice the distance d of its centre.
struct WallCell {
    float n_x = 0, n_y = 0,
          n_z = 0;  // unit normal: the area vector across the wall over its length
    float d = 0;   // distance of the cell centre from the wall, |(c - m).n|, m the mean of the four
                   // nodes of the wall face                                  [m]
    float z0 = 0;  // roughness length of the wall                             [m]
    float L1 = 0;  // ln(d/z0)
    float L2 = 0;  // ln(2 d/z0)
    float area = 0;  // half cell at the wall over d                             [m2]
};

// The cells beside the walls of a direction: (i,j) of the ground and the top, (i,k) of the sides,
// 2..nx, 2..ny, 2..nz. Walls that the case does not have are empty.
struct Walls {
    Array2<WallCell> ground, top;   // ni*nj
    Array2<WallCell> south, north;  // ni*nk
    LogFaces log_faces;             // on the inner side of the cells
};

// Everything that mesh and roughness say of the walls, once a direction behind GRID; z0 is the
// roughness length of the ground, ni*nj, and WIND_TUNNEL_Z0 that of the other walls.
Walls wall_cells(const CaseSettings& settings, const GridGeometry& g, const Field2& z0);

// Where cell (a,b) of a wall stands, and its ghost position on the wall.
struct WallPlace {
    int i, j, k;
    int ig, jg, kg;
};

template <Wall wall>
WallPlace wall_place(const GridGeometry& g, int a, int b) {
    if constexpr (wall == Wall::ground) {
        return {a, b, 2, a, b, 1};
    } else if constexpr (wall == Wall::top) {
        return {a, b, g.nz, a, b, g.nk};
    } else if constexpr (wall == Wall::south) {
        return {a, 2, b, a, 1, b};
    } else {
        return {a, g.ny, b, a, g.nj, b};
    }
}

template <Wall wall>
const WallCell& cell_at(const Walls& walls, int a, int b) {
    if constexpr (wall == Wall::ground) {
        return walls.ground(a, b);
    } else if constexpr (wall == Wall::top) {
        return walls.top(a, b);
    } else if constexpr (wall == Wall::south) {
        return walls.south(a, b);
    } else {
        return walls.north(a, b);
    }
}

}  // namespace torvex
