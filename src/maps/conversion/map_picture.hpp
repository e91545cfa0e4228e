#pragma once

#include <string>

#include "maps/conversion/degree_raster.hpp"
#include "maps/conversion/mosaic.hpp"

namespace torvex {

// A picture of a map, of the types of ConversionSettings: a text grid (see contour_grid.hpp) whose
// axes are degrees, or a binary PPM with a pixel for each sample, north up. The colours of
// elevations run from the lowest to the highest of the map, those of roughness from 0.0001 to 10 m
// by its logarithm.
void write_map_picture(const std::string& path, int type, const DegreeRaster& map,
                       Quantity quantity);

}  // namespace torvex
