#pragma once

#include "base/field.hpp"
#include "maps/terrain_map.hpp"
#include "mesh/grid_geometry.hpp"
#include "roughness/roughness_pass.hpp"

namespace torvex {

// The roughness length of the cells 2..nx, 2..ny. In TERRAIN_MODE "flat" it is FLAT_ROUGHNESS; in
// every other mode the value of the roughness maps below the cell centre.
//
//   X = xc c + yc s,  Y = yc c - xc s,  angle of c and s: 90 degrees plus the wind direction
//   z0 = Z(bilinear mean of R at the four map points), held within 0.0001 .. 10 m
//
// The detailed map is taken where it has the point, else the basic one.
//
// reads   xc, yc of `grid` at k = 1
// writes  z0 at 2..nx, 2..ny
// stops   151 a point outside both maps; 1 FLAT_ROUGHNESS not above 0
void sample_roughness(const RoughnessPass& pass, const DirectionMaps& maps,
                      const GridGeometry& grid, Field2& z0);

}  // namespace torvex
