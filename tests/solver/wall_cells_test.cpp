// The cells beside walls.

#include "solver/wall_cells.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "mesh/test_meshes.hpp"

namespace torvex {
namespace {

// Cells 10 m long, 8 m wide and 4 m high.
GridGeometry box() {
    return with_metrics(uniform_mesh({5, 6, 7}, 10, 8, 4));
}

CaseSettings tunnel(int mode) {
    CaseSettings settings;
    settings.WIND_TUNNEL_MODE = mode;
    settings.WIND_TUNNEL_Z0 = 0.01F;
    return settings;
}

void expect_cell(const WallCell& cell, double d, double z0, double area) {
    EXPECT_FLOAT_EQ(cell.d, float(d));
    EXPECT_EQ(cell.z0, float(z0));
    EXPECT_NEAR(cell.L1, std::log(d / z0), 1e-6);
    EXPECT_NEAR(cell.L2, std::log(2 * d / z0), 1e-6);
    EXPECT_FLOAT_EQ(cell.area, float(area));
}

TEST(WallCells, OfLevelGroundLieHalfACellAboveIt) {
    const GridGeometry g = box();
    Field2 z0(g.ni, g.nj, 0.03F);
    z0(3, 4) = 0.1F;
    const Walls walls = wall_cells({}, g, z0);
    expect_cell(walls.ground(2, 2), 2, 0.03F, 80);
    expect_cell(walls.ground(3, 4), 2, 0.1F, 80);
    expect_cell(walls.ground(g.nx, g.ny), 2, 0.03F, 80);
    EXPECT_EQ(walls.ground(3, 4).n_x, 0.0F);
    EXPECT_EQ(walls.ground(3, 4).n_y, 0.0F);
    EXPECT_EQ(std::abs(walls.ground(3, 4).n_z), 1.0F);
}

TEST(WallCells, AreMadeOfTheWallsThatTheCaseHas) {
    const GridGeometry g = box();
    const Field2 z0(g.ni, g.nj, 0.03F);
    const Walls open = wall_cells(tunnel(0), g, z0);
    EXPECT_EQ(open.top.size(), 0U);
    EXPECT_EQ(open.south.size(), 0U);
    EXPECT_EQ(open.north.size(), 0U);
    const Walls lid = wall_cells(tunnel(1), g, z0);
    expect_cell(lid.top(3, 4), 2, 0.01F, 80);
    EXPECT_EQ(lid.south.size(), 0U);
    const Walls all = wall_cells(tunnel(2), g, z0);
    expect_cell(all.ground(3, 4), 2, 0.03F, 80);
    expect_cell(all.top(3, 4), 2, 0.01F, 80);
    expect_cell(all.south(3, g.nz), 4, 0.01F, 40);
    expect_cell(all.north(g.nx, 2), 4, 0.01F, 40);
    EXPECT_EQ(std::abs(all.south(3, 4).n_y), 1.0F);
    EXPECT_EQ(all.south(3, 4).n_z, 0.0F);
}

// Ground that rises 1 in 1: 2 m of height are sqrt(2) m from it, and its area is sqrt(2) times that
// of its plan.
TEST(WallCells, MeasureAlongTheNormal) {
    const GridGeometry g = with_metrics(mapped_mesh({5, 5, 5}, [](double s, double t, double q) {
        return Position{40 * s, 40 * t, 40 * s + 16 * q};
    }));
    const Walls walls = wall_cells({}, g, Field2(g.ni, g.nj, 0.5F));
    const WallCell& cell = walls.ground(3, 3);
    EXPECT_NEAR(cell.d, std::sqrt(2.0), 1e-5);
    EXPECT_NEAR(std::abs(cell.n_x), std::sqrt(0.5), 1e-6);
    EXPECT_NEAR(std::abs(cell.n_z), std::sqrt(0.5), 1e-6);
    EXPECT_LT(cell.n_x * cell.n_z, 0.0F);
    EXPECT_NEAR(cell.area, 100 * std::sqrt(2.0), 1e-3);
}

TEST(WallPlace, StandsBesideItsGhost) {
    const GridGeometry g = box();
    const auto expect = [](const WallPlace& p, int i, int j, int k, int ig, int jg, int kg) {
        EXPECT_EQ(p.i, i);
        EXPECT_EQ(p.j, j);
        EXPECT_EQ(p.k, k);
        EXPECT_EQ(p.ig, ig);
        EXPECT_EQ(p.jg, jg);
        EXPECT_EQ(p.kg, kg);
    };
    expect(wall_place<Wall::ground>(g, 3, 4), 3, 4, 2, 3, 4, 1);
    expect(wall_place<Wall::top>(g, 3, 4), 3, 4, g.nz, 3, 4, g.nk);
    expect(wall_place<Wall::south>(g, 3, 4), 3, 2, 4, 3, 1, 4);
    expect(wall_place<Wall::north>(g, 3, 4), 3, g.ny, 4, 3, g.nj, 4);
}

}  // namespace
}  // namespace torvex
