#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "maps/terrain_map.hpp"
#include "mesh/grid_geometry.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

// MAKE_MESH: the node arrays of wind direction `iwd`, in single precision.
//
// The plan of the lines is turned so that x points downwind and laid on the terrain maps; the
// ground is the bilinear value of the detailed map where it has one, else of the basic map, and 0
// in a TERRAIN_MODE that begins with "flat" or outside modify_circle_range. The buffer zones are
// then flattened, unless the run is nested, and the levels stacked on the ground:
//
//   k <= k_c    zn = ground + z_line(k)
//   k >  k_c    between zn(k_c) and the flat top z_line(nz), in the proportions of z_line
//   USE_TFTB    zn = ground + z_line(k) for all k
//
// reads   lines, maps (placed for this direction)
// writes  xn, yn, zn and the counts of `grid`
// stops   151 ground outside the basic map, 152 ground through the top, 153-155 buffer zones
void MAKE_MESH(const CaseSettings& settings, const MeshLines& lines, const DirectionMaps& maps,
               int iwd, RunLog& log, GridGeometry& grid);

}  // namespace torvex
