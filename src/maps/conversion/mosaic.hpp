#pragma once

#include <string>
#include <vector>

#include "base/run_log.hpp"
#include "maps/conversion/covered_area.hpp"
#include "maps/conversion/degree_raster.hpp"

namespace torvex {

enum class Quantity { elevation, roughness };

// The maps of a mosaic in their order. An index is a text with a map on each line, blank lines and
// those that begin with "#" apart, names seen from the directory of the index; a name that ends in
// ".asc" is an ESRI ASCII grid, any other a lon-lat map.
struct MosaicSources {
    std::vector<std::string> names;
    std::vector<DegreeRaster> maps;
    int datum = 0;  // of the first map that gives one; two that differ are refused
};

// Stops with 1 for an index that is not there or names no map; those of map files.
MosaicSources read_mosaic_sources(const std::string& directory, const std::string& index,
                                  Quantity quantity, RunLog& log);

// One map over an area: the first sample of the first map plus whole steps, as many as cover the
// area. Steps of 0 are those of the first map. Every sample takes the first map that covers it,
// bilinear in the value, for a roughness in R (roughness_mean.hpp). A map covers a sample if all
// its points that the sample takes part in are known. Stops with 1 where a sample is covered by
// none, telling the first one and the share.
DegreeRaster mosaic(const MosaicSources& sources, const AreaLimits& area, double d_lon,
                    double d_lat, Quantity quantity);

}  // namespace torvex
