// Interpolation factors of GRID.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <utility>

#include "mesh/grid.hpp"
#include "mesh/test_meshes.hpp"
#include "mesh/trilinear.hpp"

namespace torvex {
namespace {

constexpr std::array factor_fields{&GridGeometry::fx, &GridGeometry::fy, &GridGeometry::fz};

// |F - C| / |C' - C| of the face on the high side of cell (i,j,k) along an axis, C' the next
// centre.
double factor_of_the_body(const GridGeometry& g, std::size_t axis, std::array<int, 3> cell) {
    const std::array planes{g.nx, g.ny, g.nz};
    const auto at = [&](int step, bool face) {
        Position index{};
        for (std::size_t n = 0; n < 3; ++n) {
            index[n] = place(cell[n] + (n == axis ? step : 0), planes[n]);
        }
        if (face) {
            index[axis] = cell[axis];
        }
        return point(g, index[0], index[1], index[2]);
    };
    const Position low = at(0, false);
    return norm(minus(at(0, true), low)) / norm(minus(at(1, false), low));
}

// Every factor of the three directions: inside, on the six planes and on the twelve edges.
void expect_factors_of_the_body(const GridGeometry& g) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const Field3& f = g.*factor_fields[axis];
        const std::array planes{g.nx, g.ny, g.nz};
        for (int k = 1; k <= g.nk; ++k) {
            for (int j = 1; j <= g.nj; ++j) {
                for (int i = 1; i <= g.ni; ++i) {
                    SCOPED_TRACE("axis " + std::to_string(axis) + " cell " + std::to_string(i) +
                                 " " + std::to_string(j) + " " + std::to_string(k));
                    const std::array cell{i, j, k};
                    if (cell[axis] > planes[axis]) {
                        EXPECT_EQ(f(i, j, k), 0.0F) << "no face beyond the boundary";
                        continue;
                    }
                    EXPECT_NEAR(double(f(i, j, k)), factor_of_the_body(g, axis, cell), 1e-5);
                    EXPECT_GE(f(i, j, k), 0.0F);
                    EXPECT_LE(f(i, j, k), 1.0F);
                    if (cell[axis] == 1) {
                        EXPECT_EQ(f(i, j, k), 0.0F) << "the low centre lies on the face";
                    }
                    if (cell[axis] == planes[axis]) {
                        EXPECT_EQ(f(i, j, k), 1.0F) << "the high centre lies on the face";
                    }
                }
            }
        }
    }
}

TEST(GridFactors, OfAUniformBoxAreExact) {
    const GridGeometry g = with_metrics(uniform_mesh({6, 5, 7}, 30, 20, 5));
    const auto expected = [](int face, int planes) {
        return face == 1 ? 0.0F : face == planes ? 1.0F : face > planes ? 0.0F : 0.5F;
    };
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                EXPECT_EQ(g.fx(i, j, k), expected(i, g.nx));
                EXPECT_EQ(g.fy(i, j, k), expected(j, g.ny));
                EXPECT_EQ(g.fz(i, j, k), expected(k, g.nz));
            }
        }
    }
}

// Node planes at 0, 1, 4, 6 (widths 1, 3, 2): the faces at 1 and 4 lie at 0.5 of 2 and 1.5 of 2.5
// between the centres. Planes at 0, 10, 22, 36.4 grow by 1.2: 10/22 = 12/26.4 = 5/11.
TEST(GridFactors, OfAStretchedMeshFollowTheWidths) {
    const std::array<double, 4> x{0, 1, 4, 6};
    const GridGeometry g =
        with_metrics(mapped_mesh({4, 4, 4}, [&x](double s, double t, double q) -> Position {
            const double z = 3.0 * q;
            return {x[static_cast<std::size_t>(std::lround(3.0 * s))], 7.0 * t,
                    10.0 * (z + 0.1 * z * (z - 1.0) * (1.0 + (z - 2.0) * 0.2 / 3.0))};
        }));
    EXPECT_NEAR(double(g.zn(1, 1, 3)), 22.0, 1e-5);
    EXPECT_NEAR(double(g.zn(1, 1, 4)), 36.4, 1e-5);
    for (int n = 1; n <= 5; ++n) {
        for (int m = 1; m <= 5; ++m) {
            EXPECT_NEAR(double(g.fx(2, m, n)), 0.25, 1e-6);
            EXPECT_NEAR(double(g.fx(3, m, n)), 0.6, 1e-6);
            EXPECT_NEAR(double(g.fy(m, 2, n)), 0.5, 1e-6);
            EXPECT_NEAR(double(g.fz(m, n, 2)), 5.0 / 11.0, 1e-6);
            EXPECT_NEAR(double(g.fz(m, n, 3)), 5.0 / 11.0, 1e-6);
        }
    }
}

TEST(GridFactors, OfADistortedMeshAreRatiosOfDistancesInTheBody) {
    GridGeometry g = uniform_mesh({9, 8, 7}, 1, 1, 1);
    shake(g, {0.2, 0.2, 0.2}, 12);
    expect_factors_of_the_body(with_metrics(std::move(g)));
}

TEST(GridFactors, OfShearedStretchedAndHillMeshesAreRatiosOfDistancesInTheBody) {
    expect_factors_of_the_body(with_metrics(sheared_mesh({5, 6, 7})));
    expect_factors_of_the_body(
        with_metrics(stretched_mesh({7, 6, 5}, {1, 2, 0.5}, {1.2, 0.9, 1.3})));
    expect_factors_of_the_body(with_metrics(hill_mesh({9, 8, 7})));
}

TEST(GridFactors, OfTheSmallestMeshAreZeroAndOne) {
    expect_factors_of_the_body(with_metrics(uniform_mesh({2, 2, 2}, 3, 2, 1)));
}

// Nodes drawn together along a block edge leave every interior cell a volume, while the centres of
// the edge pieces coincide: their factor is that of the plain mean, and nothing is NaN.
TEST(GridFactors, WhereCentresCoincideAreThatOfThePlainMean) {
    GridGeometry g = uniform_mesh({5, 4, 4}, 1, 1, 1);
    for (int i = 1; i <= g.nx; ++i) {
        g.xn(i, 1, 1) = 2.0F;
    }
    g = with_metrics(std::move(g));
    for (int i = 1; i <= g.nx; ++i) {
        EXPECT_EQ(g.fx(i, 1, 1), 0.5F);
    }
    for (const auto field :
         {&GridGeometry::fx, &GridGeometry::fy, &GridGeometry::fz, &GridGeometry::vol}) {
        const Field3& f = g.*field;
        for (std::size_t n = 0; n < f.size(); ++n) {
            ASSERT_TRUE(std::isfinite(f.data()[n]));
        }
    }
    for (int i = 2; i <= g.nx; ++i) {
        EXPECT_GT(g.vol(i, 2, 2), 0.0F);
    }
}

}  // namespace
}  // namespace torvex
