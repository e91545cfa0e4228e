// Sizing and meshes of the cases under examples/.

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "case/case_file.hpp"
#include "case/wind_directions.hpp"
#include "maps/load_maps.hpp"
#include "mesh/make_mesh.hpp"
#include "mesh/size_domain.hpp"

namespace torvex {
namespace {

const std::string examples = TORVEX_EXAMPLES_DIR "/";

struct Example {
    CaseSettings settings;
    MapState maps;
    RunLog log;
    MeshLines lines;
};

void size(Example& example, const std::string& case_file) {
    const std::string directory = examples + case_file.substr(0, case_file.rfind('/') + 1);
    KeyLines key_lines;
    read_case_file(load_case_text(examples + case_file), example.settings, key_lines, example.log);
    example.settings.BASIC_H_FILE = directory + "elevation.map";
    example.settings.BASIC_Z0_FILE = directory + "roughness.map";
    set_angles(example.settings);
    example.lines = size_domain(example.settings, example.maps, example.log);
}

TEST(RealTerrain, MeshCountsAreThoseOfASeparateScript) {
    Example steep;
    size(steep, "big_butte/torvex.tin");
    EXPECT_EQ(steep.lines.ni, 62);
    EXPECT_EQ(steep.lines.nj, 50);
    EXPECT_EQ(steep.lines.nk, 32);
    Example gentle;
    size(gentle, "big_butte/torvex_gentle.tin");
    EXPECT_EQ(gentle.lines.ni, 62);
    EXPECT_EQ(gentle.lines.nj, 50);
    EXPECT_EQ(gentle.lines.nk, 30);
    Example fine;
    size(fine, "askervein/torvex.tin");
    EXPECT_EQ(fine.lines.ni, 85);
    EXPECT_EQ(fine.lines.nj, 74);
    EXPECT_EQ(fine.lines.nk, 31);
    Example coarse;
    size(coarse, "askervein/torvex_coarse.tin");
    EXPECT_EQ(coarse.lines.ni, 56);
    EXPECT_EQ(coarse.lines.nj, 46);
    EXPECT_EQ(coarse.lines.nk, 23);
}

// The summit stands at 43.396389 N, 113.021667 W, 2298.7 m in the map; the case centre at 43.4 N,
// 113.025 W. Cells are 50 m wide there and the top is steep, so the highest node lies within a cell
// of the summit and not far below it.
TEST(RealTerrain, TheSummitStandsWhereTheMapHasItForEveryDirection) {
    Example example;
    size(example, "big_butte/torvex.tin");
    const double degree = 3.14159265358979 / 180;
    const double lat = 43.4 * degree;
    const double e2 = 0.00669437999;
    const double W2 = 1 - e2 * std::sin(lat) * std::sin(lat);
    const double east_per_degree = degree * std::cos(lat) * 6378137 / std::sqrt(W2);
    const double north_per_degree = degree * 6378137 * (1 - e2) / (W2 * std::sqrt(W2));
    const double east = (113.025 - 113.021667) * east_per_degree;
    const double north = (43.396389 - 43.4) * north_per_degree;
    for (int iwd = 1; iwd <= 4; ++iwd) {
        const DirectionMaps maps = load_maps(example.settings, iwd, example.maps, example.log);
        GridGeometry grid;
        MAKE_MESH(example.settings, example.lines, maps, iwd, example.log, grid);
        int top_i = 1;
        int top_j = 1;
        for (int j = 1; j <= grid.ny; ++j) {
            for (int i = 1; i <= grid.nx; ++i) {
                if (grid.zn(i, j, 1) > grid.zn(top_i, top_j, 1)) {
                    top_i = i;
                    top_j = j;
                }
            }
        }
        // x points to where the wind blows, y to the left of it.
        const double to =
            (static_cast<double>(example.settings.WIND_DIRECTION_ANGLE(iwd)) + 180) * degree;
        const double x = east * std::sin(to) + north * std::cos(to);
        const double y = -east * std::cos(to) + north * std::sin(to);
        EXPECT_NEAR(grid.xn(top_i, top_j, 1), x, 50) << iwd;
        EXPECT_NEAR(grid.yn(top_i, top_j, 1), y, 50) << iwd;
        EXPECT_LE(grid.zn(top_i, top_j, 1), 2298.8F);
        EXPECT_GT(grid.zn(top_i, top_j, 1), 2298.7F - 25) << iwd;
    }
}

}  // namespace
}  // namespace torvex
