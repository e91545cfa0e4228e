// What the cover of the maps predicts is held against what MAKE_MESH and the sampling of roughness
// do on the same maps, down to the last bit of a map's place.
#include "mesh/map_cover.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "maps/map_header.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/lay_lines.hpp"
#include "mesh/make_mesh.hpp"
#include "mesh/vertical_levels.hpp"
#include "mesh_cases.hpp"
#include "roughness/sample_roughness.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::centred_map;
using test::stop_of;

constexpr float angles[] = {0.0F, 22.5F, 45.0F, 90.0F, 240.0F, 360.0F};

enum class Side { west, east, south, north };
constexpr Side sides[] = {Side::west, Side::east, Side::south, Side::north};

struct Extent {
    float X0 = std::numeric_limits<float>::max(), X1 = -X0;
    float Y0 = X0, Y1 = -X0;

    void add(MapPoint at) {
        X0 = std::min(X0, at.X);
        X1 = std::max(X1, at.X);
        Y0 = std::min(Y0, at.Y);
        Y1 = std::max(Y1, at.Y);
    }
};

class MapCoverTest : public testing::Test {
 protected:
    MapCoverTest() {
        settings.TERRAIN_MODE = "normal";
        settings.BASIC_H_FILE = "hill.map";
        settings.BASIC_Z0_FILE = "roughness.map";
        settings.nest.nest_mode = 1;  // the ground as sampled
        settings.MIN_DXY = 200.0F;
        settings.MAX_DXY = 400.0F;
        settings.MIN_DZ = 50.0F;
        settings.MESH_VRATIO = 1.5F;
        size();
        wide = centred_map(101, 101, 200.0F, [](double, double) { return 0.5; });
        maps.basic_h = wide;
        maps.basic_z0 = wide;
    }

    void size() {
        lines = lay_lines(settings, zone_widths(settings));
        make_vertical_levels(settings, 1500.0F, lines);
        lines.ni = lines.nx + 1;
        lines.nj = lines.ny + 1;
        lines.nk = lines.nz + 1;
    }
    void turn(float angle) { settings.WIND_DIRECTION_ANGLE(1) = angle; }
    int code_of_mesh() {
        return stop_of([this] { MAKE_MESH(settings, lines, maps, 1, log, grid); }).code();
    }
    int code_of_roughness() {
        const std::string tag = "270_0";
        Field2 z0(lines.ni, lines.nj);
        const RoughnessPass pass{settings, lines, 1, tag, log};
        return stop_of([&] { sample_roughness(pass, maps, grid, z0); }).code();
    }
    MapCover cover(float angle) { return map_cover(settings, lines, maps, angle); }

    // Maps whose one side lies at or near the outermost point, the others far out.
    std::vector<TerrainMap> maps_about(const Extent& mesh, Side side) const {
        std::vector<TerrainMap> found;
        const float d = wide.dX;
        const float length = d * static_cast<float>(wide.columns - 1);
        const float edge = side == Side::west    ? mesh.X0
                           : side == Side::east  ? mesh.X1 - length
                           : side == Side::south ? mesh.Y0
                                                 : mesh.Y1 - length;
        std::vector<float> places{edge - d, edge - 0.4F * d, edge, edge + 0.4F * d, edge + d};
        float up = edge;
        float down = edge;
        for (int n = 0; n < 4; ++n) {
            places.push_back(up = std::nextafter(up, 1.0e6F));
            places.push_back(down = std::nextafter(down, -1.0e6F));
        }
        for (const float place : places) {
            TerrainMap map = wide;
            (side == Side::west || side == Side::east ? map.X0 : map.Y0) = place;
            found.push_back(map);
        }
        return found;
    }

    CaseSettings settings = test::flat_case();
    MeshLines lines;
    TerrainMap wide;
    DirectionMaps maps;
    RunLog log;
    GridGeometry grid;
};

