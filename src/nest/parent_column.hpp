#pragma once

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"

namespace torvex {

// Which height h' above the ground of a parent column a height h above the child's ground stands
// for, such that the tops of the two meshes meet although their grounds differ:
//
//   h' = h                                     up to Hc
//   h' = Hc + (h - Hc) (Hp - Hc)/(Hchild - Hc) above
//
// with Hp, Hchild the heights of the two columns and Hc = min(CONSTANT_DZ_HEIGHT, Hp/2, Hchild/2).
// All in metres.
struct HeightMap {
    float Hc = 0;
    float stretch = 1;  // (Hp - Hc)/(Hchild - Hc)

    float operator()(float h) const { return h <= Hc ? h : Hc + (h - Hc) * stretch; }
};
// For the heights of two columns, above 0 [m].
HeightMap height_map(float CONSTANT_DZ_HEIGHT, float Hp, float Hchild);

// Height of a column from its ground to its top [m].
inline float column_height(const GridGeometry& g, int i, int j) {
    return g.zc(i, j, g.nk) - g.zc(i, j, 1);
}

// A height between the levels k and k+1 of a column, w the weight of the upper one. Below the first
// cell centre k is 2 and w is 0, and h_first tells how high that centre stands.
struct ColumnLevel {
    int k = 2;
    float w = 0;
    float h = 0;        // the height itself [m]
    float h_first = 0;  // height of the first cell centre [m]

    bool below_first() const { return h < h_first; }
};

// Above the top the top holds.
ColumnLevel level_at(const GridGeometry& g, int i, int j, float h);

// A field of the parent at a level of column (i,j).
inline float value_at(const Field3& q, int i, int j, const ColumnLevel& at) {
    return (1.0F - at.w) * q(i, j, at.k) + at.w * q(i, j, at.k + 1);
}

}  // namespace torvex
