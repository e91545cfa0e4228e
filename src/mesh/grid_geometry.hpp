#pragma once

#include "base/field.hpp"

namespace torvex {

// The mesh of one wind direction. Cell (i,j,k) lies between the node planes i-1 and i, j-1 and j,
// k-1 and k; cells 2..nx, 2..ny, 2..nz are the interior, 1 and ni (nj, nk) stand on the boundary
// and have no thickness. On the six boundary planes vol and the area vectors are those of the half
// cell between the boundary face and the centre beside it; on the twelve block edges they are zero.
struct GridGeometry {
    int nx = 0, ny = 0, nz = 0;  // node planes
    int ni = 0, nj = 0, nk = 0;  // nx + 1, ny + 1, nz + 1

    Field3 xn, yn, zn;     // nodes [m]             nx*ny*nz  MAKE_MESH; zn(i,j,1) is the ground
    Field3 xc, yc, zc;     // cell centres [m]      ni*nj*nk  XYZ2XYZC
    Field3 vol;            // cell volume [m3]      ni*nj*nk  GRID
    Field3 xix, xiy, xiz;  // area vector of the i direction [m2]  ni*nj*nk  GRID
    Field3 etx, ety, etz;  // of the j direction
    Field3 zex, zey, zez;  // of the k direction
    Field3 fx, fy, fz;     // weight of the higher neighbour at a face [-]  ni*nj*nk  GRID
};

// Sets the counts and makes room for the nodes, all at 0.
inline void allocate_nodes(GridGeometry& grid, int nx, int ny, int nz) {
    grid.nx = nx;
    grid.ny = ny;
    grid.nz = nz;
    grid.ni = nx + 1;
    grid.nj = ny + 1;
    grid.nk = nz + 1;
    grid.xn.allocate(nx, ny, nz);
    grid.yn.allocate(nx, ny, nz);
    grid.zn.allocate(nx, ny, nz);
}

}  // namespace torvex
