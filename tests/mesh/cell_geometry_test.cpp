#include "mesh/cell_geometry.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <array>
#include <cmath>
#include <cstring>

#include "mesh/test_meshes.hpp"
#include "mesh/trilinear.hpp"

namespace torvex {
namespace {

GridGeometry with_centres(GridGeometry g) {
    XYZ2XYZC(g);
    return g;
}

GridGeometry shaken() {
    GridGeometry g = uniform_mesh({7, 6, 5}, 1, 1, 1);
    shake(g, {0.2, 0.2, 0.2}, 7);
    return with_centres(std::move(g));
}

float mean2(float a, float b) {
    return 0.5F * (a + b);
}

TEST(CellCentres, LieMidwayAndOnTheBoundaryPlanesOfAUniformBox) {
    const GridGeometry g = with_centres(uniform_mesh({5, 4, 6}, 30, 20, 5));
    const auto along = [](int cell, int planes, float width) {
        if (cell == 1) {
            return 0.0F;
        }
        if (cell == planes + 1) {
            return width * static_cast<float>(planes - 1);
        }
        return width * (static_cast<float>(cell) - 1.5F);
    };
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                EXPECT_EQ(g.xc(i, j, k), along(i, g.nx, 30));
                EXPECT_EQ(g.yc(i, j, k), along(j, g.ny, 20));
                EXPECT_EQ(g.zc(i, j, k), along(k, g.nz, 5));
            }
        }
    }
    EXPECT_EQ(g.xc(2, 2, 2) - g.xc(1, 2, 2), 15.0F) << "half a cell from the boundary";
}

TEST(CellCentres, AreMeansOfTheNodesOfADistortedMesh) {
    const GridGeometry g = shaken();
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const Position c = point(g, place(i, g.nx), place(j, g.ny), place(k, g.nz));
                EXPECT_NEAR(double(g.xc(i, j, k)), c[0], 2e-6) << i << " " << j << " " << k;
                EXPECT_NEAR(double(g.yc(i, j, k)), c[1], 2e-6) << i << " " << j << " " << k;
                EXPECT_NEAR(double(g.zc(i, j, k)), c[2], 2e-6) << i << " " << j << " " << k;
            }
        }
    }
}

TEST(CellCentres, SumTheEightNodesIThenJThenKAscending) {
    const GridGeometry g = shaken();
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                float sum = 0;
                for (int n = k - 1; n <= k; ++n) {
                    for (int m = j - 1; m <= j; ++m) {
                        for (int l = i - 1; l <= i; ++l) {
                            sum += g.yn(l, m, n);
                        }
                    }
                }
                EXPECT_EQ(g.yc(i, j, k), 0.125F * sum);
            }
        }
    }
}

TEST(CellCentres, TwelveEdgesTakeTheMeanOfTheEdgePiece) {
    const GridGeometry g = shaken();
    for (int a = 0; a <= 1; ++a) {
        for (int b = 0; b <= 1; ++b) {
            const int ci = a == 0 ? 1 : g.ni;
            const int ni = a == 0 ? 1 : g.nx;
            const int cj = a == 0 ? 1 : g.nj;
            const int nj = a == 0 ? 1 : g.ny;
            const int dj = b == 0 ? 1 : g.nj;
            const int mj = b == 0 ? 1 : g.ny;
            const int ck = b == 0 ? 1 : g.nk;
            const int nk = b == 0 ? 1 : g.nz;
            for (int k = 2; k <= g.nz; ++k) {
                EXPECT_EQ(g.xc(ci, dj, k), mean2(g.xn(ni, mj, k - 1), g.xn(ni, mj, k)));
            }
            for (int j = 2; j <= g.ny; ++j) {
                EXPECT_EQ(g.yc(ci, j, ck), mean2(g.yn(ni, j - 1, nk), g.yn(ni, j, nk)));
            }
            for (int i = 2; i <= g.nx; ++i) {
                EXPECT_EQ(g.zc(i, cj, ck), mean2(g.zn(i - 1, nj, nk), g.zn(i, nj, nk)));
            }
        }
    }
}

TEST(CellCentres, EightCornersAreTheNodes) {
    const GridGeometry g = shaken();
    for (const int k : {1, g.nk}) {
        for (const int j : {1, g.nj}) {
            for (const int i : {1, g.ni}) {
                const int l = std::min(i, g.nx);
                const int m = std::min(j, g.ny);
                const int n = std::min(k, g.nz);
                EXPECT_EQ(g.xc(i, j, k), g.xn(l, m, n));
                EXPECT_EQ(g.yc(i, j, k), g.yn(l, m, n));
                EXPECT_EQ(g.zc(i, j, k), g.zn(l, m, n));
            }
        }
    }
}

// zc(i,j,1) is the terrain in the middle of the face, here of a ground that is bilinear in x and y
// and therefore known exactly at every face centre.
TEST(CellCentres, GroundLayerIsTheTerrainInTheMiddleOfTheFace) {
    const auto ground = [](double x, double y) { return 50 + 0.1 * x - 0.2 * y + 0.001 * x * y; };
    const GridGeometry g =
        with_centres(mapped_mesh({9, 7, 5}, [&](double s, double t, double q) -> Position {
            const double x = 400 * s * s;
            const double y = 300 * t;
            return {x, y, ground(x, y) + q * (500 - ground(x, y))};
        }));
    for (int j = 1; j <= g.nj; ++j) {
        for (int i = 1; i <= g.ni; ++i) {
            EXPECT_NEAR(double(g.zc(i, j, 1)), ground(double(g.xc(i, j, 1)), double(g.yc(i, j, 1))),
                        1e-4);
        }
    }
}

TEST(CellCentres, AreTheSameBitsForAnyNumberOfThreads) {
    const int threads_before = omp_get_max_threads();
    omp_set_num_threads(1);
    const GridGeometry one = shaken();
    for (const int threads : {2, 3, 5}) {
        omp_set_num_threads(threads);
        const GridGeometry g = shaken();
        for (const auto field : {&GridGeometry::xc, &GridGeometry::yc, &GridGeometry::zc}) {
            EXPECT_EQ(std::memcmp((g.*field).data(), (one.*field).data(),
                                  (one.*field).size() * sizeof(float)),
                      0)
                << threads;
        }
    }
    omp_set_num_threads(threads_before);
}

}  // namespace
}  // namespace torvex
