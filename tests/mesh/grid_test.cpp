// Volumes and metric terms of GRID.

#include "mesh/grid.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>

#include "mesh/cell_geometry.hpp"
#include "mesh/test_meshes.hpp"
#include "mesh/trilinear.hpp"

namespace torvex {
namespace {

bool on_boundary(int cell, int planes) {
    return cell == 1 || cell == planes + 1;
}

// 0 inside, 1 on a boundary plane, 2 on a block edge, 3 in a corner.
int boundaries(const GridGeometry& g, int i, int j, int k) {
    return int{on_boundary(i, g.nx)} + int{on_boundary(j, g.ny)} + int{on_boundary(k, g.nz)};
}

template <class Visit>
void for_all_cells(const GridGeometry& g, Visit visit) {
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                SCOPED_TRACE(std::to_string(i) + " " + std::to_string(j) + " " + std::to_string(k));
                visit(i, j, k);
            }
        }
    }
}

Position xi(const GridGeometry& g, int i, int j, int k) {
    return {double(g.xix(i, j, k)), double(g.xiy(i, j, k)), double(g.xiz(i, j, k))};
}
Position et(const GridGeometry& g, int i, int j, int k) {
    return {double(g.etx(i, j, k)), double(g.ety(i, j, k)), double(g.etz(i, j, k))};
}
Position ze(const GridGeometry& g, int i, int j, int k) {
    return {double(g.zex(i, j, k)), double(g.zey(i, j, k)), double(g.zez(i, j, k))};
}

constexpr std::array metric_fields{&GridGeometry::vol, &GridGeometry::xix, &GridGeometry::xiy,
                                   &GridGeometry::xiz, &GridGeometry::etx, &GridGeometry::ety,
                                   &GridGeometry::etz, &GridGeometry::zex, &GridGeometry::zey,
                                   &GridGeometry::zez};

GridGeometry shaken() {
    GridGeometry g = uniform_mesh({9, 8, 7}, 1, 1, 1);
    shake(g, {0.2, 0.2, 0.2}, 11);
    return with_metrics(std::move(g));
}

// The metric terms of every cell and boundary plane against the same points of the trilinear body
// in double precision; lengths are of order one, so that 1e-5 is some forty roundings.
void expect_metrics_of_the_body(const GridGeometry& g) {
    for_all_cells(g, [&g](int i, int j, int k) {
        if (boundaries(g, i, j, k) > 1) {
            return;
        }
        const double s = place(i, g.nx);
        const double t = place(j, g.ny);
        const double q = place(k, g.nz);
        const auto [i0, i1] = ends(i, g.nx);
        const auto [j0, j1] = ends(j, g.ny);
        const auto [k0, k1] = ends(k, g.nz);
        const Position a = minus(point(g, i1, t, q), point(g, i0, t, q));
        const Position b = minus(point(g, s, j1, q), point(g, s, j0, q));
        const Position c = minus(point(g, s, t, k1), point(g, s, t, k0));
        const Position bc = cross_product(b, c);
        const Position ca = cross_product(c, a);
        const Position ab = cross_product(a, b);
        EXPECT_LT(norm(minus(xi(g, i, j, k), bc)), 1e-5 * norm(bc));
        EXPECT_LT(norm(minus(et(g, i, j, k), ca)), 1e-5 * norm(ca));
        EXPECT_LT(norm(minus(ze(g, i, j, k), ab)), 1e-5 * norm(ab));
        const double det = a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
                           a[2] * (b[0] * c[1] - b[1] * c[0]);
        EXPECT_NEAR(double(g.vol(i, j, k)), det, 1e-5 * det);
        EXPECT_GT(g.vol(i, j, k), 0.0F);
    });
}

TEST(GridMetric, OfAUniformBoxIsExact) {
    const float dx = 30;
    const float dy = 20;
    const float dz = 5;
    const GridGeometry g = with_metrics(uniform_mesh({6, 5, 7}, dx, dy, dz));
    for_all_cells(g, [&](int i, int j, int k) {
        if (boundaries(g, i, j, k) > 1) {
            return;
        }
        const float a = on_boundary(i, g.nx) ? 0.5F * dx : dx;
        const float b = on_boundary(j, g.ny) ? 0.5F * dy : dy;
        const float c = on_boundary(k, g.nz) ? 0.5F * dz : dz;
        EXPECT_EQ(g.xix(i, j, k), b * c);
        EXPECT_EQ(g.ety(i, j, k), c * a);
        EXPECT_EQ(g.zez(i, j, k), a * b);
        EXPECT_EQ(g.vol(i, j, k), a * b * c) << "half a cell on a boundary plane";
        for (const auto field : {&GridGeometry::xiy, &GridGeometry::xiz, &GridGeometry::etx,
                                 &GridGeometry::etz, &GridGeometry::zex, &GridGeometry::zey}) {
            EXPECT_EQ((g.*field)(i, j, k), 0.0F);
        }
    });
}

// x += 0.3 y, y += 0.2 z, z += 0.4 x: a = (1, 0, 0.4), b = (0.3, 1, 0), c = (0, 0.2, 1).
TEST(GridMetric, OfAShearedBoxIsTheSameInEveryCell) {
    const GridGeometry g = with_metrics(sheared_mesh({6, 5, 7}));
    const Position bc{1.0, -0.3, 0.06};
    const Position ca{0.08, 1.0, -0.2};
    const Position ab{-0.4, 0.12, 1.0};
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                EXPECT_LT(norm(minus(xi(g, i, j, k), bc)), 1e-5);
                EXPECT_LT(norm(minus(et(g, i, j, k), ca)), 1e-5);
                EXPECT_LT(norm(minus(ze(g, i, j, k), ab)), 1e-5);
                EXPECT_NEAR(double(g.vol(i, j, k)), 1.024, 1e-5);
            }
        }
    }
    EXPECT_NEAR(double(g.vol(1, 3, 3)), 0.512, 1e-5);
    EXPECT_NEAR(double(g.vol(3, g.nj, 3)), 0.512, 1e-5);
    EXPECT_NEAR(double(g.vol(3, 3, 1)), 0.512, 1e-5);
}

