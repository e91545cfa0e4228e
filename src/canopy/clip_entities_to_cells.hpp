#pragma once

#include <vector>

#include "base/line1.hpp"
#include "canopy/canopy_pieces.hpp"

namespace torvex {

// Sorts what lies of the entities in each cell between the node lines into the column lists.
//
// A ring of an entity of two or more whose turn is 0 or below is a hole. With `exclude_donut_shape`
// it is passed over, and the polygon counts as filled. Otherwise a cell that the hole reaches
// forgets all its pieces, those of other polygons too, and takes what is left of the cell round the
// hole for the only one; a cell at the edge of a hole thus counts as filled outside of the hole.
//
// A piece below 1e-9 of its cell is none.
ColumnLists clip_entities_to_cells(const std::vector<CanopyEntity>& entities, const Line1& x_line,
                                   const Line1& y_line, bool exclude_donut_shape);

// Area inside the outer rings: all rings but those that are holes by the test above.
double outline_area(const std::vector<int>& part_start, const std::vector<double>& x,
                    const std::vector<double>& y);

// The least distance from a point to a line of points; 1.0e20 for fewer than two.
double distance_to_polyline(double px, double py, const std::vector<double>& x,
                            const std::vector<double>& y);

}  // namespace torvex