TEST_F(MapCoverTest, PredictsTheEndOfMakeMesh) {
    for (const float angle : angles) {
        turn(angle);
        Extent mesh;
        for (const float y : lines.y_line.values()) {
            for (const float x : lines.x_line.values()) {
                mesh.add(mesh_rotation(angle).on_map(x, y));
            }
        }
        for (const Side side : sides) {
            int outside = 0;
            int tried = 0;
            for (const TerrainMap& map : maps_about(mesh, side)) {
                maps.basic_h = map;
                const int code = code_of_mesh();
                ASSERT_TRUE(code == -1 || code == 151) << code;
                EXPECT_EQ(cover(angle).terrain, code == -1)
                    << angle << " X0 " << map.X0 << " Y0 " << map.Y0;
                outside += code == 151 ? 1 : 0;
                ++tried;
            }
            EXPECT_GT(outside, 2) << angle;
            EXPECT_LT(outside, tried - 2) << angle;
        }
    }
}

TEST_F(MapCoverTest, PredictsTheEndOfTheSamplingOfRoughness) {
    for (const float angle : angles) {
        turn(angle);
        ASSERT_EQ(code_of_mesh(), -1);
        XYZ2XYZC(grid);
        Extent mesh;
        for (int j = 2; j <= lines.ny; ++j) {
            for (int i = 2; i <= lines.nx; ++i) {
                mesh.add(roughness_rotation(angle).on_map(grid.xc(i, j, 1), grid.yc(i, j, 1)));
            }
        }
        for (const Side side : sides) {
            int outside = 0;
            int tried = 0;
            for (const TerrainMap& map : maps_about(mesh, side)) {
                maps.basic_z0 = map;
                const int code = code_of_roughness();
                ASSERT_TRUE(code == -1 || code == 151) << code;
                EXPECT_EQ(cover(angle).roughness, code == -1)
                    << angle << " X0 " << map.X0 << " Y0 " << map.Y0;
                outside += code == 151 ? 1 : 0;
                ++tried;
            }
            EXPECT_GT(outside, 2) << angle;
            EXPECT_LT(outside, tried - 2) << angle;
        }
        maps.basic_z0 = wide;
    }
}

// The detailed roughness map brings points that the basic one has not; the detailed terrain map
// does not.
TEST_F(MapCoverTest, TwoRoughnessMapsMayShareTheMesh) {
    turn(240.0F);
    ASSERT_EQ(code_of_mesh(), -1);
    XYZ2XYZC(grid);
    for (const float gap : {-300.0F, 300.0F}) {
        maps.basic_z0 = wide;
        maps.basic_z0.X0 = gap;  // the east
        maps.detailed_z0 = wide;
        maps.detailed_z0.X0 = -static_cast<float>(wide.columns - 1) * wide.dX;  // the west
        const int code = code_of_roughness();
        EXPECT_EQ(code, gap < 0.0F ? -1 : 151);
        EXPECT_EQ(cover(240.0F).roughness, code == -1);
    }
    maps.detailed_z0 = wide;
    EXPECT_TRUE(cover(240.0F).roughness);
    maps.detailed_h = wide;
    maps.basic_h.X0 = 0.0F;
    EXPECT_FALSE(cover(240.0F).terrain);
    EXPECT_EQ(code_of_mesh(), 151);
}

TEST_F(MapCoverTest, WhatIsNotSampledIsCovered) {
    maps.basic_h.X0 = maps.basic_z0.X0 = 0.0F;
    EXPECT_FALSE(cover(270.0F).terrain);
    EXPECT_FALSE(cover(270.0F).roughness);
    settings.canopy.canopy_mode = 1;
    EXPECT_TRUE(cover(270.0F).roughness);
    settings.canopy.canopy_mode = 0;
    settings.TERRAIN_MODE = "flat2";
    EXPECT_TRUE(cover(270.0F).terrain);
    EXPECT_FALSE(cover(270.0F).roughness);
    settings.TERRAIN_MODE = "flat";
    EXPECT_TRUE(cover(270.0F).whole());
}

