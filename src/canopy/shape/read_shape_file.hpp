#pragma once

#include <functional>
#include <vector>

#include "base/shape_set.hpp"
#include "canopy/shape/shape_entity.hpp"

namespace torvex {

// What a shapefile and its table gave.
struct ShapeLayer {
    std::vector<ShapeEntity> entities;  // those that were kept
    int count = 0;                      // entities of the file, all
    int null_shapes = 0;                // left out: without a polygon
    int deleted_rows = 0;               // left out: deleted in the table
    ShapeBox box;                       // of the file, scaled
};

// Reads the shapefile of a set and the table beside it, telling header and progress on the console.
// Points and boxes are multiplied by `scale`, heights by `height_unit`, lengths by `uconv`. A
// height is missing where the row has none, it is not finite, not above 0, or the marker of the
// set; with `height_missing` the set's value takes its place. The heights of modified entities
// count in the end, missing or not.
//
// `keep` chooses what stays in memory, and may convert it; it is asked for every polygon in the
// file, in its order.
//
// stops 1 with "ERROR: Shape File Not Found. ", "ERROR: DB File Not Found. ", "ERROR: DB File Field
// Not Found. ", "Unknown shape type: ..." on the console; 1 for a damaged file, naming the entity
ShapeLayer read_shape_file(const ShapeSet& set, const std::function<bool(ShapeEntity&)>& keep = {});

}  // namespace torvex
