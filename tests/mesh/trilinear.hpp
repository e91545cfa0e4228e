#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "mesh/test_meshes.hpp"

namespace torvex {

// The mesh as a continuous body in double precision: a position for any real node index, trilinear
// between nodes. All that the mesh routines compute are points and differences of points of it.

inline double trilinear(const Field3& r, double s, double t, double q) {
    const auto below = [](double x, int planes) {
        return std::clamp(static_cast<int>(std::floor(x)), 1, planes - 1);
    };
    const int i = below(s, r.ni());
    const int j = below(t, r.nj());
    const int k = below(q, r.nk());
    double sum = 0;
    for (int dk = 0; dk <= 1; ++dk) {
        for (int dj = 0; dj <= 1; ++dj) {
            for (int di = 0; di <= 1; ++di) {
                const double weight = (di == 1 ? s - i : 1 - (s - i)) *
                                      (dj == 1 ? t - j : 1 - (t - j)) *
                                      (dk == 1 ? q - k : 1 - (q - k));
                sum += weight * double(r(i + di, j + dj, k + dk));
            }
        }
    }
    return sum;
}

inline Position point(const GridGeometry& g, double s, double t, double q) {
    return {trilinear(g.xn, s, t, q), trilinear(g.yn, s, t, q), trilinear(g.zn, s, t, q)};
}

// Where the centre of a cell lies among the node planes: half-way inside, on the plane at the ends.
inline double place(int cell, int planes) {
    return std::clamp(cell - 0.5, 1.0, static_cast<double>(planes));
}

// The two places that the difference vector of a cell joins along one axis.
inline std::array<double, 2> ends(int cell, int planes) {
    if (cell == 1) {
        return {1.0, 1.5};
    }
    if (cell == planes + 1) {
        return {planes - 0.5, static_cast<double>(planes)};
    }
    return {cell - 1.0, static_cast<double>(cell)};
}

inline Position minus(const Position& p, const Position& q) {
    return {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
}

inline Position cross_product(const Position& p, const Position& q) {
    return {p[1] * q[2] - p[2] * q[1], p[2] * q[0] - p[0] * q[2], p[0] * q[1] - p[1] * q[0]};
}

inline double scalar_product(const Position& p, const Position& q) {
    return p[0] * q[0] + p[1] * q[1] + p[2] * q[2];
}

inline double norm(const Position& p) {
    return std::sqrt(scalar_product(p, p));
}

}  // namespace torvex
