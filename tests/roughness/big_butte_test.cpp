#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "maps/load_maps.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/make_mesh.hpp"
#include "mesh/size_domain.hpp"
#include "roughness/calc_roughness1.hpp"
#include "roughness/roughness_cases.hpp"

namespace torvex {
namespace {

// Keys of the example case that matter for mesh and roughness.
CaseSettings example_settings() {
    const std::string folder = TORVEX_EXAMPLES_DIR "/big_butte/";
    CaseSettings s;
    s.TERRAIN_MODE = "normal";
    s.BASIC_H_FILE = folder + "elevation.map";
    s.BASIC_Z0_FILE = folder + "roughness.map";
    s.cent_lat_min = 43.0 * 60.0 + 24.0;
    s.cent_lon_min = -113.0 * 60.0 - 1.5;
    s.WE_LENGTH = s.NS_LENGTH = 2000.0F;
    s.MIN_DXY = 50.0F;
    s.MAX_DXY = 250.0F;
    s.MIN_DXY_RAD = 500.0F;
    s.MESH_HRATIO = 1.12F;
    s.MIN_DZ = 4.0F;
    s.MESH_VRATIO = 1.2F;
    s.SIDE_BR = s.UP_BR = s.DOWN_BR = 0.3F;
    s.ADD_R = 1.0F;
    s.BZ_LIMIT = 2.0F;
    s.ADD_LIMIT = 3.0F;
    s.CONSTANT_DZ_HEIGHT = 100.0F;
    s.USE_DEFAULT_MAX_Z = false;
    s.MAX_Z = 5000.0F;
    const float from[] = {0.0F, 90.0F, 180.0F, 240.0F};
    for (int iwd = 1; iwd <= 4; ++iwd) {
        s.WIND_DIRECTION_ANGLE(iwd) = from[iwd - 1];
    }
    return s;
}

TEST(BigButteRoughness, StaysWithinTheMapAndIsUniformUpwind) {
    const CaseSettings settings = example_settings();
    if (!std::filesystem::exists(settings.BASIC_Z0_FILE)) {
        GTEST_SKIP() << "no example maps here";
    }
    const test::TemporaryDirectory directory;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory.path());

    MapState state;
    RunLog log;
    const MeshLines lines = size_domain(settings, state, log);
    UpwindRoughness upwind;
    const std::string tags[] = {"000_0", "090_0", "180_0", "240_0"};
    for (int iwd = 1; iwd <= 4; ++iwd) {
        const std::string& tag = tags[iwd - 1];
        const DirectionMaps maps = load_maps(settings, iwd, state, log);
        GridGeometry grid;
        MAKE_MESH(settings, lines, maps, iwd, log, grid);
        XYZ2XYZC(grid);
        Field2 z0;
        calc_roughness1({settings, lines, iwd, tag, log}, maps, grid, upwind, z0);

        const Field2& map = *maps.basic_z0.values;
        const auto [least, most] = std::minmax_element(map.data(), map.data() + map.size());
        float smallest = *most;
        float largest = *least;
        for (int j = 1; j <= lines.nj; ++j) {
            for (int i = 1; i <= lines.ni; ++i) {
                ASSERT_GE(z0(i, j), *least * (1.0F - 3.0e-6F)) << tag;
                ASSERT_LE(z0(i, j), *most * (1.0F + 3.0e-6F)) << tag;
                if (i <= lines.i_centre - lines.n_blend_up) {
                    ASSERT_EQ(z0(i, j), upwind.z_up) << tag;
                }
                smallest = std::min(smallest, z0(i, j));
                largest = std::max(largest, z0(i, j));
            }
        }
        EXPECT_LT(smallest, largest) << "the map is not uniform";
        // The downwind end is uniform along the wind, the sides across it.
        for (int j = 2; j <= lines.ny; ++j) {
            for (int i = lines.i_centre + lines.n_blend_down + 1; i <= lines.ni; ++i) {
                ASSERT_EQ(z0(i, j), z0(lines.nx, j)) << tag;
            }
        }
        for (int i = 1; i <= lines.i_centre + lines.n_blend_down; ++i) {
            for (int j = 1; j <= lines.j_centre - lines.n_blend_side; ++j) {
                ASSERT_EQ(z0(i, j), z0(i, 2)) << tag;
            }
        }
        EXPECT_EQ(std::stof(directory.read("log-upwind_roughness-" + tag)), upwind.z_up);
    }
    std::filesystem::current_path(before);
}

}  // namespace
}  // namespace torvex
