#pragma once

#include "mesh/grid_geometry.hpp"
#include "mesh/vec3.hpp"

// Area vectors [m2] of the faces of cell (i,j,k), half the cross product of the two diagonals of
// the quadrilateral, pointing towards rising index. The faces of a cell close it exactly, whatever
// its shape, which the cell-centred metric vectors do not: mass fluxes and the pressure equation
// take these.
//
// The functions *_diagonals give the cross product without the factor 0.5, for formulas that write
// it out at their end.
namespace torvex {

[[gnu::always_inline]] inline Vec3 node_at(const GridGeometry& g, int i, int j, int k) {
    return {g.xn(i, j, k), g.yn(i, j, k), g.zn(i, j, k)};
}

// Face on node plane i: i = 1..nx, j = 2..ny, k = 2..nz.
[[gnu::always_inline]] inline Vec3 east_diagonals(const GridGeometry& g, int i, int j, int k) {
    return cross(node_at(g, i, j, k) - node_at(g, i, j - 1, k - 1),
                 node_at(g, i, j - 1, k) - node_at(g, i, j, k - 1));
}

// Face on node plane j: i = 2..nx, j = 1..ny, k = 2..nz.
[[gnu::always_inline]] inline Vec3 north_diagonals(const GridGeometry& g, int i, int j, int k) {
    return cross(node_at(g, i, j, k) - node_at(g, i - 1, j, k - 1),
                 node_at(g, i, j, k - 1) - node_at(g, i - 1, j, k));
}

// Face on node plane k: i = 2..nx, j = 2..ny, k = 1..nz.
[[gnu::always_inline]] inline Vec3 top_diagonals(const GridGeometry& g, int i, int j, int k) {
    return cross(node_at(g, i, j, k) - node_at(g, i - 1, j - 1, k),
                 node_at(g, i - 1, j, k) - node_at(g, i, j - 1, k));
}

[[gnu::always_inline]] inline Vec3 halved(const Vec3& s) {
    return {0.5F * s.x, 0.5F * s.y, 0.5F * s.z};
}

[[gnu::always_inline]] inline Vec3 east_area(const GridGeometry& g, int i, int j, int k) {
    return halved(east_diagonals(g, i, j, k));
}

[[gnu::always_inline]] inline Vec3 north_area(const GridGeometry& g, int i, int j, int k) {
    return halved(north_diagonals(g, i, j, k));
}

[[gnu::always_inline]] inline Vec3 top_area(const GridGeometry& g, int i, int j, int k) {
    return halved(top_diagonals(g, i, j, k));
}

}  // namespace torvex
