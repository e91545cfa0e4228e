#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/list_input.hpp"
#include "base/text_file.hpp"
#include "maps/load_maps.hpp"
#include "maps/local_metric.hpp"
#include "maps/map_texts.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::map_text;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

// 3 by 2 points round 35 N 139 1 E, which is the middle point of the southern row.
class ElevationStatistics : public ::testing::Test {
 protected:
    void SetUp() override {
        write("-5 7 30\n1 40 20\n");
        settings.BASIC_H_FILE = directory.file("h.map");
        settings.cent_lat_min = 35.0 * 60.0;
        settings.cent_lon_min = 139.0 * 60.0 + 1.0;
        mx = metres_per_minute(settings.cent_lat_min, 0).lon;
        my = metres_per_minute(settings.cent_lat_min, 0).lat;
        CaptureStdout();
    }
    void TearDown() override { GetCapturedStdout(); }
    void write(const std::string& data) { directory.write("h.map", map_text(data)); }
    ElevationRange within(float radius) {
        return elevation_in_radius(settings, radius, state, log);
    }

    test::TemporaryDirectory directory;
    CaseSettings settings;
    MapState state;
    RunLog log;
    float mx = 0;
    float my = 0;
};

TEST_F(ElevationStatistics, TakePointsInsideTheCircle) {
    // The middle column only: half a minute of latitude is nearer than a minute of longitude.
    const ElevationRange range = within(1000.0F);
    EXPECT_EQ(range.Hmax, 40.0F);
    EXPECT_EQ(range.Hmin, 7.0F);
    EXPECT_EQ(range.Havg, 23.5F);
    const ElevationRange all = within(5000.0F);
    EXPECT_EQ(all.Hmax, 40.0F);
    EXPECT_EQ(all.Hmin, -5.0F);
    EXPECT_EQ(all.Havg, 15.5F);
}

TEST_F(ElevationStatistics, PointsOnTheCircleCount) {
    const float distance = 0.5F * my;
    EXPECT_EQ(within(distance).Hmax, 40.0F);
    EXPECT_EQ(within(std::nextafter(distance, 0.0F)).Hmax, 7.0F);
    EXPECT_EQ(within(0.0F).Havg, 7.0F);
}

TEST_F(ElevationStatistics, NothingInTheCircleLeavesTheStartValues) {
    const ElevationRange range = within(-1.0F);
    EXPECT_EQ(range.Hmax, 0.0F);
    EXPECT_EQ(range.Hmin, 1000000.0F);
    EXPECT_EQ(range.Havg, 0.0F);
}

TEST_F(ElevationStatistics, MapBelowSeaLevelReportsAMaximumOfZero) {
    write("-5 -7 -30\n-1 -40 -20\n");
    const ElevationRange range = within(5000.0F);
    EXPECT_EQ(range.Hmax, 0.0F);
    EXPECT_EQ(range.Hmin, -40.0F);
    EXPECT_NEAR(static_cast<double>(range.Havg), -103.0 / 6.0, 1.0e-5);
}

TEST_F(ElevationStatistics, CorrectionFactorDoesNotEnter) {
    settings.SPECIFY_ELEVATION_CORRECTION_FACTOR = true;
    settings.ELEVATION_CORRECTION_FACTOR.fill(2.0F);
    EXPECT_EQ(within(5000.0F).Hmax, 40.0F);
}

TEST_F(ElevationStatistics, ConsoleAndLogLines) {
    const std::string console =
        "   - Reading terrain map to find max, min and average elevation.\n"
        "   - Maximum elevation in the domain is       40.0m.\n"
        "   - Minimum elevation in the domain is       -5.0m.\n"
        "   - Average elevation in the domain is       15.5m.\n";
    within(5000.0F);
    EXPECT_EQ(GetCapturedStdout(), console);
    EXPECT_EQ(split_lines(log.kept()).size(), 1U) << "the map that was read, and no more";
    CaptureStdout();
    elevation_in_domain(settings, -3000.0F, 4000.0F, state, log);
    EXPECT_EQ(GetCapturedStdout(), console);
    const std::vector<std::string_view> lines = split_lines(log.kept());
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[1].substr(19), " Maximum elevation in the domain is       40.0m.");
    EXPECT_EQ(lines[2].substr(19), " Minimum elevation in the domain is       -5.0m.");
    EXPECT_EQ(lines[3].substr(19), " Average elevation in the domain is       15.5m.");
    CaptureStdout();
}

