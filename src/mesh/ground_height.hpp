#pragma once

#include <optional>

#include "base/case_settings.hpp"
#include "maps/terrain_map.hpp"
#include "mesh/rotation.hpp"

namespace torvex {

// Elevation [m] under the point (x, y) of a mesh [m], from the detailed map where that reaches,
// else from the basic one; 0 outside the circle of modify_terrain. Nothing where the basic map
// ends.
std::optional<float> ground_height(const CanopyParameters& canopy, const DirectionMaps& maps,
                                   const MeshRotation& rotation, float x, float y);

}  // namespace torvex
