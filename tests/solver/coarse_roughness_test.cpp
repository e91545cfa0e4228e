// The warning of a mesh that reaches into the roughness.

#include "solver/coarse_roughness.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "mesh/test_meshes.hpp"
#include "mesh/vec3.hpp"
#include "solver/fields.hpp"
#include "solver/flow_state.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {
namespace {

using testing::HasSubstr;

std::string warning(const CaseSettings& settings, const GridGeometry& g, const FlowState& s) {
    RunLog log;
    warn_of_coarse_roughness(g, wall_cells(settings, g, s.z0), 22.5F, log);
    return log.kept();
}

// First layer 4 m high: the centres are 2 m above the ground.
GridGeometry box() {
    return with_metrics(uniform_mesh({5, 6, 7}, 10, 8, 4));
}

FlowState roughness_of(const GridGeometry& g, float z0) {
    FlowState s;
    s.z0.allocate(g.ni, g.nj, z0);
    return s;
}

TEST(CoarseRoughness, IsToldOnceWithPlaceAndValues) {
    const GridGeometry g = box();
    FlowState s = roughness_of(g, 1.5F);  // too rough in every cell
    s.z0(3, 4) = 1.6F;                    // the worst: 2/1.6 = 1.25; centre at x = 15, y = 20
    const std::string line = warning({}, g, s);
    EXPECT_EQ(
        line.substr(19),
        " WD  22.5: (Warning) Cells are too low for the roughness; smallest d/z0 is 0.1250E+01"
        " with d= 0.2000E+01 (m), z0= 0.1600E+01 (m), ground cell i=3 j=4 k=2"
        ", x=      15.0, y=      20.0\n");
}

TEST(CoarseRoughness, IsSilentFromTwoRoughnessLengthsOn) {
    const GridGeometry g = box();
    FlowState s = roughness_of(g, 1.0F);  // d/z0 is 2
    s.z0(1, 1) = 5;                       // a ghost column is no cell
    EXPECT_EQ(warning({}, g, s), "");
    s.z0(2, 2) = 1.001F;
    EXPECT_THAT(warning({}, g, s), HasSubstr("i=2 j=2 k=2"));
}

// The distance is taken along the wall's normal: on ground that rises 1 in 1, 2 m of height are
// sqrt(2) m.
TEST(CoarseRoughness, MeasuresAlongTheNormalOfTheGround) {
    const GridGeometry g = with_metrics(mapped_mesh({5, 5, 5}, [](double s, double t, double q) {
        return Position{40 * s, 40 * t, 40 * s + 16 * q};
    }));
    EXPECT_NEAR(wall_cells({}, g, roughness_of(g, 0.7F).z0).ground(3, 3).d, std::sqrt(2.0F), 1e-5F);
    EXPECT_EQ(warning({}, g, roughness_of(g, 0.7F)), "");
    EXPECT_THAT(warning({}, g, roughness_of(g, 0.72F)), HasSubstr("d= 0.1414E+01"));
}

TEST(CoarseRoughness, LooksAtTheWallsOfATunnel) {
    const GridGeometry g = box();
    const FlowState s = roughness_of(g, 0.03F);
    CaseSettings settings;
    settings.WIND_TUNNEL_Z0 = 1.5F;  // 2/1.5 at the top, 4/1.5 at the sides
    EXPECT_EQ(warning(settings, g, s), "");
    settings.WIND_TUNNEL_MODE = 1;
    EXPECT_THAT(warning(settings, g, s), HasSubstr("top cell i=2 j=2 k=7"));
    // Layers of 16 m: the top is far enough, the sides are not.
    const GridGeometry high = with_metrics(uniform_mesh({5, 6, 7}, 10, 4, 16));
    EXPECT_EQ(warning(settings, high, s), "");
    settings.WIND_TUNNEL_MODE = 2;
    EXPECT_THAT(warning(settings, high, s), HasSubstr("south wall cell i=2 j=2 k=2"));
    EXPECT_THAT(warning(settings, high, s), HasSubstr("d= 0.2000E+01"));
}

TEST(WallCell, HasTheUnitNormalTowardsRisingIndexAtAllFourWalls) {
    const GridGeometry g = box();
    const auto expect_wall = [](const WallCell& wall, const Vec3& normal, float distance) {
        EXPECT_EQ(wall.n_x, normal.x);
        EXPECT_EQ(wall.n_y, normal.y);
        EXPECT_EQ(wall.n_z, normal.z);
        EXPECT_EQ(wall.d, distance);
    };
    CaseSettings settings;
    settings.WIND_TUNNEL_MODE = 2;
    settings.WIND_TUNNEL_Z0 = 0.01F;
    const Walls walls = wall_cells(settings, g, roughness_of(g, 0.03F).z0);
    expect_wall(cell_at<Wall::ground>(walls, 3, 3), {0, 0, 1}, 2);
    expect_wall(cell_at<Wall::top>(walls, 3, 3), {0, 0, 1}, 2);
    expect_wall(cell_at<Wall::south>(walls, 3, 3), {0, 1, 0}, 4);
    expect_wall(cell_at<Wall::north>(walls, 3, 3), {0, 1, 0}, 4);
}

}  // namespace
}  // namespace torvex
