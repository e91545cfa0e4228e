// Mass and momentum through the inflow plane.

#include "solver/inflow_sums.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "mesh/test_meshes.hpp"
#include "mesh/trilinear.hpp"
#include "solver/fields.hpp"

namespace torvex {
namespace {

FlowState state_on(const GridGeometry& g, float den) {
    FlowState s;
    allocate_fields(s, g, 1);
    s.den.fill(den);
    return s;
}

// 6 x 5 cells of 3 m x 2 m: 180 m2, all products exact in single precision.
TEST(InflowSums, OfAUniformFlowAreDensityTimesSpeedTimesArea) {
    const GridGeometry g = uniform_mesh({4, 7, 6}, 5, 3, 2);
    FlowState s = state_on(g, 1.25F);
    s.u.fill(8);
    s.v.fill(3);  // along the plane: carries nothing through it
    s.w.fill(-1);
    inflow_sums(g, s);
    EXPECT_EQ(s.flow_in, 1.25F * 8 * 180);
    EXPECT_EQ(s.momentum_in, s.flow_in * 8);
    EXPECT_EQ(s.outflow_mass, s.flow_in);
}

// By an outline formula of the face areas, in double precision and in another order.
TEST(InflowSums, OfAShearedInflowThroughALeaningPlane) {
    const GridGeometry g = test::shaken_mesh();
    FlowState s = state_on(g, 1.2F);
    s.u = test::field_of(g, [](int, int j, int k) { return 2.0 + 0.7 * k + 0.1 * j; });
    s.v = test::random_field(g, -1, 1, 21);
    s.w = test::random_field(g, -1, 1, 22);
    s.den = test::random_field(g, 1, 1.5F, 23);
    inflow_sums(g, s);

    double mass = 0;
    double momentum = 0;
    for (int k = g.nz; k >= 2; --k) {
        for (int j = g.ny; j >= 2; --j) {
            const auto r = [&g](int jj, int kk) {
                return Position{double(g.xn(1, jj, kk)), double(g.yn(1, jj, kk)),
                                double(g.zn(1, jj, kk))};
            };
            const std::array<Position, 4> corners{r(j - 1, k - 1), r(j, k - 1), r(j, k),
                                                  r(j - 1, k)};
            Position area{};
            for (std::size_t n = 0; n < 4; ++n) {
                const Position piece = cross_product(corners[n], corners[(n + 1) % 4]);
                for (std::size_t a = 0; a < 3; ++a) {
                    area[a] += 0.5 * piece[a];
                }
            }
            const auto u = double(s.u(1, j, k));
            const auto den = double(s.den(1, j, k));
            mass += den * scalar_product(area, {u, double(s.v(1, j, k)), double(s.w(1, j, k))});
            momentum += den * area[0] * u * u;
        }
    }
    EXPECT_NEAR(double(s.flow_in), mass, 2e-6 * mass);
    EXPECT_NEAR(double(s.momentum_in), momentum, 2e-6 * momentum);
}

// Faces of the boundary rows and of the other planes play no part.
TEST(InflowSums, TakeTheInteriorFacesOfTheFirstPlaneOnly) {
    const GridGeometry g = uniform_mesh({4, 4, 4}, 1, 1, 1);
    FlowState s = state_on(g, 1);
    s.u.fill(1.0e9F);
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            s.u(1, j, k) = 2;
        }
    }
    inflow_sums(g, s);
    EXPECT_EQ(s.flow_in, 18.0F);
    EXPECT_EQ(s.momentum_in, 36.0F);
}

// Single precision, k inside j: 1 + 2^24, + 1, + 1 stays 2^24 at every step, while with j inside k
// the sum is (1 + 1) + 2^24 + 1 = 2^24 + 4.
TEST(InflowSums, RunInSinglePrecisionWithTheLevelsInside) {
    const GridGeometry g = uniform_mesh({3, 3, 3}, 1, 1, 1);
    FlowState s = state_on(g, 1);
    const float big = 16777216.0F;
    s.u(1, 2, 2) = 1;
    s.u(1, 2, 3) = big;
    s.u(1, 3, 2) = 1;
    s.u(1, 3, 3) = 1;
    inflow_sums(g, s);
    EXPECT_EQ(s.flow_in, big);
}

TEST(InflowSums, StartFromZero) {
    const GridGeometry g = uniform_mesh({3, 3, 3}, 1, 1, 1);
    FlowState s = state_on(g, 1);
    s.u.fill(1);
    inflow_sums(g, s);
    inflow_sums(g, s);
    EXPECT_EQ(s.flow_in, 4.0F);
    EXPECT_EQ(s.momentum_in, 4.0F);
}

}  // namespace
}  // namespace torvex
