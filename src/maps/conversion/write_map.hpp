#pragma once

#include <string>

#include "maps/conversion/degree_raster.hpp"
#include "maps/conversion/mosaic.hpp"

namespace torvex {

// Writes a lon-lat map: ten values a line, F8.1 for elevations and F9.5 for roughness, each row on
// lines of its own. A roughness below 0.00001 m is written as 0.00001. Stops with 1 for values that
// the fields cannot hold apart, and those of whole files.
void write_map(const std::string& path, const DegreeRaster& map, Quantity quantity);

}  // namespace torvex
