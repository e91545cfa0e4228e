#pragma once

#include "base/field.hpp"
#include "base/line1.hpp"
#include "maps/local_metric.hpp"
#include "mesh/grid_geometry.hpp"
#include "results/bracket.hpp"

namespace torvex {

// A point between four mesh columns, found on the cell centres of the first row along each axis, so
// that it is as good as that row stands for the others.
struct ColumnPlace {
    LinePlace x, y;

    bool inside() const { return x.inside() && y.inside(); }
};
// Outside where x or y lies beyond the outermost cell centres.
ColumnPlace column_place(MeshPosition at, const GridGeometry& grid);

// A field level by level: bilinear in the four columns round a place, or as column (i,j) has it.
Line1 column(const Field3& q, ColumnPlace place);
Line1 column(const Field3& q, int i, int j);

// Heights of a column above its first level, which is the ground.
Line1 above_ground(Line1 heights);

}  // namespace torvex
