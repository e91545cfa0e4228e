#pragma once

#include <memory>
#include <optional>

#include "base/field.hpp"
#include "maps/map_header.hpp"

namespace torvex {

// A raster of elevation or roughness placed in metres round the case centre, east and north.
// The values may be shared with other placements of the same file and are never changed.
struct TerrainMap {
    std::shared_ptr<const Field2> values;  // (column, row) from the south-west point [m]
    int columns = 0;
    int rows = 0;
    float dX = 0;  // column spacing [m]
    float dY = 0;  // row spacing [m]
    float X0 = 0;  // case centre to the first point, east [m]
    float Y0 = 0;  // and north [m]

    std::optional<DegreeExtent> degrees;  // where the file says so

    bool loaded() const { return values != nullptr; }
    bool placed() const { return columns > 0; }  // with values or without
};

// The map cell round a point: corners (p+1, q+1) .. (p+2, q+2), and the place inside it, 0..1.
struct MapCell {
    int p = 0;
    int q = 0;
    float s = 0;
    float t = 0;
};

// The cell that holds the point (X, Y) in metres east and north of the centre; nothing if the point
// lies outside, where the last column and row count as outside.
std::optional<MapCell> locate(const TerrainMap& map, float X, float Y);

// e = (c3 s + c4 (1 - s)) t + (1 - t) (s c2 + (1 - s) c1), corners counter-clockwise from (p+1,
// q+1).
float bilinear_value(const TerrainMap& map, const MapCell& cell);

// The maps of one direction. A detailed map is loaded only where the case names one.
struct DirectionMaps {
    TerrainMap basic_h;
    TerrainMap detailed_h;
    TerrainMap basic_z0;
    TerrainMap detailed_z0;
};

}  // namespace torvex
