#pragma once

#include <optional>
#include <string>

#include "base/run_log.hpp"
#include "maps/conversion/covered_area.hpp"
#include "maps/conversion/degree_raster.hpp"

namespace torvex {

// One kind of tile in the directory of the database: DIRECTORY/<name>SUFFIX.
struct TileSet {
    std::string directory;
    std::string suffix;       // "_h.map", "_lu.map"
    std::string description;  // for messages: "elevation", "land-use"
};

// The datum of the tiles round the centre: that of the first that is there. Nothing if all are
// missing.
std::optional<int> datum_of_tiles(const TileSet& set, const ConversionSettings& settings,
                                  RunLog& log);

// What became of the tiles of an area.
struct TileRaster {
    DegreeRaster raster;
    int tiles = 0;
    int missing = 0;  // of them
};

// All tiles that an area touches, in one raster of whole tiles. A missing one is sea and takes
// `sea`. Stops: those of map files; 1 where a header does not belong to the name, where datums
// differ, and where all tiles are missing.
TileRaster read_tiles(const TileSet& set, const AreaLimits& area, float sea, RunLog& log);

}  // namespace torvex
