#pragma once

#include "base/run_log.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

// Least wall distance in roughness lengths at which the wall law, with ln(d/z0), is sound.
inline constexpr float least_distance_over_z0 = 2.0F;

// One log line where a wall cell lies closer to its wall than that, with the worst place and its
// values. The wall formulas are not limited there.
void warn_of_coarse_roughness(const GridGeometry& g, const Walls& walls, float wd_angle,
                              RunLog& log);

}  // namespace torvex