// A map that is not there holds nothing.
TEST_F(MapCoverTest, WithoutAMapNothingIsCovered) {
    maps = {};
    EXPECT_FALSE(cover(270.0F).terrain);
    EXPECT_FALSE(cover(270.0F).roughness);
}

TEST_F(MapCoverTest, TheLargestStudyAreaIsTheLastThatFits) {
    settings.nest.nest_mode = 0;
    settings.N_WIND_DIRECTION = 6;
    std::copy_n(angles, 6, &settings.WIND_DIRECTION_ANGLE(1));
    for (const int points : {101, 91, 71, 41, 21}) {
        maps.basic_h = centred_map(points, points, 100.0F, [](double, double) { return 0.5; });
        maps.basic_z0 = maps.basic_h;
        const float scale = largest_study_scale(settings, lines, maps);
        ASSERT_GT(scale, 0.05F);
        ASSERT_LT(scale, 1.0F);
        // In each direction, with the mesh of that study area and of the next larger one.
        for (const float step : {0.0F, 0.001F}) {
            CaseSettings other = settings;
            other.WE_LENGTH *= scale + step;
            other.NS_LENGTH *= scale + step;
            other.nest.nest_mode = 1;
            MeshLines plan = lay_lines(other, zone_widths(other));
            make_vertical_levels(other, 1500.0F, plan);
            bool all = true;
            for (int iwd = 1; iwd <= 6; ++iwd) {
                const Stop s = stop_of([&] { MAKE_MESH(other, plan, maps, iwd, log, grid); });
                ASSERT_TRUE(s.code() == -1 || s.code() == 151) << s.what();
                all = all && s.code() == -1;
            }
            EXPECT_EQ(all, step == 0.0F) << points << " points, scale " << scale;
        }
    }
}

// Wind from north: 1.8 diameters upwind, rounded up to the next plane.
TEST_F(MapCoverTest, TheLargestStudyAreaFollowsFromTheZones) {
    settings.nest.nest_mode = 0;
    settings.N_WIND_DIRECTION = 1;
    turn(0.0F);
    const float half = 4000.0F;
    maps.basic_h = centred_map(81, 81, 100.0F, [](double, double) { return 0.5; });
    maps.basic_z0 = maps.basic_h;
    const float scale = largest_study_scale(settings, lines, maps);
    const float diameter = scale * std::sqrt(2.0F) * 2000.0F;
    EXPECT_LE(1.8F * diameter, half);
    EXPECT_GE(1.8F * diameter, half - settings.MAX_DXY - 0.001F * 1.8F * 2829.0F);
    maps.basic_h = maps.basic_z0 = wide;
    EXPECT_EQ(largest_study_scale(settings, lines, maps), 1.0F);
}

class CoverWarnings : public MapCoverTest {
 protected:
    CoverWarnings() {
        settings.nest.nest_mode = 0;
        settings.BASIC_H_FILE = directory.file("h.map");
        settings.BASIC_Z0_FILE = directory.file("z0.map");
        settings.N_WIND_DIRECTION = 2;
        settings.WIND_DIRECTION_ANGLE(1) = 0.0F;
        settings.WIND_DIRECTION_ANGLE(2) = 22.5F;
    }
    // A map of degrees from -half to half about the centre, with the metres of a minute at 35
    // degrees; no data, which nobody reads.
    void write(const std::string& name, double half_metres) {
        const double lon = half_metres / 1521.47;
        const double lat = half_metres / 1849.01;
        directory.write(name, "<TORVEX_MAP lon-lat>\nn_lon = 101, n_lat = 101\nd_lon = " +
                                  std::to_string(lon / 50.0) +
                                  ", d_lat = " + std::to_string(lat / 50.0) +
                                  "\nbase_longitude = 139 " + std::to_string(-lon) +
                                  "\nbase_latitude = 35 " + std::to_string(-lat) + "\n--DATA--\n");
    }
    std::vector<Warning> warnings() {
        const std::vector<int> iwds{1, 2};
        return cover_warnings(settings, lines, 0, iwds);
    }
    static bool has(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }

