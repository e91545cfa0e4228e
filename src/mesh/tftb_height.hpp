#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "maps/load_maps.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

// Mean height of MeshLines::MAX_Z above the points of a terrain map inside a circle [m], summed in
// double precision in storage order; MAX_Z itself where the circle holds no point.
float mean_height_below_top(const TerrainMap& map, float radius, float MAX_Z);

// Height of the domain top over the ground for a top that follows the terrain (USE_TFTB) [m]: the
// mean above in the circle through the mesh's corner, or MAX_Z as given without
// USE_DEFAULT_MAX_Z. Reads the basic terrain map anew and says so on the console. Stops: 111-113.
float tftb_height(const CaseSettings& settings, const MeshLines& lines, MapState& maps,
                  RunLog& log);

}  // namespace torvex
