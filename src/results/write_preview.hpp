#pragma once

#include "base/case_settings.hpp"
#include "maps/load_maps.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

// write_preview: the ground, the roughness and the marked points of the first wind direction as the
// run would see them, for viewers and contouring tools. It works under the direction index of a
// preview, so that nothing of a finished run is read or overwritten: equivalent roughness and the
// upwind roughness of earlier runs do not act. With a canopy the roughness is that of the maps.
//
// reads   the maps, the keys of the case; lines as domain sizing left them; the angles are set
// writes  run_prefix + "view-map.dat", "view-map-roughness.dat", "TERRAIN.GRD", "ROUGH.GRD"
// stops   those of load_maps, MAKE_MESH and calc_roughness1; 1 for a case without maps or direction
void write_preview(const CaseSettings& settings, const MeshLines& lines, MapState& maps);

}  // namespace torvex
