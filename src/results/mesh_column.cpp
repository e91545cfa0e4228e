#include "results/mesh_column.hpp"

namespace torvex {

namespace {

Line1 line_along_i(const Field3& x) {
    Line1 line(x.ni());
    for (int i = 1; i <= x.ni(); ++i) {
        line(i) = x(i, 1, 1);
    }
    return line;
}

Line1 line_along_j(const Field3& y) {
    Line1 line(y.nj());
    for (int j = 1; j <= y.nj(); ++j) {
        line(j) = y(1, j, 1);
    }
    return line;
}

}  // namespace

ColumnPlace column_place(MeshPosition at, const GridGeometry& grid) {
    return {place_on(at.x, line_along_i(grid.xc)), place_on(at.y, line_along_j(grid.yc))};
}

Line1 column(const Field3& q, ColumnPlace place) {
    const auto [x, y] = place;
    Line1 values(q.nk());
    for (int k = 1; k <= q.nk(); ++k) {
        values(k) = bilinear(x.w, y.w, q(x.i, y.i, k), q(x.i + 1, y.i, k), q(x.i + 1, y.i + 1, k),
                             q(x.i, y.i + 1, k));
    }
    return values;
}

Line1 column(const Field3& q, int i, int j) {
    Line1 values(q.nk());
    for (int k = 1; k <= q.nk(); ++k) {
        values(k) = q(i, j, k);
    }
    return values;
}

Line1 above_ground(Line1 heights) {
    const float ground = heights(1);
    for (int k = 1; k <= heights.size(); ++k) {
        heights(k) -= ground;
    }
    return heights;
}

}  // namespace torvex