TEST_F(ElevationStatistics, DomainCircleGoesThroughTheCorner) {
    const float y1 = 0.3F * my;
    const float x1 = 0.4F * my;
    EXPECT_EQ(elevation_in_domain(settings, -x1, -y1 * 1.0001F, state, log).Hmax, 40.0F);
    EXPECT_EQ(elevation_in_domain(settings, -x1, -y1 * 0.9999F, state, log).Hmax, 7.0F);
}

TEST_F(ElevationStatistics, DatumOfTheFirstReadActsOnTheSecond) {
    directory.write("h.map", map_text("-5 7 30\n1 40 20\n", "geodetic_system = TKY\n"));
    // Between the two lengths of half a minute lies a radius that sees the point only once.
    const float tokyo = 0.5F * metres_per_minute(settings.cent_lat_min, 1).lat;
    ASSERT_LT(tokyo, 0.5F * my);
    EXPECT_EQ(within(tokyo).Hmax, 7.0F);
    EXPECT_EQ(within(tokyo).Hmax, 40.0F);
}

// The real map of an isolated mountain; summit and lowest point as found by a separate reader.
class BigButte : public ::testing::Test {
 protected:
    void SetUp() override {
        const std::string folder = TORVEX_EXAMPLES_DIR "/big_butte/";
        settings.BASIC_H_FILE = folder + "elevation.map";
        settings.BASIC_Z0_FILE = folder + "roughness.map";
        if (!std::filesystem::exists(settings.BASIC_H_FILE)) {
            GTEST_SKIP() << "no example maps here";
        }
        settings.TERRAIN_MODE = "normal";
        settings.cent_lat_min = 43.0 * 60.0 + 24.0;
        settings.cent_lon_min = -113.0 * 60.0 - 1.5;
    }
    CaseSettings settings;
    MapState state;
    RunLog log;
};

TEST_F(BigButte, SummitIsWhereItShouldBe) {
    const TerrainMap map = read_basic_terrain(settings, state, log);
    ASSERT_EQ(map.columns, 527);
    ASSERT_EQ(map.rows, 385);
    int i_top = 1;
    int j_top = 1;
    float lowest = 1.0e6F;
    for (int j = 1; j <= map.rows; ++j) {
        for (int i = 1; i <= map.columns; ++i) {
            if ((*map.values)(i, j) > (*map.values)(i_top, j_top)) {
                i_top = i;
                j_top = j;
            }
            lowest = std::min(lowest, (*map.values)(i, j));
        }
    }
    EXPECT_FLOAT_EQ((*map.values)(i_top, j_top), 2298.7F);
    EXPECT_FLOAT_EQ(lowest, 1518.7F);
    // Where the map puts the summit against the summit as a site of the same case.
    const MeshPosition summit =
        position_from_centre(-113.021667 * 60.0, 43.396389 * 60.0, settings.cent_lon_min,
                             settings.cent_lat_min, 0, 270.0F);
    EXPECT_NEAR(static_cast<float>(i_top - 1) * map.dX + map.X0, summit.x, 0.1F);
    EXPECT_NEAR(static_cast<float>(j_top - 1) * map.dY + map.Y0, summit.y, 0.1F);
    const auto cell = locate(map, summit.x + 1.0F, summit.y + 1.0F);
    ASSERT_TRUE(cell.has_value());
    EXPECT_NEAR(bilinear_value(map, *cell), 2298.7F, 3.0F);
}

TEST_F(BigButte, MapsReachBeyondTheDomain) {
    CaptureStdout();
    const DirectionMaps maps = load_maps(settings, 1, state, log);
    GetCapturedStdout();
    const auto reach = [](const TerrainMap& map) {
        return std::min({-map.X0, -map.Y0, static_cast<float>(map.columns - 1) * map.dX + map.X0,
                         static_cast<float>(map.rows - 1) * map.dY + map.Y0});
    };
    EXPECT_NEAR(reach(maps.basic_h), 5918.0F, 1.0F);
    EXPECT_NEAR(reach(maps.basic_z0), 6008.0F, 1.0F);
}

TEST_F(BigButte, StatisticsOfTheWholeMapFindSummitAndLowestPoint) {
    CaptureStdout();
    const ElevationRange range = elevation_in_radius(settings, 10000.0F, state, log);
    GetCapturedStdout();
    EXPECT_FLOAT_EQ(range.Hmax, 2298.7F);
    EXPECT_FLOAT_EQ(range.Hmin, 1518.7F);
}

}  // namespace
}  // namespace torvex
