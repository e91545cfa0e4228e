#pragma once

#include <cstdint>
#include <vector>

#include "base/line1.hpp"
#include "canopy/canopy_pieces.hpp"
#include "maps/conversion/degree_raster.hpp"
#include "maps/local_metric.hpp"

namespace torvex {

// A raster in metres round a centre: the lines half way between its samples, and beyond the outer
// ones. Sample (i,j) lies between lines i and i+1, j and j+1.
struct SampleLines {
    Line1 x;  // east [m]
    Line1 y;  // north [m]
};
// ni + 1 and nj + 1 lines; the centre in minutes of arc.
SampleLines sample_lines(const DegreeRaster& raster, double centre_lon, double centre_lat,
                         MetresPerMinute metres);

// What polygons cover of each sample's rectangle takes part in its roughness, as on the columns of
// a mesh (canopy/canopy_roughness.hpp). A sample without a piece keeps its value.
void lay_over(const ColumnLists& pieces, DegreeRaster& roughness);

// The land-use id of the last piece on each sample, 0 without one, and the greatest height.
Array2<std::int32_t> land_use_of(const ColumnLists& pieces, const DegreeRaster& raster);
void raise_heights(const ColumnLists& pieces, Field2& height);

}  // namespace torvex
