#pragma once

#include <array>
#include <functional>

#include "mesh/grid_geometry.hpp"

namespace torvex {

// Node planes along each axis.
struct Planes {
    int nx, ny, nz;
};

using Position = std::array<double, 3>;

// The functions below return a mesh with its counts and its nodes; cell centres and metrics are
// left to XYZ2XYZC and GRID. with_metrics() calls both.

// Node (i,j,k) at map(s, t, q), with s, t, q running from 0 to 1 in even steps along i, j, k.
GridGeometry mapped_mesh(Planes n, const std::function<Position(double, double, double)>& map);

// A box with its low corner at the origin and cells of dx by dy by dz.
GridGeometry uniform_mesh(Planes n, float dx, float dy, float dz);

// The same with widths that grow by rx, ry, rz from cell to cell; dx, dy, dz are the first ones.
GridGeometry stretched_mesh(Planes n, Position first, Position ratio);

// A uniform box of unit cells sheared in all three axes: x += 0.3 y, y += 0.2 z, z += 0.4 x.
GridGeometry sheared_mesh(Planes n);

// A hill between two flat ends on [0,4] x [0,3] x [0,2], levels following the ground and drawn
// together towards it, planes of i leaning and crowding towards the hill. hill_map is its map.
GridGeometry hill_mesh(Planes n);
Position hill_map(double s, double t, double q);

// Moves every node of g by up to `amplitude` in each coordinate, the boundary included. The same
// seed gives the same mesh on every machine.
void shake(GridGeometry& g, Position amplitude, unsigned seed);

GridGeometry with_metrics(GridGeometry g);

}  // namespace torvex
