// Area vectors of cell faces.

#include "solver/face_area.hpp"

#include <gtest/gtest.h>

#include <array>

#include "mesh/test_meshes.hpp"
#include "mesh/trilinear.hpp"
#include "solver/fields.hpp"

namespace torvex {
namespace {

Position exact(const GridGeometry& g, int i, int j, int k) {
    return {double(g.xn(i, j, k)), double(g.yn(i, j, k)), double(g.zn(i, j, k))};
}

// The area vector of any closed line of straight pieces is half the sum of r(n) x r(n+1).
Position area_within(const std::array<Position, 4>& corners) {
    Position sum{};
    for (std::size_t n = 0; n < 4; ++n) {
        const Position piece = cross_product(corners[n], corners[(n + 1) % 4]);
        for (std::size_t a = 0; a < 3; ++a) {
            sum[a] += 0.5 * piece[a];
        }
    }
    return sum;
}

void expect_vector(const Vec3& s, const Position& expected, double tolerance) {
    EXPECT_NEAR(double(s.x), expected[0], tolerance);
    EXPECT_NEAR(double(s.y), expected[1], tolerance);
    EXPECT_NEAR(double(s.z), expected[2], tolerance);
}

Vec3 sum_of_faces(const GridGeometry& g, int i, int j, int k) {
    Vec3 sum{0, 0, 0};
    const auto add = [&sum](const Vec3& s, float sign) {
        sum = {sum.x + sign * s.x, sum.y + sign * s.y, sum.z + sign * s.z};
    };
    add(east_area(g, i, j, k), 1);
    add(east_area(g, i - 1, j, k), -1);
    add(north_area(g, i, j, k), 1);
    add(north_area(g, i, j - 1, k), -1);
    add(top_area(g, i, j, k), 1);
    add(top_area(g, i, j, k - 1), -1);
    return sum;
}

template <class Visit>
void for_interior(const GridGeometry& g, Visit visit) {
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                visit(i, j, k);
            }
        }
    }
}

// Edges a = (1, 0, 0.4), b = (0.3, 1, 0), c = (0, 0.2, 1) of every cell: b x c, c x a, a x b.
TEST(FaceArea, OfPlaneFacesIsTheProductOfTheirEdges) {
    const GridGeometry g = sheared_mesh({5, 4, 6});
    for_interior(g, [&g](int i, int j, int k) {
        for (const int plane : {i - 1, i}) {
            expect_vector(east_area(g, plane, j, k), {1, -0.3, 0.06}, 1e-6);
        }
        for (const int plane : {j - 1, j}) {
            expect_vector(north_area(g, i, plane, k), {0.08, 1, -0.2}, 1e-6);
        }
        for (const int plane : {k - 1, k}) {
            expect_vector(top_area(g, i, j, plane), {-0.4, 0.12, 1}, 1e-6);
        }
    });
}

TEST(FaceArea, OfTwistedFacesIsThatOfTheirOutline) {
    const GridGeometry g = test::shaken_mesh();
    for_interior(g, [&g](int i, int j, int k) {
        const auto r = [&g](int ii, int jj, int kk) { return exact(g, ii, jj, kk); };
        expect_vector(east_area(g, i, j, k),
                      area_within({r(i, j - 1, k - 1), r(i, j, k - 1), r(i, j, k), r(i, j - 1, k)}),
                      1e-5);
        expect_vector(north_area(g, i, j, k),
                      area_within({r(i - 1, j, k - 1), r(i - 1, j, k), r(i, j, k), r(i, j, k - 1)}),
                      1e-5);
        expect_vector(top_area(g, i, j, k),
                      area_within({r(i - 1, j - 1, k), r(i, j - 1, k), r(i, j, k), r(i - 1, j, k)}),
                      1e-5);
    });
}

// The integral of a constant vector over a closed surface is zero.
TEST(FaceArea, ClosesEveryCell) {
    const GridGeometry g = test::shaken_mesh();
    for_interior(g, [&g](int i, int j, int k) {
        expect_vector(sum_of_faces(g, i, j, k), {0, 0, 0}, 2e-6);
    });
}

TEST(FaceArea, PointsTowardsRisingIndex) {
    const GridGeometry g = with_metrics(hill_mesh({12, 10, 8}));
    const auto centre = [&g](int i, int j, int k) {
        return Vec3{g.xc(i, j, k), g.yc(i, j, k), g.zc(i, j, k)};
    };
    for_interior(g, [&](int i, int j, int k) {
        const Vec3 c = centre(i, j, k);
        EXPECT_GT(dot(east_area(g, i, j, k), centre(i + 1, j, k) - c), 0.0F);
        EXPECT_GT(dot(north_area(g, i, j, k), centre(i, j + 1, k) - c), 0.0F);
        EXPECT_GT(dot(top_area(g, i, j, k), centre(i, j, k + 1) - c), 0.0F);
    });
}

TEST(FaceArea, IsHalfTheProductOfTheDiagonals) {
    const GridGeometry g = test::shaken_mesh();
    EXPECT_EQ(east_diagonals(g, 3, 3, 3).x, 2.0F * east_area(g, 3, 3, 3).x);
    EXPECT_EQ(north_diagonals(g, 3, 3, 3).y, 2.0F * north_area(g, 3, 3, 3).y);
    EXPECT_EQ(top_diagonals(g, 3, 3, 3).z, 2.0F * top_area(g, 3, 3, 3).z);
}

}  // namespace
}  // namespace torvex
