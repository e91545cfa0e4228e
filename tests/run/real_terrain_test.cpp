// Sizing and meshes of the case of Big Southern Butte.

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "maps/load_maps.hpp"
#include "mesh/make_mesh.hpp"
#include "mesh/size_domain.hpp"
#include "run/case_file.hpp"
#include "run/wind_directions.hpp"

namespace torvex {
namespace {

const std::string directory = TORVEX_EXAMPLES_DIR "/big_butte/";

struct Butte {
    CaseSettings settings;
    MapState maps;
    RunLog log;
    MeshLines lines;
};

void size(Butte& butte, const std::string& case_file) {
    KeyLines key_lines;
    read_case_file(load_case_text(directory + case_file), butte.settings, key_lines, butte.log);
    butte.settings.BASIC_H_FILE = directory + "elevation.map";
    butte.settings.BASIC_Z0_FILE = directory + "roughness.map";
    set_angles(butte.settings);
    butte.lines = size_domain(butte.settings, butte.maps, butte.log);
}

TEST(RealTerrain, MeshCountsAreThoseOfASeparateScript) {
    Butte steep;
    size(steep, "torvex.tin");
    EXPECT_EQ(steep.lines.ni, 62);
    EXPECT_EQ(steep.lines.nj, 50);
    EXPECT_EQ(steep.lines.nk, 32);
    Butte gentle;
    size(gentle, "torvex_gentle.tin");
    EXPECT_EQ(gentle.lines.ni, 62);
    EXPECT_EQ(gentle.lines.nj, 50);
    EXPECT_EQ(gentle.lines.nk, 30);
}

// The summit stands at 43.396389 N, 113.021667 W, 2298.7 m in the map; the case centre at 43.4 N,
// 113.025 W. Cells are 50 m wide there and the top is steep, so the highest node lies within a cell
// of the summit and not far below it.
TEST(RealTerrain, TheSummitStandsWhereTheMapHasItForEveryDirection) {
    Butte butte;
    size(butte, "torvex.tin");
    const double degree = 3.14159265358979 / 180;
    const double lat = 43.4 * degree;
    const double e2 = 0.00669437999;
    const double W2 = 1 - e2 * std::sin(lat) * std::sin(lat);
    const double east_per_degree = degree * std::cos(lat) * 6378137 / std::sqrt(W2);
    const double north_per_degree = degree * 6378137 * (1 - e2) / (W2 * std::sqrt(W2));
    const double east = (113.025 - 113.021667) * east_per_degree;
    const double north = (43.396389 - 43.4) * north_per_degree;
    for (int iwd = 1; iwd <= 4; ++iwd) {
        const DirectionMaps maps = load_maps(butte.settings, iwd, butte.maps, butte.log);
        GridGeometry grid;
        MAKE_MESH(butte.settings, butte.lines, maps, iwd, butte.log, grid);
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
            (static_cast<double>(butte.settings.WIND_DIRECTION_ANGLE(iwd)) + 180) * degree;
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
