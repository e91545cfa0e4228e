#pragma once

#include <cmath>

#include "mesh/grid_geometry.hpp"

namespace torvex {

enum class Wall { ground, top, south, north };

// What the wall formulas of momentum and turbulence need of a cell beside a wall.
struct WallCell {
    int ig, jg, kg;       // the ghost position on the wall
    float n_x, n_y, n_z;  // unit normal: the area vector across the wall over its length
    float d;              // distance of the cell centre from the wall, |(c - m).n|        [m]
};

// Cell (i,j) of the ground or the top, (i,k) of a side; m is the mean of the four nodes of the wall
// face.
template <Wall wall>
WallCell wall_cell(const GridGeometry& g, int a, int b) {
    constexpr bool level = wall == Wall::ground || wall == Wall::top;
    const int i = a;
    const int j = level ? b : (wall == Wall::south ? 2 : g.ny);
    const int k = level ? (wall == Wall::ground ? 2 : g.nz) : b;
    WallCell cell{i, j, k, 0.0F, 0.0F, 0.0F, 0.0F};
    if constexpr (level) {
        cell.kg = wall == Wall::ground ? 1 : g.nk;
    } else {
        cell.jg = wall == Wall::south ? 1 : g.nj;
    }
    const Field3& mx = level ? g.zex : g.etx;
    const Field3& my = level ? g.zey : g.ety;
    const Field3& mz = level ? g.zez : g.etz;
    const float x = mx(cell.ig, cell.jg, cell.kg);
    const float y = my(cell.ig, cell.jg, cell.kg);
    const float z = mz(cell.ig, cell.jg, cell.kg);
    const float length = std::sqrt(x * x + y * y + z * z);
    cell.n_x = x / length;
    cell.n_y = y / length;
    cell.n_z = z / length;
    const auto face_mean = [&](const Field3& r) {
        if constexpr (level) {
            const int n = wall == Wall::ground ? 1 : g.nz;
            return 0.25F * (r(i, j, n) + r(i - 1, j, n) + r(i - 1, j - 1, n) + r(i, j - 1, n));
        } else {
            const int n = wall == Wall::south ? 1 : g.ny;
            return 0.25F * (r(i, n, k) + r(i, n, k - 1) + r(i - 1, n, k) + r(i - 1, n, k - 1));
        }
    };
    cell.d = std::abs((g.xc(i, j, k) - face_mean(g.xn)) * cell.n_x +
                      (g.yc(i, j, k) - face_mean(g.yn)) * cell.n_y +
                      (g.zc(i, j, k) - face_mean(g.zn)) * cell.n_z);
    return cell;
}

}  // namespace torvex
