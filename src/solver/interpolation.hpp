#pragma once

#include "mesh/grid_geometry.hpp"

// Values between cell centres. X is a Field3, or any callable X(i, j, k): a product of two fields
// is formed at each cell and then interpolated, never the reverse, so hand over a lambda that forms
// it.
//
//   east face    Xe = (1 - fx) X(i,j,k) + fx X(i+1,j,k)     fx at (i,j,k), i = 1..nx
//   north face   Xn = (1 - fy) X(i,j,k) + fy X(i,j+1,k)     fy at (i,j,k), j = 1..ny
//   top face     Xt = (1 - fz) X(i,j,k) + fz X(i,j,k+1)     fz at (i,j,k), k = 1..nz
//
// The west, south and bottom faces of a cell are the east, north and top faces of its neighbour.
// The factors are 0 and 1 on boundary faces, so that no boundary needs a case of its own.
//
// These functions stand inside the loops along i. Forced inlining keeps such a loop one vector
// loop.
namespace torvex {

// Not low + f*(high - low): that form would not return `high` itself at f = 1.
[[gnu::always_inline]] inline float between(float low, float high, float f) {
    return (1.0F - f) * low + f * high;
}

template <class X>
[[gnu::always_inline]] inline float east(const X& x, const GridGeometry& g, int i, int j, int k) {
    return between(x(i, j, k), x(i + 1, j, k), g.fx(i, j, k));
}

template <class X>
[[gnu::always_inline]] inline float north(const X& x, const GridGeometry& g, int i, int j, int k) {
    return between(x(i, j, k), x(i, j + 1, k), g.fy(i, j, k));
}

template <class X>
[[gnu::always_inline]] inline float top(const X& x, const GridGeometry& g, int i, int j, int k) {
    return between(x(i, j, k), x(i, j, k + 1), g.fz(i, j, k));
}

template <class X>
[[gnu::always_inline]] inline float west(const X& x, const GridGeometry& g, int i, int j, int k) {
    return east(x, g, i - 1, j, k);
}

template <class X>
[[gnu::always_inline]] inline float south(const X& x, const GridGeometry& g, int i, int j, int k) {
    return north(x, g, i, j - 1, k);
}

template <class X>
[[gnu::always_inline]] inline float bottom(const X& x, const GridGeometry& g, int i, int j, int k) {
    return top(x, g, i, j, k - 1);
}

// Value at the corner shared by (i,j,k), (i+1,j,k), (i,j+1,k), (i+1,j+1,k) and the four cells
// above, which is node (i,j,k). fx is that of each of the four columns, fy that of each level, and
// fz that of (i,j,k) alone.
template <class X>
[[gnu::always_inline]] inline float corner(const X& x, const GridGeometry& g, int i, int j, int k) {
    const float low = between(east(x, g, i, j, k), east(x, g, i, j + 1, k), g.fy(i, j, k));
    const float high =
        between(east(x, g, i, j, k + 1), east(x, g, i, j + 1, k + 1), g.fy(i, j, k + 1));
    return between(low, high, g.fz(i, j, k));
}

}  // namespace torvex
