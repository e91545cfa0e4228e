#include "mesh/make_mesh.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstring>
#include <numbers>

#include "mesh/rotation.hpp"
#include "mesh/vertical_levels.hpp"
#include "mesh_cases.hpp"

namespace torvex {
namespace {

using test::centred_map;
using test::even_lines;
using test::log_lines;
using test::stop_of;

struct EastNorth {
    double E;
    double N;
};

// Downwind and leftward unit vectors on the map for a wind from `w` degrees clockwise from north.
EastNorth downwind(double w) {
    const double a = (w + 180.0) * std::numbers::pi / 180.0;
    return {std::sin(a), std::cos(a)};
}
EastNorth leftward(double w) {
    const EastNorth e = downwind(w);
    return {-e.N, e.E};
}

// Levels every 10 m to 200 m above ground, constant up to 60 m.
void add_even_levels(MeshLines& lines, CaseSettings& settings) {
    settings.MIN_DZ = 10.0F;
    settings.MESH_VRATIO = 1.0F;
    settings.CONSTANT_DZ_HEIGHT = 50.0F;
    settings.MIN_DZ_HEIGHT = 0.0F;
    lines.z_top = 2000.0F;
    make_vertical_levels(settings, 2000.0F, lines);
}

class MakeMesh : public testing::Test {
 protected:
    MakeMesh() {
        settings.TERRAIN_MODE = "normal";
        settings.BASIC_H_FILE = "hill.map";
        settings.nest.nest_mode = 1;  // the ground as sampled
        lines = even_lines(8, 4, 4, 200.0F);
        add_even_levels(lines, settings);
    }

    void make(int iwd = 1) { MAKE_MESH(settings, lines, maps, iwd, log, grid); }

