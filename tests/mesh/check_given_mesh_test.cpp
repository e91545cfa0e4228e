// The tests that a mesh given by the user must pass.

#include "mesh/check_given_mesh.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "mesh/test_meshes.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

void expect_good(GridGeometry g) {
    g = with_metrics(std::move(g));
    const auto stop = test::stop_of([&] { check_given_mesh(g, "nodes.tuf"); });
    EXPECT_FALSE(stop.has_value()) << stop->what();
}

void expect_refused(GridGeometry g, const std::string& start, const std::string& words) {
    g = with_metrics(std::move(g));
    const auto stop = test::stop_of([&] { check_given_mesh(g, "nodes.tuf"); });
    ASSERT_TRUE(stop.has_value()) << start;
    EXPECT_EQ(stop->code(), 1);
    EXPECT_EQ(stop->where(), "nodes.tuf");
    EXPECT_THAT(stop->reason(), StartsWith(start));
    EXPECT_THAT(stop->reason(), HasSubstr(words));
}

GridGeometry box() {
    return uniform_mesh({5, 4, 4}, 10, 10, 10);
}

TEST(CheckGivenMesh, TakesMeshesThatTheEquationsCanBeSolvedOn) {
    expect_good(box());
    expect_good(uniform_mesh({2, 2, 2}, 1, 1, 1));
    expect_good(sheared_mesh({5, 5, 5}));
    expect_good(hill_mesh({9, 8, 7}));
}

TEST(CheckGivenMesh, NamesTheFirstCellThatIsTurnedInsideOut) {
    // Node (3,2,2) is pulled far behind its neighbours; of the cells that share it (3,2,2) comes
    // first. The centre of its face on plane 3 goes to x = (3*20 - 300)/4 = -60, that on plane 2
    // stays at 10, and the other two vectors keep their 10 m across: -70 * 10 * 10.
    GridGeometry g = box();
    g.xn(3, 2, 2) = -300;
    expect_refused(g, "cell (3, 2, 2) of the given mesh: its determinant is -0.7000E+04 m3",
                   "expected a value above 0");
}

TEST(CheckGivenMesh, RefusesCellsWithoutVolume) {
    GridGeometry g = box();
    for (int j = 1; j <= g.ny; ++j) {
        for (int i = 1; i <= g.nx; ++i) {
            g.zn(i, j, 3) = g.zn(i, j, 2);
        }
    }
    expect_refused(g, "cell (2, 2, 3) of the given mesh: its determinant is 0.0000E+00 m3", "");
}

TEST(CheckGivenMesh, RefusesALeftHandedMesh) {
    expect_refused(uniform_mesh({4, 4, 4}, 1, -1, 1), "cell (2, 2, 2)", "determinant is -");
    expect_refused(uniform_mesh({4, 4, 4}, 1, 1, -1), "cell (2, 2, 2)", "determinant is -");
}

TEST(CheckGivenMesh, RefusesNodesThatAreNotFinite) {
    for (const float value :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          -std::numeric_limits<float>::infinity()}) {
        for (Field3 GridGeometry::*axis :
             {&GridGeometry::xn, &GridGeometry::yn, &GridGeometry::zn}) {
            GridGeometry inside = box();
            (inside.*axis)(4, 3, 2) = value;
            expect_refused(inside, "cell (4, 3, 2) of the given mesh",
                           "a coordinate of its nodes is not a finite number");
            GridGeometry corner = box();
            (corner.*axis)(1, 1, 1) = value;
            expect_refused(corner, "cell (2, 2, 2) of the given mesh", "not a finite number");
            GridGeometry last = box();
            (last.*axis)(5, 4, 4) = value;
            expect_refused(last, "cell (5, 4, 4) of the given mesh", "not a finite number");
        }
    }
}

TEST(CheckGivenMesh, RefusesVolumesBeyondSinglePrecision) {
    expect_refused(uniform_mesh({3, 3, 3}, 1e15F, 1e15F, 1e15F), "cell (2, 2, 2)",
                   "beyond the range of single precision");
}

// All cells right-handed, but the block lies on its side: k runs along -y, j upwards.
TEST(CheckGivenMesh, RefusesLevelsThatDoNotRise) {
    const GridGeometry g = mapped_mesh({4, 4, 4}, [](double s, double t, double q) {
        return Position{s, -q, t};
    });
    expect_refused(g, "cell (1, 1, 2) of the given mesh: it lies 0.0000E+00 m above", "ground");
}

TEST(CheckGivenMesh, RefusesLevelsThatSinkBelowTheGroundHigherUp) {
    // The columns lean over until they bend back below their own ground.
    const GridGeometry g = mapped_mesh({3, 3, 9}, [](double s, double t, double q) {
        const double turn = 4.0 * q;
        const double r = 2.0 + t;
        return Position{s, r * std::cos(turn), r * std::sin(turn)};
    });
    expect_refused(g, "cell (1, 1, ", "above the ground of its column");
}

// Turned half round, a mesh is still right-handed, but the wind would blow out of its inflow plane.
TEST(CheckGivenMesh, RefusesAMeshTurnedAwayFromTheWind) {
    expect_refused(uniform_mesh({4, 4, 4}, -1, -1, 1), "the plane i = 1",
                   "does not face the wind: its area across +x is -0.9000E+01 m2");
    const GridGeometry quarter = mapped_mesh({4, 4, 4}, [](double s, double t, double q) {
        return Position{-t, s, q};
    });
    expect_refused(quarter, "the plane i = 1", "does not face the wind");
}

}  // namespace
}  // namespace torvex
