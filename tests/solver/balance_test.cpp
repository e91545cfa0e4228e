// The mass imbalance of each cell.

#include "solver/balance.hpp"

#include <gtest/gtest.h>

#include "mesh/test_meshes.hpp"
#include "solver/face_area.hpp"
#include "solver/fields.hpp"

namespace torvex {
namespace {

// The fluxes of a uniform flow: closed cells, so nothing is left over.
void set_uniform_flow(const GridGeometry& g, FlowState& s, const Vec3& velocity) {
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            for (int i = 1; i <= g.nx; ++i) {
                if (j > 1 && k > 1) {
                    s.flxU(i, j, k) = dot(east_area(g, i, j, k), velocity);
                }
                if (i > 1 && k > 1) {
                    s.flxV(i, j, k) = dot(north_area(g, i, j, k), velocity);
                }
                if (i > 1 && j > 1) {
                    s.flxW(i, j, k) = dot(top_area(g, i, j, k), velocity);
                }
            }
        }
    }
}

TEST(Balance, OfAUniformFlowIsZero) {
    const GridGeometry g = test::shaken_mesh();
    FlowState s;
    allocate_fields(s, g, 1);
    s.den.fill(1.2F);
    set_uniform_flow(g, s, {3, -1, 0.5F});
    Imbalance b;
    BALANCE(g, s, b);
    bool any = false;
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                EXPECT_NEAR(b.balXi(i, j, k) + b.balEt(i, j, k) + b.balZe(i, j, k), 0.0F, 1e-5F);
                any = any || b.balXi(i, j, k) != 0.0F;
            }
        }
    }
    EXPECT_TRUE(any);  // the single directions do not balance on such a mesh
}

// Random fluxes and densities; the last layer of cells in each direction is left out.
TEST(Balance, IsTheMassFluxOutLessTheMassFluxInByDirection) {
    const GridGeometry g = test::shaken_mesh();
    FlowState s;
    allocate_fields(s, g, 1);
    s.den = test::random_field(g, 1, 1.5F, 31);
    s.flxU = test::random_field(g, -1, 1, 32);
    s.flxV = test::random_field(g, -1, 1, 33);
    s.flxW = test::random_field(g, -1, 1, 34);
    Imbalance b;
    b.balXi.allocate(g.ni, g.nj, g.nk, 99);  // of an earlier call
    BALANCE(g, s, b);

    const auto mix = [](float low, float high, float f) {
        return double(low) + double(f) * (double(high) - double(low));
    };
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                SCOPED_TRACE(std::to_string(i) + " " + std::to_string(j) + " " + std::to_string(k));
                if (i < 2 || i > g.nx - 1 || j < 2 || j > g.ny - 1 || k < 2 || k > g.nz - 1) {
                    EXPECT_EQ(b.balXi(i, j, k), 0.0F);
                    EXPECT_EQ(b.balEt(i, j, k), 0.0F);
                    EXPECT_EQ(b.balZe(i, j, k), 0.0F);
                    continue;
                }
                const Field3& d = s.den;
                const float here = d(i, j, k);
                EXPECT_NEAR(
                    double(b.balXi(i, j, k)),
                    mix(here, d(i + 1, j, k), g.fx(i, j, k)) * double(s.flxU(i, j, k)) -
                        mix(d(i - 1, j, k), here, g.fx(i - 1, j, k)) * double(s.flxU(i - 1, j, k)),
                    2e-6);
                EXPECT_NEAR(
                    double(b.balEt(i, j, k)),
                    mix(here, d(i, j + 1, k), g.fy(i, j, k)) * double(s.flxV(i, j, k)) -
                        mix(d(i, j - 1, k), here, g.fy(i, j - 1, k)) * double(s.flxV(i, j - 1, k)),
                    2e-6);
                EXPECT_NEAR(
                    double(b.balZe(i, j, k)),
                    mix(here, d(i, j, k + 1), g.fz(i, j, k)) * double(s.flxW(i, j, k)) -
                        mix(d(i, j, k - 1), here, g.fz(i, j, k - 1)) * double(s.flxW(i, j, k - 1)),
                    2e-6);
            }
        }
    }
}

TEST(Balance, GivesTheSameBitsForAnyNumberOfThreads) {
    const GridGeometry g = test::shaken_mesh();
    FlowState s;
    allocate_fields(s, g, 1);
    s.den = test::random_field(g, 1, 1.5F, 41);
    s.flxU = test::random_field(g, -1, 1, 42);
    s.flxV = test::random_field(g, -1, 1, 43);
    s.flxW = test::random_field(g, -1, 1, 44);
    const auto with_threads = [&](int n) {
        const test::Threads threads(n);
        Imbalance b;
        BALANCE(g, s, b);
        return b;
    };
    const Imbalance one = with_threads(1);
    for (const int n : {2, 3, 5}) {
        const Imbalance b = with_threads(n);
        EXPECT_TRUE(test::same_bits(b.balXi, one.balXi)) << n;
        EXPECT_TRUE(test::same_bits(b.balEt, one.balEt)) << n;
        EXPECT_TRUE(test::same_bits(b.balZe, one.balZe)) << n;
    }
}

}  // namespace
}  // namespace torvex