    CaseSettings settings = test::flat_case();
    MeshLines lines;
    DirectionMaps maps;
    RunLog log;
    GridGeometry grid;
};

TEST_F(MakeMesh, QuarterTurnsFromNorthAndSouthHaveNoResidue) {
    EXPECT_EQ(mesh_rotation(0.0F).c, 0.0F);
    EXPECT_EQ(mesh_rotation(180.0F).c, 0.0F);
    EXPECT_EQ(mesh_rotation(0.0F).s, 1.0F);
    EXPECT_EQ(mesh_rotation(180.0F).s, -1.0F);
    // The others keep what rounding leaves.
    EXPECT_NE(mesh_rotation(90.0F).s, 0.0F);
    EXPECT_NE(mesh_rotation(270.0F).s, 0.0F);
    EXPECT_NE(mesh_rotation(360.0F).c, 0.0F);
    EXPECT_NEAR(mesh_rotation(90.0F).s, 0.0, 1e-6);
    EXPECT_NEAR(mesh_rotation(270.0F).s, 0.0, 1e-6);
}

TEST_F(MakeMesh, NorthWindPutsNorthUpwindAndEastToTheLeft) {
    const MapPoint at = mesh_rotation(0.0F).on_map(100.0F, 30.0F);  // x = -North, y = East
    EXPECT_EQ(at.X, 30.0F);
    EXPECT_EQ(at.Y, -100.0F);
}

TEST_F(MakeMesh, EveryNodeHasTheHeightOfAnInclinedPlane) {
    // Bilinear values of a plane are exact, so each node shows where it lies on the map.
    maps.basic_h = centred_map(101, 101, 100.0F,
                               [](double E, double N) { return 500.0 + 0.02 * E - 0.05 * N; });
    for (const float w :
         {0.0F, 22.5F, 45.0F, 90.0F, 123.4F, 180.0F, 225.0F, 270.0F, 337.5F, 360.0F}) {
        settings.WIND_DIRECTION_ANGLE(1) = w;
        make();
        const EastNorth ex = downwind(static_cast<double>(w));
        const EastNorth ey = leftward(static_cast<double>(w));
        for (int j = 1; j <= lines.ny; ++j) {
            for (int i = 1; i <= lines.nx; ++i) {
                const auto x = static_cast<double>(lines.x_line(i));
                const auto y = static_cast<double>(lines.y_line(j));
                const double E = x * ex.E + y * ey.E;
                const double N = x * ex.N + y * ey.N;
                ASSERT_NEAR(grid.zn(i, j, 1), 500.0 + 0.02 * E - 0.05 * N, 1e-2)
                    << "wind from " << w << " node " << i << " " << j;
            }
        }
    }
}

TEST_F(MakeMesh, HillsStandWhereTheWindSeesThem) {
    const EastNorth hills[] = {{-1200.0, 0.0}, {0.0, 1200.0}, {-850.0, -850.0}};
    for (const EastNorth& hill : hills) {
        maps.basic_h = centred_map(101, 101, 100.0F, [&](double E, double N) {
            const double r2 = (E - hill.E) * (E - hill.E) + (N - hill.N) * (N - hill.N);
            return 300.0 * std::exp(-r2 / (500.0 * 500.0));
        });
        for (const float w : {0.0F, 45.0F, 90.0F, 180.0F, 225.0F, 270.0F, 337.5F}) {
            settings.WIND_DIRECTION_ANGLE(1) = w;
            make();
            int i_top = 1;
            int j_top = 1;
            for (int j = 1; j <= lines.ny; ++j) {
                for (int i = 1; i <= lines.nx; ++i) {
                    if (grid.zn(i, j, 1) > grid.zn(i_top, j_top, 1)) {
                        i_top = i;
                        j_top = j;
                    }
                }
            }
            const EastNorth ex = downwind(static_cast<double>(w));
            const EastNorth ey = leftward(static_cast<double>(w));
            EXPECT_NEAR(lines.x_line(i_top), hill.E * ex.E + hill.N * ex.N, 110.0) << w;
            EXPECT_NEAR(lines.y_line(j_top), hill.E * ey.E + hill.N * ey.N, 110.0) << w;
        }
    }
}

TEST_F(MakeMesh, WestWindSeesWesternHillUpwind) {
    maps.basic_h = centred_map(
        101, 101, 100.0F, [](double E, double N) { return E == -1000.0 && N == 0.0 ? 70.0 : 0.0; });
    settings.WIND_DIRECTION_ANGLE(1) = 270.0F;
    make();
    EXPECT_NEAR(grid.zn(lines.i_centre - 5, lines.j_centre, 1), 70.0, 1e-2);
    settings.WIND_DIRECTION_ANGLE(1) = 90.0F;
    make();
    EXPECT_NEAR(grid.zn(lines.i_centre + 5, lines.j_centre, 1), 70.0, 1e-2);
}

TEST_F(MakeMesh, PlanAndCountsAreThoseOfTheLines) {
    maps.basic_h = centred_map(101, 101, 100.0F, [](double, double) { return 10.0; });
    make();
    EXPECT_EQ(grid.nx, lines.nx);
    EXPECT_EQ(grid.ny, lines.ny);
    EXPECT_EQ(grid.nz, lines.nz);
    EXPECT_EQ(grid.ni, lines.nx + 1);
    EXPECT_EQ(grid.nj, lines.ny + 1);
    EXPECT_EQ(grid.nk, lines.nz + 1);
    for (int k = 1; k <= lines.nz; ++k) {
        EXPECT_EQ(grid.xn(3, 5, k), lines.x_line(3));
        EXPECT_EQ(grid.yn(3, 5, k), lines.y_line(5));
    }
}

TEST_F(MakeMesh, FirstMapColumnIsInsideAndTheLastIsNot) {
    lines = even_lines(3, 1, 1, 100.0F);  // x from -500 to 400, y from -400 to 400
    add_even_levels(lines, settings);
    const auto sized_map = [](int columns, int rows) {
        TerrainMap map = centred_map(columns, rows, 100.0F, [](double, double) { return 5.0; });
        map.X0 = -400.0F;
        map.Y0 = -400.0F;
        return map;
    };
    // Wind from north: X = y reaches 400, Y = -x reaches 500 and begins at -400.
    maps.basic_h = sized_map(10, 11);
    EXPECT_EQ(stop_of([&] { make(); }).code(), -1);
    maps.basic_h = sized_map(9, 11);  // last column at 400
    EXPECT_EQ(stop_of([&] { make(); }).code(), 151);
    maps.basic_h = sized_map(10, 10);  // last row at 500
    const Stop stop = stop_of([&] { make(); });
    EXPECT_EQ(stop.code(), 151);
    EXPECT_EQ(stop.where(), "hill.map");
    const std::string text = " [Stop 151]:Specified computational domain is out of map domain.";
    // Behind it, what the user needs to choose a map or a study area.
    const std::vector<std::string> told = log_lines(log);
    ASSERT_EQ(told.size(), 6U);
    EXPECT_EQ(told[0], text);
    EXPECT_EQ(told[1], " The centre is longitude 139.00000, latitude 35.00000 degrees.");
    EXPECT_EQ(told[3], text);
    EXPECT_NE(std::string(stop.what()).find("The centre is longitude 139.00000"),
              std::string::npos);
}

TEST_F(MakeMesh, WithoutAMapTheDomainIsOutsideIt) {
    EXPECT_EQ(stop_of([&] { make(); }).code(), 151);
}

TEST_F(MakeMesh, DetailedMapHoldsWhereItReaches) {
    maps.basic_h = centred_map(101, 101, 100.0F, [](double, double) { return 10.0; });
    maps.detailed_h = centred_map(21, 21, 50.0F, [](double, double) { return 40.0; });  // 500 m
    settings.WIND_DIRECTION_ANGLE(1) = 0.0F;
    make();
    for (int j = 1; j <= lines.ny; ++j) {
        for (int i = 1; i <= lines.nx; ++i) {
            const float X = lines.y_line(j);
            const float Y = -lines.x_line(i);
            const bool inside = X >= -500.0F && X < 500.0F && Y >= -500.0F && Y < 500.0F;
            EXPECT_NEAR(grid.zn(i, j, 1), inside ? 40.0 : 10.0, 1e-4) << X << " " << Y;
        }
    }
    EXPECT_TRUE(log_lines(log).empty());
}

TEST_F(MakeMesh, DetailedMapCannotStandInForTheBasicOne) {
    maps.basic_h = centred_map(11, 11, 100.0F, [](double, double) { return 10.0; });
    maps.detailed_h = centred_map(101, 101, 100.0F, [](double, double) { return 40.0; });
    EXPECT_EQ(stop_of([&] { make(); }).code(), 151);
}

TEST_F(MakeMesh, GroundOutsideTheModifiedCircleIsZero) {
    maps.basic_h = centred_map(101, 101, 100.0F, [](double, double) { return 30.0; });
    settings.canopy.modify_terrain = true;
    settings.canopy.modify_circle_range = 1000.0F;
    make();
    for (int j = 1; j <= lines.ny; ++j) {
        for (int i = 1; i <= lines.nx; ++i) {
            const float x = lines.x_line(i);
            const float y = lines.y_line(j);
            EXPECT_NEAR(grid.zn(i, j, 1), x * x + y * y > 1.0e6F ? 0.0 : 30.0, 1e-4);
        }
    }
    EXPECT_NEAR(grid.zn(lines.i_centre + 5, lines.j_centre, 1), 30.0, 1e-4) << "on the circle";
    settings.canopy.modify_circle_range = 0.0F;
    EXPECT_EQ(stop_of([&] { make(); }).code(), 1);
}

TEST_F(MakeMesh, FlatModesNeedNoMap) {
    for (const char* mode : {"flat", "flat2", "flatX"}) {
        settings.TERRAIN_MODE = mode;
        settings.nest.nest_mode = 0;
        make();
        for (int j = 1; j <= lines.ny; ++j) {
            for (int i = 1; i <= lines.nx; ++i) {
                EXPECT_EQ(grid.zn(i, j, 1), 0.0F);
            }
        }
    }
}

TEST_F(MakeMesh, FlatModeTakesTheInflowElevationAtBothEndsInModeOne) {
    settings.TERRAIN_MODE = "flat";
    settings.nest.nest_mode = 0;
    settings.BOUNDARY_HEIGHT_MODE = 1;
    settings.INFLOW_ELEVATION = 50.0F;
    make();
    for (int j = 1; j <= lines.ny; ++j) {
        EXPECT_EQ(grid.zn(1, j, 1), 50.0F);
        EXPECT_EQ(grid.zn(lines.nx, j, 1), 50.0F);
        EXPECT_EQ(grid.zn(lines.i_centre, j, 1), 0.0F);
    }
}

TEST_F(MakeMesh, NestedRunsKeepTheSampledGround) {
    const auto wavy = [](double E, double N) {
        return 50.0 + 20.0 * std::sin(E / 150.0 + N / 80.0);
    };
    maps.basic_h = centred_map(101, 101, 100.0F, wavy);
    make();
    const float nested = grid.zn(1, 1, 1);
    const float centre = grid.zn(lines.i_centre, lines.j_centre, 1);
    settings.nest.nest_mode = 0;
    make();
    EXPECT_NE(grid.zn(1, 1, 1), nested);
    EXPECT_EQ(grid.zn(lines.i_centre, lines.j_centre, 1), centre);
    EXPECT_EQ(grid.zn(1, 1, 1), grid.zn(1, lines.ny, 1));
}

TEST_F(MakeMesh, LevelsArePressedUnderAFlatTop) {
    maps.basic_h = centred_map(101, 101, 100.0F, [](double E, double) { return 200.0 + 0.05 * E; });
    make();
    const int k_c = top_constant_level(lines.z_line, settings.CONSTANT_DZ_HEIGHT);
    EXPECT_EQ(k_c, 7);  // 60 m
    for (int j = 1; j <= lines.ny; j += 3) {
        for (int i = 1; i <= lines.nx; i += 3) {
            const auto ground = static_cast<double>(grid.zn(i, j, 1));
            for (int k = 2; k <= lines.nz; ++k) {
                const auto z = static_cast<double>(lines.z_line(k));
                const double expected =
                    k <= 7 ? ground + z
                           : ground + 60.0 + (z - 60.0) / 1940.0 * (2000.0 - ground - 60.0);
                EXPECT_NEAR(grid.zn(i, j, k), expected, 2e-3);
            }
            EXPECT_NEAR(grid.zn(i, j, lines.nz), 2000.0, 1e-3);
        }
    }
}

TEST_F(MakeMesh, TerrainFollowingTopKeepsEverySpacing) {
    maps.basic_h = centred_map(101, 101, 100.0F, [](double E, double) { return 200.0 + 0.05 * E; });
    settings.USE_TFTB = true;
    make();
    for (int k = 2; k <= lines.nz; ++k) {
        EXPECT_EQ(grid.zn(4, 5, k), grid.zn(4, 5, 1) + lines.z_line(k));
        EXPECT_EQ(grid.zn(lines.nx, 2, k), grid.zn(lines.nx, 2, 1) + lines.z_line(k));
    }
}

TEST_F(MakeMesh, PlateauNeedsATopAboveItsConstantLayers) {
    maps.basic_h = centred_map(101, 101, 100.0F, [](double, double) { return 1500.0; });
    const auto with_top = [&](float MAX_Z) {
        make_vertical_levels(settings, MAX_Z, lines);
        return stop_of([&] { make(); }).code();
    };
    EXPECT_EQ(with_top(1560.0F), -1);  // z_line(k_c) = 60: reached, not exceeded
    EXPECT_EQ(with_top(1559.0F), 152);
    EXPECT_EQ(with_top(1400.0F), 152);
    settings.USE_TFTB = true;
    EXPECT_EQ(with_top(1400.0F), -1) << "a following top is never reached through";
    EXPECT_TRUE(log_lines(log).empty()) << "152 has no log text";
}

TEST_F(MakeMesh, Stop152WhereTheLinesEndTooLow) {
    settings.TERRAIN_MODE = "flat";
    settings.CONSTANT_DZ_HEIGHT = 1.0e5F;
    EXPECT_EQ(stop_of([&] { make(); }).code(), 152);
}

TEST_F(MakeMesh, ModeTwoStopsForWantOfARamp) {
    settings.TERRAIN_MODE = "flat";
    settings.nest.nest_mode = 0;
    lines.n_blend_up = lines.n_add;
    EXPECT_EQ(stop_of([&] { make(); }).code(), 154);
    settings.nest.nest_mode = 1;
    EXPECT_EQ(stop_of([&] { make(); }).code(), -1);
}

TEST_F(MakeMesh, PreviewUsesItsOwnAngle) {
    maps.basic_h = centred_map(101, 101, 100.0F, [](double, double N) { return 300.0 + 0.01 * N; });
    settings.WIND_DIRECTION_ANGLE(1) = 270.0F;
    settings.WIND_DIRECTION_ANGLE(preview_direction) = 0.0F;
    make(preview_direction);
    EXPECT_GT(grid.zn(1, lines.j_centre, 1), grid.zn(lines.nx, lines.j_centre, 1));
}

TEST_F(MakeMesh, SameBitsForAnyNumberOfThreads) {
    maps.basic_h = centred_map(101, 101, 100.0F, [](double E, double N) {
        return 100.0 + 50.0 * std::sin(E / 333.0) * std::cos(N / 217.0);
    });
    maps.detailed_h = centred_map(41, 41, 50.0F, [](double E, double) { return 90.0 + 0.01 * E; });
    settings.nest.nest_mode = 0;
    settings.WIND_DIRECTION_ANGLE(1) = 33.0F;
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    make();
    const Field3 one = grid.zn;
    for (const int n : {2, 3, 5}) {
        omp_set_num_threads(n);
        grid.zn.fill(-1.0F);
        make();
        EXPECT_EQ(std::memcmp(one.data(), grid.zn.data(), one.size() * sizeof(float)), 0) << n;
    }
    omp_set_num_threads(threads);
}

}  // namespace
}  // namespace torvex