TEST(GridMetric, OfADistortedMeshIsThatOfTheTrilinearBody) {
    expect_metrics_of_the_body(shaken());
}

TEST(GridMetric, OfAStretchedHillIsThatOfTheTrilinearBody) {
    expect_metrics_of_the_body(with_metrics(hill_mesh({9, 8, 7})));
    expect_metrics_of_the_body(
        with_metrics(stretched_mesh({9, 8, 7}, {1, 2, 0.5}, {1.2, 0.9, 1.3})));
}

TEST(GridMetric, OfTheSmallestMeshIsThatOfTheTrilinearBody) {
    GridGeometry g = uniform_mesh({2, 2, 2}, 1, 1, 1);
    shake(g, {0.2, 0.2, 0.2}, 3);
    expect_metrics_of_the_body(with_metrics(std::move(g)));
}

TEST(GridMetric, StaysZeroOnBlockEdgesAndCorners) {
    GridGeometry g = shaken();
    for (const auto field : metric_fields) {
        (g.*field).fill(7.0F);
    }
    GRID(g);
    for_all_cells(g, [&g](int i, int j, int k) {
        if (boundaries(g, i, j, k) > 1) {
            for (const auto field : metric_fields) {
                EXPECT_EQ((g.*field)(i, j, k), 0.0F);
            }
        }
    });
}

// Volume of the trilinear body by the divergence theorem: a third of the flux of the position
// vector through its boundary. On a bilinear face the integrand is quadratic in each of its
// coordinates, so two Gauss points along each are exact.
double enclosed_volume(const GridGeometry& g) {
    const std::array planes{g.nx, g.ny, g.nz};
    const double offset = 0.5 / std::sqrt(3.0);
    double flux = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::size_t u = (axis + 1) % 3;
        const std::size_t v = (axis + 2) % 3;
        for (const int side : {1, planes[axis]}) {
            for (int m = 1; m < planes[u]; ++m) {
                for (int n = 1; n < planes[v]; ++n) {
                    for (const double du : {0.5 - offset, 0.5 + offset}) {
                        for (const double dv : {0.5 - offset, 0.5 + offset}) {
                            const auto r = [&](double um, double vn) {
                                Position index{};
                                index[axis] = side;
                                index[u] = um;
                                index[v] = vn;
                                return point(g, index[0], index[1], index[2]);
                            };
                            const Position ru = minus(r(m + 1, n + dv), r(m, n + dv));
                            const Position rv = minus(r(m + du, n + 1), r(m + du, n));
                            flux += (side == 1 ? -0.25 : 0.25) *
                                    scalar_product(r(m + du, n + dv), cross_product(ru, rv));
                        }
                    }
                }
            }
        }
    }
    return flux / 3.0;
}

double sum_of_volumes(const GridGeometry& g) {
    double sum = 0;
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                sum += double(g.vol(i, j, k));
            }
        }
    }
    return sum;
}

TEST(GridVolume, ReferenceOfTheseTestsKnowsABox) {
    EXPECT_NEAR(enclosed_volume(uniform_mesh({4, 5, 6}, 3, 2, 1)), 9.0 * 8.0 * 5.0, 1e-9);
}

// Columns with straight upright edges: the determinant is linear in the cell's own coordinates, so
// its value at the centre is the volume.
TEST(GridVolume, OfUprightColumnsFillsTheDomain) {
    GridGeometry g = stretched_mesh({12, 11, 9}, {2, 3, 0.5}, {1.1, 0.95, 1.2});
    shake(g, {0, 0, 0.2}, 5);
    g = with_metrics(std::move(g));
    const double volume = enclosed_volume(g);
    EXPECT_NEAR(sum_of_volumes(g), volume, 1e-5 * volume);
}

// Elsewhere it is a one-point rule, exact to second order in the distortion.
TEST(GridVolume, OfAMildlyDistortedMeshFillsTheDomain) {
    GridGeometry g = uniform_mesh({12, 11, 9}, 1, 1, 1);
    shake(g, {0.03, 0.03, 0.03}, 6);
    g = with_metrics(std::move(g));
    const double volume = enclosed_volume(g);
    EXPECT_NEAR(sum_of_volumes(g), volume, 1e-4 * volume);
}

TEST(Grid, GivesTheSameBitsForAnyNumberOfThreads) {
    const int threads_before = omp_get_max_threads();
    omp_set_num_threads(1);
    const GridGeometry one = shaken();
    for (const int threads : {2, 3, 5}) {
        omp_set_num_threads(threads);
        const GridGeometry g = shaken();
        const auto expect_same = [&](Field3 GridGeometry::*field) {
            ASSERT_EQ((g.*field).size(), (one.*field).size());
            EXPECT_EQ(std::memcmp((g.*field).data(), (one.*field).data(),
                                  (one.*field).size() * sizeof(float)),
                      0)
                << threads << " threads";
        };
        for (const auto field : metric_fields) {
            expect_same(field);
        }
        for (const auto field : {&GridGeometry::fx, &GridGeometry::fy, &GridGeometry::fz}) {
            expect_same(field);
        }
    }
    omp_set_num_threads(threads_before);
}

}  // namespace
}  // namespace torvex
