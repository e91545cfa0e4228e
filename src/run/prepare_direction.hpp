#pragma once

#include <cstdint>

#include "maps/terrain_map.hpp"
#include "run/run_state.hpp"

// What stands between the entry of a direction and its solve: mesh, roughness, canopy, start
// fields. The pieces are public so that a companion program can make the mesh of a direction
// without solving it.
namespace torvex {

// Number, angle, tag and file stems of direction `iwd`, from 1.
void begin_direction(const Run& run, int iwd, Direction& direction);

// Maps and nodes of a direction, the maps for the roughness to come. No file is written.
// Stops: 111-113, 121-123, 131-134, 141-144, 151-155.
DirectionMaps mesh_from_maps(Run& run, Direction& direction);

// What the preparation came to: fields to solve, a saved state that is done already, or a canopy
// file without a usable roughness, which costs this direction and no other.
enum class Prepared : std::uint8_t { to_solve, done, unusable };

// By one of three ways: from a saved state (RESTART_FLAG 1), the user's own domain (TORVEX_MODE),
// or the maps.
Prepared prepare_direction(Run& run, Direction& direction);

// Without the first way. A check of the case (Run::leaves_files off) takes this one: the same steps
// with the same stops, but no file is written.
Prepared prepare_anew(Run& run, Direction& direction);

}  // namespace torvex
