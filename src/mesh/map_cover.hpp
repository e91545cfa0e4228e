#pragma once

#include <span>
#include <string>
#include <vector>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "maps/terrain_map.hpp"
#include "mesh/mesh_lines.hpp"
#include "mesh/rotation.hpp"

namespace torvex {

// Whether the maps hold what the mesh of a direction takes from them. Only the placement of the
// maps counts, not their values.
struct MapCover {
    bool terrain = true;    // every node lies in the basic terrain map
    bool roughness = true;  // every cell centre lies in one of the roughness maps

    bool whole() const { return terrain && roughness; }
};

// The cover for a wind from `angle` [deg], by the arithmetic of MAKE_MESH and of the sampling of
// roughness: a point is outside here exactly where it is there. What the case does not sample (flat
// terrain, roughness that a canopy file brings) is covered.
MapCover map_cover(const CaseSettings& settings, const MeshLines& lines, const DirectionMaps& maps,
                   float angle);

// How far a map reaches from the centre to its nearest side [m]; below 0 for a centre outside.
float nearest_side(const TerrainMap& map);

// True for a mesh whose lines come from the study area and its zones.
bool lines_from_study_area(const CaseSettings& settings);

// The largest part of the study area with which the maps cover the mesh in every direction of the
// case, as a factor on WE_LENGTH and NS_LENGTH, in steps of 0.001; 0 if none does. Not for lines
// from XYCONF or of a nested case, which do not come from the study area.
float largest_study_scale(const CaseSettings& settings, const MeshLines& lines,
                          const DirectionMaps& maps);

// In whole sentences: where the centre lies and where a map, in degrees, and how large the study
// area may be. `name` is what the map is called, "terrain map" or "roughness map".
std::vector<std::string> map_limits(const CaseSettings& settings, const MeshLines& lines,
                                    const DirectionMaps& maps, const TerrainMap& map,
                                    const std::string& name);

// Which of the directions `iwds`, in the order in which a run prepares them, will end with stop
// 151, as warnings; empty if none will, or if a header cannot be read. `datum` is that of the last
// header the run has read (MapState). Reads the headers of the maps and nothing else.
std::vector<Warning> cover_warnings(const CaseSettings& settings, const MeshLines& lines, int datum,
                                    std::span<const int> iwds);

// Stop 151 with its line on the log and the limits behind it. `what` has the words up to the map's
// extent in km.
[[noreturn]] void stop_outside_map(const CaseSettings& settings, const MeshLines& lines,
                                   const DirectionMaps& maps, bool roughness, MapPoint at,
                                   RunLog& log);

}  // namespace torvex
