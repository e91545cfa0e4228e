// Slopes of the ground in classes.
//
//   a = P(i,j) - P(i-1,j-1), b = P(i-1,j) - P(i,j-1), n = a x b
//   tan(slope) = |(n_x, n_y)| / n_z, area in plan = n_z / 2
//
// with the ground nodes P of a cell. On a rectangular plan that is the mean gradient between the
// middles of opposite sides.
//
// reads   xn, yn, zn at k = 1

#include "mesh/ground_slopes.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace torvex {

namespace {

struct Diagonal {
    double x, y, z;
};

Diagonal between(const GridGeometry& g, int i1, int j1, int i2, int j2) {
    const auto difference = [&](const Field3& q) {
        return static_cast<double>(q(i2, j2, 1)) - static_cast<double>(q(i1, j1, 1));
    };
    return {difference(g.xn), difference(g.yn), difference(g.zn)};
}

}  // namespace

GroundSlopes ground_slopes(const GridGeometry& grid) {
    GroundSlopes slopes;
    double whole = 0.0;
    for (int j = 2; j <= grid.ny; ++j) {
        for (int i = 2; i <= grid.nx; ++i) {
            const Diagonal a = between(grid, i - 1, j - 1, i, j);
            const Diagonal b = between(grid, i, j - 1, i - 1, j);
            const double n_x = a.y * b.z - a.z * b.y;
            const double n_y = a.z * b.x - a.x * b.z;
            const double n_z = a.x * b.y - a.y * b.x;
            const auto degrees = static_cast<float>(std::atan2(std::hypot(n_x, n_y), n_z) * 180.0 /
                                                    std::numbers::pi);
            const auto part = std::ranges::upper_bound(GroundSlopes::limits, degrees);
            slopes.parts.at(static_cast<std::size_t>(part - GroundSlopes::limits.begin())) +=
                n_z / 2.0;
            slopes.steepest = std::max(slopes.steepest, degrees);
            whole += n_z / 2.0;
        }
    }
    for (double& part : slopes.parts) {
        part /= whole;
    }
    return slopes;
}

}  // namespace torvex
