// Slopes of the ground in classes.
//
//   dz/dx = (z(i,j-1) + z(i,j) - z(i-1,j-1) - z(i-1,j)) / (2 dx), dz/dy alike
//
// reads   xn, yn, zn at k = 1; the plan of the nodes is rectangular

#include "mesh/ground_slopes.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace torvex {

GroundSlopes ground_slopes(const GridGeometry& grid) {
    GroundSlopes slopes;
    double whole = 0.0;
    for (int j = 2; j <= grid.ny; ++j) {
        for (int i = 2; i <= grid.nx; ++i) {
            const auto z = [&grid](int a, int b) { return static_cast<double>(grid.zn(a, b, 1)); };
            const double dx = static_cast<double>(grid.xn(i, j, 1) - grid.xn(i - 1, j, 1));
            const double dy = static_cast<double>(grid.yn(i, j, 1) - grid.yn(i, j - 1, 1));
            const double along = (z(i, j - 1) + z(i, j) - z(i - 1, j - 1) - z(i - 1, j)) / (2 * dx);
            const double across =
                (z(i - 1, j) + z(i, j) - z(i - 1, j - 1) - z(i, j - 1)) / (2 * dy);
            const auto degrees =
                static_cast<float>(std::atan(std::hypot(along, across)) * 180.0 / std::numbers::pi);
            const auto part = std::ranges::upper_bound(GroundSlopes::limits, degrees);
            slopes.parts.at(static_cast<std::size_t>(part - GroundSlopes::limits.begin())) +=
                dx * dy;
            slopes.steepest = std::max(slopes.steepest, degrees);
            whole += dx * dy;
        }
    }
    for (double& part : slopes.parts) {
        part /= whole;
    }
    return slopes;
}

}  // namespace torvex