    test::TemporaryDirectory directory;
};

TEST_F(CoverWarnings, AreEmptyForMapsThatAreLargeEnough) {
    write("h.map", 9000.0);
    write("z0.map", 9000.0);
    EXPECT_TRUE(warnings().empty());
}

// Half of a side is 3.8 radii: enough for 3.6 upwind along a meridian, not for the corner of the
// turned mesh at 3.6 cos 22.5 + 1.6 sin 22.5 = 3.94.
TEST_F(CoverWarnings, NameTheDirectionsAndWhatWouldFit) {
    settings.MIN_DXY = settings.MAX_DXY = 50.0F;
    size();
    write("h.map", 3.85 * 1414.2);
    write("z0.map", 9000.0);
    const std::vector<Warning> told = warnings();
    ASSERT_EQ(told.size(), 1U);
    const std::string& text = told[0].text;
    EXPECT_TRUE(has(text, "out of the terrain map " + directory.file("h.map") +
                              " in 1 of 2 wind directions (22.5 degrees)"))
        << text;
    EXPECT_TRUE(has(text, "stop 151")) << text;
    EXPECT_TRUE(has(text, "The centre is longitude 139.00000, latitude 35.00000 degrees.")) << text;
    EXPECT_TRUE(has(text, "The terrain map reaches over longitude 138.9")) << text;
    EXPECT_TRUE(has(text, "the largest study area")) << text;
    // 3.85 of 3.94 and less one cell, in whole metres
    EXPECT_THAT(text, testing::ContainsRegex("WE_LENGTH 19[0-9][0-9] by NS_LENGTH 19[0-9][0-9] m"));
    EXPECT_TRUE(has(told[0].reminder, "too small for 1 of 2 directions")) << told[0].reminder;
}

TEST_F(CoverWarnings, TellEachMapByItself) {
    write("h.map", 4000.0);
    write("z0.map", 3000.0);
    const std::vector<Warning> told = warnings();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_TRUE(has(told[0].text, "terrain map")) << told[0].text;
    EXPECT_TRUE(has(told[1].text, "roughness map")) << told[1].text;
    EXPECT_TRUE(has(told[1].text, "in 2 of 2 wind directions (0.0, 22.5 degrees)")) << told[1].text;
}

TEST_F(CoverWarnings, ACentreOutsideTheMapHasNoStudyArea) {
    write("h.map", 9000.0);
    write("z0.map", 9000.0);
    settings.cent_lon_min = 35.0 * 60.0;
    settings.cent_lat_min = 39.0 * 60.0;
    const std::vector<Warning> told = warnings();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_TRUE(has(told[0].text, "The centre lies outside the terrain map")) << told[0].text;
    EXPECT_TRUE(has(told[0].text, "The centre is longitude 35.00000, latitude 39.00000 degrees."))
        << told[0].text;
}

TEST_F(CoverWarnings, LinesFromElsewhereHaveNoStudyArea) {
    write("h.map", 4000.0);
    write("z0.map", 9000.0);
    settings.XYCONF = "lines.txt";
    const std::vector<Warning> told = warnings();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_FALSE(has(told[0].text, "study area")) << told[0].text;
    EXPECT_TRUE(has(told[0].text, "the nearest side of the terrain map lies 4000 m from it."))
        << told[0].text;
}

TEST_F(CoverWarnings, AMapThatCannotBeReadIsLeftToTheRun) {
    write("h.map", 4000.0);
    EXPECT_TRUE(warnings().empty());
}

}  // namespace
}  // namespace torvex
