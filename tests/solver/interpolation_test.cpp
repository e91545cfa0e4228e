// Values at faces and corners.

#include "solver/interpolation.hpp"

#include <gtest/gtest.h>

#include <string>

#include "mesh/test_meshes.hpp"
#include "mesh/trilinear.hpp"
#include "solver/fields.hpp"

namespace torvex {
namespace {

// The weight of the higher neighbour at a face, from the shape of the mesh alone: the distances of
// the face point from the two centres, all three points of the trilinear body. `axis` 0, 1, 2.
double weight(const GridGeometry& g, int i, int j, int k, int axis) {
    const std::array<int, 3> cell{i, j, k};
    const std::array<int, 3> planes{g.nx, g.ny, g.nz};
    Position low{};
    for (std::size_t n = 0; n < 3; ++n) {
        low[n] = place(cell[n], planes[n]);
    }
    Position face = low;
    Position high = low;
    const auto a = static_cast<std::size_t>(axis);
    face[a] = cell[a];
    high[a] = place(cell[a] + 1, planes[a]);
    const auto at = [&g](const Position& s) { return point(g, s[0], s[1], s[2]); };
    return norm(minus(at(face), at(low))) / norm(minus(at(high), at(low)));
}

// Values up to 1 and some ten roundings.
constexpr double rounding = 1e-6;

TEST(Interpolation, WeighsTheTwoCellsOfAFaceByDistance) {
    const GridGeometry g = test::shaken_mesh();
    const Field3 x = test::random_field(g, -1, 1, 3);
    const auto X = [&x](int i, int j, int k) { return double(x(i, j, k)); };
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                SCOPED_TRACE(std::to_string(i) + " " + std::to_string(j) + " " + std::to_string(k));
                if (i <= g.nx) {
                    const double f = weight(g, i, j, k, 0);
                    const double value = X(i, j, k) + f * (X(i + 1, j, k) - X(i, j, k));
                    EXPECT_NEAR(double(east(x, g, i, j, k)), value, rounding);
                    EXPECT_EQ(west(x, g, i + 1, j, k), east(x, g, i, j, k));
                }
                if (j <= g.ny) {
                    const double f = weight(g, i, j, k, 1);
                    const double value = X(i, j, k) + f * (X(i, j + 1, k) - X(i, j, k));
                    EXPECT_NEAR(double(north(x, g, i, j, k)), value, rounding);
                    EXPECT_EQ(south(x, g, i, j + 1, k), north(x, g, i, j, k));
                }
                if (k <= g.nz) {
                    const double f = weight(g, i, j, k, 2);
                    const double value = X(i, j, k) + f * (X(i, j, k + 1) - X(i, j, k));
                    EXPECT_NEAR(double(top(x, g, i, j, k)), value, rounding);
                    EXPECT_EQ(bottom(x, g, i, j, k + 1), top(x, g, i, j, k));
                }
            }
        }
    }
}

TEST(Interpolation, TakesTheBoundaryValueItselfOnABoundaryFace) {
    const GridGeometry g = test::shaken_mesh();
    const Field3 x = test::random_field(g, -1, 1, 5);
    EXPECT_EQ(east(x, g, 1, 4, 4), x(1, 4, 4));
    EXPECT_EQ(east(x, g, g.nx, 4, 4), x(g.ni, 4, 4));
    EXPECT_EQ(north(x, g, 4, 1, 4), x(4, 1, 4));
    EXPECT_EQ(north(x, g, 4, g.ny, 4), x(4, g.nj, 4));
    EXPECT_EQ(top(x, g, 4, 4, 1), x(4, 4, 1));
    EXPECT_EQ(top(x, g, 4, 4, g.nz), x(4, 4, g.nk));
}

// The mean of a product is not the product of the means.
TEST(Interpolation, FormsAProductAtTheCellsBeforeItInterpolates) {
    const GridGeometry g = with_metrics(uniform_mesh({4, 4, 4}, 1, 1, 1));
    Field3 x(g.ni, g.nj, g.nk);
    x(2, 2, 2) = 1.0F;
    x(3, 2, 2) = 3.0F;
    const auto square = [&x](int i, int j, int k) { return x(i, j, k) * x(i, j, k); };
    EXPECT_EQ(east(square, g, 2, 2, 2), 5.0F);  // (1 + 9)/2, not ((1 + 3)/2)^2
}

// The eight weights written out: fz is that of (i,j,k) in both halves, fy that of each level, fx
// that of each column.
TEST(Corner, IsTheThreeStageInterpolation) {
    const GridGeometry g = test::shaken_mesh();
    const Field3 x = test::random_field(g, -1, 1, 7);
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            for (int i = 1; i <= g.nx; ++i) {
                double value = 0;
                for (int dk = 0; dk <= 1; ++dk) {
                    for (int dj = 0; dj <= 1; ++dj) {
                        for (int di = 0; di <= 1; ++di) {
                            const double fx = weight(g, i, j + dj, k + dk, 0);
                            const double fy = weight(g, i, j, k + dk, 1);
                            const double fz = weight(g, i, j, k, 2);
                            value += (di == 1 ? fx : 1 - fx) * (dj == 1 ? fy : 1 - fy) *
                                     (dk == 1 ? fz : 1 - fz) * double(x(i + di, j + dj, k + dk));
                        }
                    }
                }
                EXPECT_NEAR(double(corner(x, g, i, j, k)), value, 3 * rounding)
                    << i << " " << j << " " << k;
            }
        }
    }
}

void expect_exact_for_trilinear_fields(const GridGeometry& g) {
    const auto formula = [](double x, double y, double z) {
        return 1 + 2 * x - 3 * y + 0.5 * z + 0.7 * x * y - 0.4 * y * z + 0.3 * z * x -
               0.2 * x * y * z;
    };
    const Field3 field = test::field_of(g, [&](int i, int j, int k) {
        return formula(double(g.xc(i, j, k)), double(g.yc(i, j, k)), double(g.zc(i, j, k)));
    });
    double largest = 0;
    for (std::size_t n = 0; n < field.size(); ++n) {
        largest = std::max(largest, std::abs(double(field.data()[n])));
    }
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            for (int i = 1; i <= g.nx; ++i) {
                const double value =
                    formula(double(g.xn(i, j, k)), double(g.yn(i, j, k)), double(g.zn(i, j, k)));
                EXPECT_NEAR(double(corner(field, g, i, j, k)), value, 1e-6 * largest)
                    << i << " " << j << " " << k;
            }
        }
    }
}

TEST(Corner, OfATrilinearFieldIsItsValueAtTheNode) {
    expect_exact_for_trilinear_fields(with_metrics(uniform_mesh({6, 5, 7}, 1, 0.5F, 0.25F)));
    expect_exact_for_trilinear_fields(
        with_metrics(stretched_mesh({6, 5, 7}, {1, 0.5, 0.1}, {1.2, 0.8, 1.5})));
}

}  // namespace
}  // namespace torvex
