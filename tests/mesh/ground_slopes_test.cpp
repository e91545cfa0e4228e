#include "mesh/ground_slopes.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>

namespace torvex {
namespace {

// Nodes over z(x, y), 10 m apart along x and 20 m along y; the last cell along x is 30 m long.
GridGeometry ground(const std::function<double(double, double)>& z) {
    GridGeometry grid;
    allocate_nodes(grid, 5, 4, 2);
    for (int j = 1; j <= 4; ++j) {
        for (int i = 1; i <= 5; ++i) {
            const double x = i < 5 ? 10.0 * i : 70.0;
            const double y = 20.0 * j;
            grid.xn(i, j, 1) = static_cast<float>(x);
            grid.yn(i, j, 1) = static_cast<float>(y);
            grid.zn(i, j, 1) = static_cast<float>(z(x, y));
        }
    }
    return grid;
}

double tangent(double degrees) {
    return std::tan(degrees * std::numbers::pi / 180.0);
}

TEST(GroundSlopes, LevelGround) {
    const GroundSlopes slopes = ground_slopes(ground([](double, double) { return 7.0; }));
    EXPECT_EQ(slopes.steepest, 0.0F);
    EXPECT_DOUBLE_EQ(slopes.parts[0], 1.0);
}

// A plane has its slope everywhere, whatever its aspect.
TEST(GroundSlopes, Planes) {
    const double t = tangent(25.0);
    for (const double aspect : {0.0, 0.7, 2.0}) {
        const GroundSlopes slopes = ground_slopes(ground(
            [&](double x, double y) { return t * (std::cos(aspect) * x + std::sin(aspect) * y); }));
        EXPECT_NEAR(slopes.steepest, 25.0F, 1e-3F);
        EXPECT_DOUBLE_EQ(slopes.parts[2], 1.0);
    }
}

// Level for 30 m of the 60 m, then 45 degrees up: the parts are those of the area in plan.
TEST(GroundSlopes, PartsAreThoseOfThePlan) {
    const GroundSlopes slopes =
        ground_slopes(ground([](double x, double) { return x > 40.0 ? x - 40.0 : 0.0; }));
    EXPECT_NEAR(slopes.parts[0], 0.5, 1e-12);
    EXPECT_NEAR(slopes.parts[4], 0.5, 1e-12);
    EXPECT_NEAR(slopes.steepest, 45.0F, 1e-3F);
}

TEST(GroundSlopes, EachClassHasItsPlace) {
    const double degrees[] = {5.0, 15.0, 25.0, 35.0, 41.0};
    for (std::size_t n = 0; n < 5; ++n) {
        const double t = tangent(degrees[n]);
        EXPECT_DOUBLE_EQ(
            ground_slopes(ground([t](double x, double) { return -t * x; })).parts.at(n), 1.0);
    }
}

}  // namespace
}  // namespace torvex
