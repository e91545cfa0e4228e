#pragma once

#include <cstdint>
#include <string>

#include "base/field.hpp"

namespace torvex {

// Columns of a mesh, or samples of a map, to be looked at as rectangles in a GIS. Columns count
// from 1; the corners of column (i,j) are (i,j), (i+1,j), (i+1,j+1) and (i,j+1).
struct RoughnessColumns {
    Array2<double> corner_lon;  // [minutes of arc], one more than the columns along each side
    Array2<double> corner_lat;
    Array2<std::int32_t> land_use_id;
    Field2 height;         // of the tallest entity [m]
    Field2 rls;            // length measure, or the roughness length of a check of maps [m]
    Field2 z0org;          // roughness before the shapefile [m]; variant 3 only
    int index_offset = 0;  // of index_i and index_j against the columns
};

// A shapefile of polygons with its table: one rectangle for each column, in degrees, or for the
// zones 1 to 19 of `cs` in their plane coordinates (X east, Y north). The earlier files of the name
// are replaced when the new ones are complete. Stops with 1 where they cannot be written.
//
//   2    columns of some height only   POLYGON, LandUseID, Height, RLS
//   22   all columns                   the same
//   3    all columns                   POLYGON, LandUseID, Z0org, Height, RLS, index_i, index_j
void vectorizeRoughness2(const std::string& path, int cs, const RoughnessColumns& columns);
void vectorizeRoughness22(const std::string& path, int cs, const RoughnessColumns& columns);
void vectorizeRoughness3(const std::string& path, int cs, const RoughnessColumns& columns);

}  // namespace torvex
