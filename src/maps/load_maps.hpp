#pragma once

#include <memory>
#include <optional>
#include <string>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "maps/terrain_map.hpp"

namespace torvex {

struct ParsedMap;  // header and values of one map file, as they stand in the file

// What map reading keeps from one read to the next: the datum of the last header, which places the
// next map, and the parsed files, so that an unchanged file is parsed once in a run.
struct MapState {
    int datum = 0;
    std::shared_ptr<const ParsedMap> basic_h;
    std::shared_ptr<const ParsedMap> detailed_h;
    std::shared_ptr<const ParsedMap> basic_z0;
    std::shared_ptr<const ParsedMap> detailed_z0;
};

// A map placed round the case centre with the metres per minute of a datum, without its values.
TerrainMap placed_map(const MapHeader& header, const CaseSettings& settings, int datum);

// The maps of a direction as load_maps would place them, without their values, so that what they
// cover is known before any of them is read. Nothing if a map that is named has no good header.
// `datum` goes on from read to read as it does there.
std::optional<DirectionMaps> placed_by_headers(const CaseSettings& settings, int& datum);

// Elevations of the basic terrain map inside a circle round the centre [m].
struct ElevationRange {
    float Hmax = 0;
    float Hmin = 0;
    float Havg = 0;
};

// Reads the maps of wind direction `iwd` and scales the elevations by its correction factor.
// Stops: 111-113, 121-123, 131-134, 141-144.
DirectionMaps load_maps(const CaseSettings& settings, int iwd, MapState& state, RunLog& log);

// Statistics of the file itself, without correction factor; console lines are written.
// Stops: 111-113.
ElevationRange elevation_in_radius(const CaseSettings& settings, float radius, MapState& state,
                                   RunLog& log);

// The same for the circle through the corner (x1, y1) of the mesh, reported on the log too.
ElevationRange elevation_in_domain(const CaseSettings& settings, float x1, float y1,
                                   MapState& state, RunLog& log);

// The basic terrain map alone, placed and unscaled, for sizing. Stops: 111-113.
TerrainMap read_basic_terrain(const CaseSettings& settings, MapState& state, RunLog& log);

}  // namespace torvex
