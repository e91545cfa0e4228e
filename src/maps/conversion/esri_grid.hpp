#pragma once

#include <string>

#include "maps/conversion/degree_raster.hpp"

namespace torvex {

// Reads an ESRI ASCII grid in degrees:
//
//   ncols 4
//   nrows 3
//   xllcorner 139.5        or xllcenter: corner or centre of the south-west cell
//   yllcorner 35.25        or yllcenter
//   cellsize 0.0125        or dx and dy
//   NODATA_value -9999     may be left out: -9999
//   rows from the north southwards, free form
//
// The samples stand at the centres of the cells; those without data are NaN. Stops with 1, naming
// the line; with `positive` also for a value that is not above 0.
DegreeRaster read_esri_grid(const std::string& path, bool positive);

}  // namespace torvex
