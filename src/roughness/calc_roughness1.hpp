#pragma once

#include "base/field.hpp"
#include "maps/terrain_map.hpp"
#include "mesh/grid_geometry.hpp"
#include "roughness/roughness_pass.hpp"

namespace torvex {

// The roughness field of a wind direction without canopy.
//
// The maps are sampled at the cells; the flat parts of the side buffer zones become strips of one
// value across the wind and that of the downwind zone strips along it; the flat part of the upwind
// zone, and through it the inflow plane, gets one roughness length z_up: the mean over it, or in
// its place EQUIVALENT_ROUGHNESS, the z_up of an earlier run or that of a directional alpha, the
// last of them winning. A nested run has the maps' values everywhere, or the parent's z_up.
//
// reads   maps placed for the direction; xc, yc of `grid` at k = 1
// writes  z0 (allocated, ni*nj) [m]; upwind; log; but in a preview also the files
//         calc_roughness1-TAG.tdt, log-upwind_roughness-TAG, alpha2z0_convergence-TAG.txt
// stops   151 cells outside the map, 158 EQUIVALENT_ROUGHNESS, 186 no earlier run or no parent, 1
// bad values
void calc_roughness1(const RoughnessPass& pass, const DirectionMaps& maps, const GridGeometry& grid,
                     UpwindRoughness& upwind, Field2& z0);

}  // namespace torvex
