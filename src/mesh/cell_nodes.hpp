#pragma once

#include <algorithm>

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"
#include "mesh/vec3.hpp"

namespace torvex {

// The nodes about a cell. A boundary cell (1 or n + 1 along an axis) has no thickness: both node
// planes of its pair are the boundary plane, and a mean over such nodes becomes one over the fewer
// nodes that are there: four of a face, two of an edge, one corner.
//
// These functions stand inside the loops along i. Forced inlining keeps such a loop one vector
// loop: left to itself the compiler makes calls of the larger ones.

enum class Axis { i, j, k };

// The node planes on the low and the high side of a cell along one axis.
struct NodePair {
    int lo, hi;
};

// The pair of cell 1..planes + 1 along an axis of so many node planes.
inline NodePair node_pair(int cell, int planes) {
    return {std::max(cell - 1, 1), std::min(cell, planes)};
}

// A cell and its node planes.
struct CellNodes {
    int i, j, k;
    NodePair in, jn, kn;

    template <Axis A>
    [[gnu::always_inline]] NodePair pair() const {
        if constexpr (A == Axis::i) {
            return in;
        } else if constexpr (A == Axis::j) {
            return jn;
        } else {
            return kn;
        }
    }
};

// Cells first..last of a row along i, with the node planes i + shift.lo and i + shift.hi. A row is
// its two boundary cells and the run between, so that the long loop has no branch.
struct RowPart {
    int first, last;
    NodePair shift;

    static RowPart low_end() { return {1, 1, {0, 0}}; }
    static RowPart inner(int planes) { return {2, planes, {-1, 0}}; }
    static RowPart high_end(int planes) { return {planes + 1, planes + 1, {-1, -1}}; }

    [[gnu::always_inline]] CellNodes cell(int i, int j, int k, NodePair jn, NodePair kn) const {
        return {i, j, k, {i + shift.lo, i + shift.hi}, jn, kn};
    }
};

// Mean of the four nodes of the face on node plane n across axis A. The sum runs in two pairs, so
// that with a doubled plane it is the mean of the two nodes (or the one node) to the last bit.
template <Axis A>
[[gnu::always_inline]] inline float face_mean(const Field3& r, int n, const CellNodes& c) {
    const auto [i0, i1] = A == Axis::i ? NodePair{n, n} : c.in;
    const auto [j0, j1] = A == Axis::j ? NodePair{n, n} : c.jn;
    const auto [k0, k1] = A == Axis::k ? NodePair{n, n} : c.kn;
    if constexpr (A == Axis::k) {
        return 0.25F * ((r(i0, j0, n) + r(i1, j0, n)) + (r(i0, j1, n) + r(i1, j1, n)));
    } else {
        return 0.25F * ((r(i0, j0, k0) + r(i1, j1, k0)) + (r(i0, j0, k1) + r(i1, j1, k1)));
    }
}

// Mean of the eight nodes of an interior cell: i runs first, then j, then k, ascending.
[[gnu::always_inline]] inline float cell_mean(const Field3& r, const CellNodes& c) {
    const auto [i0, i1] = c.in;
    const auto [j0, j1] = c.jn;
    const auto [k0, k1] = c.kn;
    return 0.125F * (r(i0, j0, k0) + r(i1, j0, k0) + r(i0, j1, k0) + r(i1, j1, k0) + r(i0, j0, k1) +
                     r(i1, j0, k1) + r(i0, j1, k1) + r(i1, j1, k1));
}

// Centre of the face on node plane n across axis A.
template <Axis A>
[[gnu::always_inline]] inline Vec3 face_centre(const GridGeometry& g, int n, const CellNodes& c) {
    return {face_mean<A>(g.xn, n, c), face_mean<A>(g.yn, n, c), face_mean<A>(g.zn, n, c)};
}

// Centre of the cell that has the index m along axis A and those of c along the others.
template <Axis A>
[[gnu::always_inline]] inline Vec3 centre(const GridGeometry& g, int m, const CellNodes& c) {
    const int i = A == Axis::i ? m : c.i;
    const int j = A == Axis::j ? m : c.j;
    const int k = A == Axis::k ? m : c.k;
    return {g.xc(i, j, k), g.yc(i, j, k), g.zc(i, j, k)};
}

}  // namespace torvex
