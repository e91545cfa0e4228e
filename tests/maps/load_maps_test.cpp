#include "maps/load_maps.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "maps/local_metric.hpp"
#include "maps/map_texts.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::map_text;
using test::stop_of;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

// A case with both basic maps, centre at 35 0 30 N, 139 2 0 E.
class LoadMaps : public ::testing::Test {
 protected:
    void SetUp() override {
        write_good_maps();
        settings.TERRAIN_MODE = "normal";
        settings.BASIC_H_FILE = directory.file("h.map");
        settings.BASIC_Z0_FILE = directory.file("z0.map");
        settings.cent_lat_min = 35.0 * 60.0 + 0.5;
        settings.cent_lon_min = 139.0 * 60.0 + 2.0;
        settings.ELEVATION_CORRECTION_FACTOR.fill(1.0F);
        CaptureStdout();
    }
    void TearDown() override { GetCapturedStdout(); }

    void write_good_maps() {
        directory.write("h.map", map_text("1 2 3\n4 5 6\n"));
        directory.write("z0.map", map_text("0.1 0.2 0.3\n0.4 0.5 0.6\n"));
    }
    std::string console_text() {
        std::string text = GetCapturedStdout();
        CaptureStdout();
        return text;
    }
    DirectionMaps load(int iwd = 1) { return load_maps(settings, iwd, state, log); }
    int code_of_load() {
        return stop_of([this] { load(); }).code();
    }
    void detailed_h(const std::string& text) {
        directory.write("dh.map", text);
        settings.DETAILED_H_FILE = directory.file("dh.map");
        settings.detailed_h_given = true;
    }
    void detailed_z0(const std::string& text) {
        directory.write("dz0.map", text);
        settings.DETAILED_Z0_FILE = directory.file("dz0.map");
        settings.detailed_z0_given = true;
    }

    test::TemporaryDirectory directory;
    CaseSettings settings;
    MapState state;
    RunLog log;
};

TEST_F(LoadMaps, ValuesRunEastAndThenNorthFromTheSouthWestPoint) {
    const DirectionMaps maps = load();
    ASSERT_TRUE(maps.basic_h.loaded());
    EXPECT_EQ(maps.basic_h.columns, 3);
    EXPECT_EQ(maps.basic_h.rows, 2);
    const Field2& h = *maps.basic_h.values;
    EXPECT_EQ(h(1, 1), 1.0F);
    EXPECT_EQ(h(3, 1), 3.0F);
    EXPECT_EQ(h(1, 2), 4.0F);
    EXPECT_EQ(h(3, 2), 6.0F);
    EXPECT_EQ((*maps.basic_z0.values)(2, 2), 0.5F);
    EXPECT_FALSE(maps.detailed_h.loaded());
    EXPECT_FALSE(maps.detailed_z0.loaded());
}

TEST_F(LoadMaps, PlacesTheMapInMetresRoundTheCentre) {
    // Radii of curvature at the centre in double precision, default ellipsoid.
    const double phi = settings.cent_lat_min / 60.0 * M_PI / 180.0;
    const double W = std::sqrt(1.0 - 0.00669447 * std::sin(phi) * std::sin(phi));
    const double mx = 6378136.0 * std::cos(phi) / W * M_PI / 10800.0;
    const double my = 6378136.0 * (1.0 - 0.00669447) / (W * W * W) * M_PI / 10800.0;
    const TerrainMap h = load().basic_h;
    EXPECT_NEAR(static_cast<double>(h.dX), mx, 1.0e-3);
    EXPECT_NEAR(static_cast<double>(h.dY), 0.5 * my, 1.0e-3);
    EXPECT_NEAR(static_cast<double>(h.X0), -2.0 * mx, 2.0e-3);
    EXPECT_NEAR(static_cast<double>(h.Y0), -0.5 * my, 2.0e-3);
}

TEST_F(LoadMaps, NegativeBaseIsTheSumOfItsNumbers) {
    std::string text = map_text("1 2 3\n4 5 6\n");
    text.replace(text.find("139 0"), 5, "-113 -5.5");
    directory.write("h.map", text);
    settings.cent_lon_min = -113.0 * 60.0 - 1.5;
    const TerrainMap h = load().basic_h;
    const float mx = metres_per_minute(settings.cent_lat_min, 0).lon;
    EXPECT_FLOAT_EQ(h.X0, -4.0F * mx);
    EXPECT_TRUE(log.warnings().empty());
}

TEST_F(LoadMaps, BaseOfDifferentSignsIsTakenAsItStandsAndWarnedOfOnce) {
    std::string text = map_text("1 2 3\n4 5 6\n");
    text.replace(text.find("139 0"), 5, "-113 5.5");
    directory.write("h.map", text);
    settings.cent_lon_min = -113.0 * 60.0 + 5.5;
    EXPECT_EQ(load().basic_h.X0, 0.0F);
    load();
    EXPECT_THAT(log.kept(), AllOf(HasSubstr("base_longitude"), HasSubstr("-6774.5000 minutes")));
    EXPECT_EQ(log.kept().find("base_longitude"), log.kept().rfind("base_longitude"));
}

TEST_F(LoadMaps, ConsoleTellsEachMapInOrderAlsoWhenItIsNotParsedAgain) {
    detailed_h(map_text("1 2 3\n4 5 6\n"));
    detailed_z0(map_text("1 2 3\n4 5 6\n"));
    const std::string expected = "   - Read terrain map from " + directory.file("h.map") + "\n" +
                                 "   - Read terrain map from " + directory.file("dh.map") + "\n" +
                                 "   - Read roughness map from " + directory.file("z0.map") + "\n" +
                                 "   - Read roughness map from " + directory.file("dz0.map") + "\n";
    load(1);
    EXPECT_EQ(console_text(), expected);
    load(2);
    EXPECT_EQ(console_text(), expected);
}

TEST_F(LoadMaps, EachMapIsPlacedWithTheDatumOfTheOneBefore) {
    directory.write("h.map", map_text("1 2 3\n4 5 6\n", "geodetic_system = TKY\n"));
    directory.write("z0.map", map_text("1 2 3\n4 5 6\n", "geodetic_system = WGS\n"));
    detailed_h(map_text("1 2 3\n4 5 6\n"));
    const auto mx = [this](int datum) {
        return metres_per_minute(settings.cent_lat_min, datum).lon;
    };
    ASSERT_NE(mx(0), mx(1));
    ASSERT_NE(mx(0), mx(3));
    const DirectionMaps first = load(1);
    EXPECT_EQ(first.basic_h.dX, mx(0));
    EXPECT_EQ(first.detailed_h.dX, mx(1));
    EXPECT_EQ(first.basic_z0.dX, mx(0));
    EXPECT_EQ(state.datum, 3);
    // Nothing is parsed the second time, and the datum moves on all the same.
    const DirectionMaps second = load(2);
    EXPECT_EQ(second.basic_h.dX, mx(3));
    EXPECT_EQ(second.detailed_h.dX, mx(1));
    EXPECT_EQ(second.basic_z0.dX, mx(0));
    EXPECT_EQ(second.basic_h.values, first.basic_h.values);
}

// Each of the four maps has a datum of its own, so every place of the chain shows.
TEST_F(LoadMaps, HeadersAloneGiveTheSamePlacesInEveryDirection) {
    const std::string data = "1 2 3\n4 5 6\n";
    directory.write("h.map", map_text(data, "geodetic_system = 'TKY'\n"));
    detailed_h(map_text(data, "d_lon = 0.3\ngeodetic_system = 'WGS'\n"));
    directory.write("z0.map", map_text(data));
    detailed_z0(map_text(data, "d_lat = 0.1\ngeodetic_system = 'TKY'\n"));
    int datum = 0;
    for (int iwd = 1; iwd <= 3; ++iwd) {
        const DirectionMaps loaded = load(iwd);
        const std::optional<DirectionMaps> placed = placed_by_headers(settings, datum);
        ASSERT_TRUE(placed.has_value());
        EXPECT_EQ(datum, state.datum);
        for (const auto map : {&DirectionMaps::basic_h, &DirectionMaps::detailed_h,
                               &DirectionMaps::basic_z0, &DirectionMaps::detailed_z0}) {
            const TerrainMap& a = loaded.*map;
            const TerrainMap& b = *placed.*map;
            EXPECT_FALSE(b.loaded());
            EXPECT_EQ(b.columns, a.columns);
            EXPECT_EQ(b.rows, a.rows);
            EXPECT_EQ(b.dX, a.dX) << iwd;
            EXPECT_EQ(b.dY, a.dY) << iwd;
            EXPECT_EQ(b.X0, a.X0) << iwd;
            EXPECT_EQ(b.Y0, a.Y0) << iwd;
        }
    }
}

TEST_F(LoadMaps, ABadHeaderGivesNoPlaces) {
    int datum = 0;
    EXPECT_TRUE(placed_by_headers(settings, datum).has_value());
    directory.write("z0.map", map_text("1 2 3\n", "d_lat = 0\n"));
    EXPECT_FALSE(placed_by_headers(settings, datum).has_value());
    settings.BASIC_Z0_FILE = directory.file("none.map");
    EXPECT_FALSE(placed_by_headers(settings, datum).has_value());
}

TEST_F(LoadMaps, SizingAndFirstDirectionMayDiffer) {
    directory.write("h.map", map_text("1 2 3\n4 5 6\n", "geodetic_system = TKY\n"));
    const TerrainMap sizing = read_basic_terrain(settings, state, log);
    const TerrainMap direction = load().basic_h;
    EXPECT_EQ(sizing.dX, metres_per_minute(settings.cent_lat_min, 0).lon);
    EXPECT_EQ(direction.dX, metres_per_minute(settings.cent_lat_min, 1).lon);
    EXPECT_NEAR(sizing.dX / direction.dX, 1.0F, 2.0e-4F);
    EXPECT_EQ(sizing.values, direction.values);
}

TEST_F(LoadMaps, ChangedFileIsReadAgain) {
    const DirectionMaps first = load(1);
    directory.write("h.map", map_text("1 2 3\n4 5 66\n"));
    const DirectionMaps second = load(2);
    EXPECT_EQ((*first.basic_h.values)(3, 2), 6.0F);
    EXPECT_EQ((*second.basic_h.values)(3, 2), 66.0F);
    // The same size and, from now on, a new file under the old name.
    directory.write("new.map", map_text("1 2 3\n4 5 77\n"));
    std::filesystem::rename(directory.file("new.map"), directory.file("h.map"));
    EXPECT_EQ((*load(3).basic_h.values)(3, 2), 77.0F);
    std::filesystem::remove(directory.file("h.map"));
    EXPECT_EQ(code_of_load(), 111);
}

TEST_F(LoadMaps, CorrectionFactorScalesTerrainOfItsDirectionOnly) {
    detailed_h(map_text("10 20 30\n40 50 60\n"));
    settings.SPECIFY_ELEVATION_CORRECTION_FACTOR = true;
    settings.ELEVATION_CORRECTION_FACTOR(1) = 0.5F;
    settings.ELEVATION_CORRECTION_FACTOR(2) = 3.0F;
    const DirectionMaps first = load(1);
    EXPECT_EQ((*first.basic_h.values)(3, 2), 3.0F);
    EXPECT_EQ((*first.detailed_h.values)(1, 1), 5.0F);
    EXPECT_EQ((*first.basic_z0.values)(1, 1), 0.1F);
    const DirectionMaps second = load(2);
    EXPECT_EQ((*second.basic_h.values)(3, 2), 18.0F) << "factors must not accumulate";
    EXPECT_EQ((*first.basic_h.values)(3, 2), 3.0F);
    EXPECT_EQ((*load(3).basic_h.values)(3, 2), 6.0F);
    settings.SPECIFY_ELEVATION_CORRECTION_FACTOR = false;
    EXPECT_EQ((*load(1).basic_h.values)(3, 2), 6.0F);
}

TEST_F(LoadMaps, FactorOfZeroGivesFlatGroundAndLeavesTheStatisticsAlone) {
    settings.SPECIFY_ELEVATION_CORRECTION_FACTOR = true;
    settings.ELEVATION_CORRECTION_FACTOR.fill(0.0F);
    EXPECT_EQ((*load().basic_h.values)(3, 2), 0.0F);
    EXPECT_EQ(elevation_in_radius(settings, 1.0e5F, state, log).Hmax, 6.0F);
    settings.ELEVATION_CORRECTION_FACTOR(1) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(code_of_load(), 1);
}

// Rows of data in the free notation.
TEST_F(LoadMaps, RowsAreListDirectedRecords) {
    directory.write("h.map", map_text("1 2 3 4\n5 6\n", "", "n_lon = 2, n_lat = 2"));
    const DirectionMaps maps = load();
    EXPECT_EQ((*maps.basic_h.values)(1, 1), 1.0F);
    EXPECT_EQ((*maps.basic_h.values)(2, 1), 2.0F);
    EXPECT_EQ((*maps.basic_h.values)(1, 2), 5.0F);
    EXPECT_EQ((*maps.basic_h.values)(2, 2), 6.0F);
}

TEST_F(LoadMaps, RowsMayBreakOverLinesAndRepeatValues) {
    directory.write("h.map", map_text("1\n\n2,\r\n3\r\n2*4.5 , 1.0D1 and words\n"));
    directory.write("z0.map", map_text("3*0.03\n5*0.5\n"));
    const DirectionMaps maps = load();
    EXPECT_EQ((*maps.basic_h.values)(3, 1), 3.0F);
    EXPECT_EQ((*maps.basic_h.values)(2, 2), 4.5F);
    EXPECT_EQ((*maps.basic_h.values)(3, 2), 10.0F);
    EXPECT_EQ((*maps.basic_z0.values)(3, 1), 0.03F);
    EXPECT_EQ((*maps.basic_z0.values)(3, 2), 0.5F);
}

TEST_F(LoadMaps, ASlashLeavesTheRestOfTheRowAtZero) {
    directory.write("h.map", map_text("7 /\n,8,9\n"));
    const DirectionMaps maps = load();
    EXPECT_EQ((*maps.basic_h.values)(1, 1), 7.0F);
    EXPECT_EQ((*maps.basic_h.values)(2, 1), 0.0F);
    EXPECT_EQ((*maps.basic_h.values)(1, 2), 0.0F);
    EXPECT_EQ((*maps.basic_h.values)(3, 2), 9.0F);
}

TEST_F(LoadMaps, MoreDataThanNeededIsNotLookedAt) {
    directory.write("h.map", map_text("1 2 3\n4 5 6\nrubbish\n"));
    EXPECT_EQ(code_of_load(), 0);
}

// Every stop of every map.
struct BadMap {
    const char* name;
    std::string text;
    int error;
};

std::vector<BadMap> bad_maps() {
    const std::string good = "1 2 3\n4 5 6\n";
    return {
        {"x-y",
         "<TORVEX_MAP x-y>\nni = 3, nj = 2, dx = 1, dy = 1, ox = 0, oy = 0\n--DATA--\n" + good, 1},
        {"no n_lat", map_text(good, "", "n_lon = 3"), 2},
        {"one column", map_text(good, "", "n_lon = 1, n_lat = 2"), 2},
        {"negative rows", map_text(good, "", "n_lon = 3, n_lat = -2"), 2},
        {"spacing of 0", map_text(good, "d_lon = 0\n"), 2},
        {"negative spacing", map_text(good, "d_lat = -0.5\n"), 2},
        {"empty", "", 3},
        {"first line", "TORVEX_MAP\n" + good, 3},
        {"no separator", "<TORVEX_MAP lon-lat>\nn_lon = 3\n", 3},
        {"header value", map_text(good, "d_lat = half\n"), 3},
        {"spacing not finite", map_text(good, "d_lat = inf\n"), 3},
        {"base not finite", map_text(good, "base_latitude = nan 0\n"), 3},
        {"base out of reach", map_text(good, "base_latitude = 1e37 0\n"), 3},
        {"spacing out of reach", map_text(good, "d_lat = 3e38\n"), 3},
        {"no data", map_text(""), 3},
        {"short row", map_text("1 2 3\n4 5\n"), 3},
        {"row missing", map_text("1 2 3\n"), 3},
        {"a word", map_text("1 2 3\n4 five 6\n"), 3},
        {"infinite", map_text("1 2 3\n4 inf 6\n"), 3},
        {"too large", map_text("1 2 3\n4 1e39 6\n"), 3},
        {"binary", map_text(std::string("\0\x01\xff 2 3\n4 5 6\n", 13)), 3},
        {"quote", map_text("1 2 3\n4 '5 6\n"), 3},
        {"repeat short", map_text("1 2 3\n2*4\n"), 3},
        {"counts of a corrupt header", map_text(good, "", "n_lon = 2147483647, n_lat = 2147483647"),
         3},
        {"many columns", map_text(good, "", "n_lon = 2147483647, n_lat = 2"), 3},
        {"many rows", map_text(good, "", "n_lon = 2, n_lat = 2147483647"), 3},
        {"huge repeat", map_text("2147483647*1\n", "", "n_lon = 2147483647, n_lat = 100000"), 3},
        {"slashes", map_text("/\n/\n", "", "n_lon = 2147483647, n_lat = 2000000000"), 3},
    };
}

TEST_F(LoadMaps, BadMapsStopWithTheCodesOfTheirRole) {
    for (const BadMap& bad : bad_maps()) {
        write_good_maps();
        directory.write("h.map", bad.text);
        EXPECT_EQ(code_of_load(), 110 + bad.error) << bad.name;
        EXPECT_EQ(stop_of([this] { elevation_in_radius(settings, 1.0F, state, log); }).code(),
                  110 + bad.error)
            << bad.name;
        write_good_maps();
        detailed_h(bad.text);
        EXPECT_EQ(code_of_load(), 120 + bad.error) << bad.name;
        settings.detailed_h_given = false;
        directory.write("z0.map", bad.text);
        EXPECT_EQ(code_of_load(), 130 + bad.error) << bad.name;
        write_good_maps();
        detailed_z0(bad.text);
        EXPECT_EQ(code_of_load(), 140 + bad.error) << bad.name;
        settings.detailed_z0_given = false;
    }
}

TEST_F(LoadMaps, AMapBeyondTheMemoryOfTheMachineIsRefused) {
    write_good_maps();
    std::filesystem::resize_file(directory.file("h.map"), std::uintmax_t{1} << 43);
    const Stop s = stop_of([this] { load(); });
    EXPECT_EQ(s.code(), 113);
    EXPECT_THAT(s.reason(), HasSubstr("8796.1 GB"));
    EXPECT_EQ(s.where(), directory.file("h.map"));
}

// Far fewer bytes than values: a repeat count and a slash stand for many.
TEST_F(LoadMaps, ASmallMapMayBeWrittenInShort) {
    const std::string counts = "n_lon = 999, n_lat = 4";
    for (const auto& [row, last] : {std::pair("999*5\n", 5.0F), std::pair("5 /\n", 0.0F)}) {
        std::string data;
        for (int j = 1; j <= 4; ++j) {
            data += row;
        }
        directory.write("h.map", map_text(data, "", counts));
        ASSERT_EQ(code_of_load(), 0) << row;
        const DirectionMaps maps = load();
        EXPECT_EQ((*maps.basic_h.values)(1, 4), 5.0F);
        EXPECT_EQ((*maps.basic_h.values)(999, 4), last);
    }
    directory.write("h.map", map_text("111*5\n", "", counts));
    EXPECT_THAT(stop_of([this] { load(); }).reason(), HasSubstr("too short"));
}

// The notation would allow it, at the price of gigabytes for a few bytes.
TEST_F(LoadMaps, ALargeMapMayNotBeWrittenInShort) {
    const std::string counts = "n_lon = 50000001, n_lat = 2";
    for (const char* data : {"/\n/\n", "50000001*1\n50000001*1\n"}) {
        directory.write("h.map", map_text(data, "", counts));
        const Stop s = stop_of([this] { load(); });
        EXPECT_EQ(s.code(), 113);
        EXPECT_THAT(s.reason(), HasSubstr("the data are too short for 50000001 columns"));
        EXPECT_THAT(s.fix(), HasSubstr("no repeat counts or slashes"));
    }
}

TEST_F(LoadMaps, TheMarkThatSomeEditorsPutInFrontIsPassedOver) {
    directory.write("h.map", "\xEF\xBB\xBF" + map_text("1 2 3\n4 5 6\n"));
    EXPECT_EQ((*load().basic_h.values)(3, 2), 6.0F);
}

TEST_F(LoadMaps, FilesThatCannotBeOpenedStopWithTheFirstCode) {
    for (const std::string& name : {directory.file("missing.map"), directory.path().string(),
                                    std::string("/dev/null"), std::string("  "), std::string()}) {
        settings.BASIC_H_FILE = name;
        EXPECT_EQ(code_of_load(), 111) << name;
        EXPECT_EQ(stop_of([this] { elevation_in_radius(settings, 1.0F, state, log); }).code(), 111);
        EXPECT_EQ(stop_of([this] { elevation_in_domain(settings, 1, 1, state, log); }).code(), 111);
        EXPECT_EQ(stop_of([this] { read_basic_terrain(settings, state, log); }).code(), 111);
        settings.BASIC_H_FILE = directory.file("h.map");
        settings.BASIC_Z0_FILE = name;
        EXPECT_EQ(code_of_load(), 131) << name;
        settings.BASIC_Z0_FILE = directory.file("z0.map");
        settings.DETAILED_H_FILE = name;
        settings.detailed_h_given = true;
        EXPECT_EQ(code_of_load(), 121) << name;
        settings.detailed_h_given = false;
        settings.DETAILED_Z0_FILE = name;
        settings.detailed_z0_given = true;
        EXPECT_EQ(code_of_load(), 141) << name;
        settings.detailed_z0_given = false;
    }
}

TEST_F(LoadMaps, RoughnessMustBePositiveAndElevationNeedNot) {
    directory.write("h.map", map_text("0 -2 -3e30\n4 5 6\n"));
    EXPECT_EQ(code_of_load(), 0);
    for (const char* value : {"0", "-0.0", "-0.1", "nan", "-inf", "1e-60", "/"}) {
        const std::string text = map_text(std::string("1 2 3\n4 5 ") + value + "\n");
        directory.write("z0.map", text);
        EXPECT_EQ(code_of_load(), 134) << value;
        directory.write("z0.map", map_text("1 2 3\n4 5 1e-44\n"));
        EXPECT_EQ(code_of_load(), 0);
        detailed_z0(text);
        EXPECT_EQ(code_of_load(), 144) << value;
        settings.detailed_z0_given = false;
    }
    directory.write("h.map", map_text("1 2 3\n4 nan 6\n"));
    EXPECT_EQ(code_of_load(), 113);
}

TEST_F(LoadMaps, MessagesTellFileLineAndWhatWasExpected) {
    directory.write("h.map", map_text("1 2 3\n4 five 6\n"));
    Stop s = stop_of([this] { load(); });
    EXPECT_EQ(s.where(), directory.file("h.map") + ", line 8");
    EXPECT_THAT(s.reason(), AllOf(HasSubstr("basic terrain map"), HasSubstr("\"five\""),
                                  HasSubstr("a real number"), HasSubstr("row 2")));
    directory.write("h.map", map_text("1 2 3\n4 5\n"));
    s = stop_of([this] { load(); });
    EXPECT_THAT(s.reason(), AllOf(HasSubstr("file ends"), HasSubstr("row 2")));
    EXPECT_THAT(s.fix(), AllOf(HasSubstr("3 columns"), HasSubstr("2 rows")));

    directory.write("h.map", map_text("1 2 3\n4 5 6\n"));
    directory.write("z0.map", map_text("1 2 3\n4 0 6\n"));
    s = stop_of([this] { load(); });
    EXPECT_EQ(s.where(), directory.file("z0.map") + ", line 8");
    EXPECT_THAT(s.reason(),
                AllOf(HasSubstr("basic roughness map"), HasSubstr("column 2"), HasSubstr("row 2")));
    settings.BASIC_Z0_FILE = directory.file("missing.map");
    s = stop_of([this] { load(); });
    EXPECT_THAT(s.fix(), HasSubstr("BASIC_Z0_FILE"));
    EXPECT_THAT(s.reason(), HasSubstr("No such file"));
}

TEST_F(LoadMaps, AWordOfAMegabyteIsCutInTheMessage) {
    directory.write("h.map", map_text("1 2 " + std::string(1 << 20, 'x') + "\n"));
    EXPECT_LT(stop_of([this] { load(); }).reason().size(), 300U);
}

TEST_F(LoadMaps, RoughnessAboveTenMetresIsWarnedOfOncePerMap) {
    directory.write("z0.map", map_text("0.1 10 0.3\n0.4 20 30.5\n"));
    load(1);
    load(2);
    const std::string expected = " Warning: roughness above 10 m from line 8 of " +
                                 directory.file("z0.map") +
                                 " on, largest    30.500 m: it is taken as 9.999 m.\n";
    EXPECT_THAT(log.kept(), HasSubstr(expected));
    EXPECT_EQ(log.warnings().size(), 1U);
}

TEST_F(LoadMaps, RoughnessOfTenMetresIsNotWarnedOf) {
    directory.write("z0.map", map_text("0.1 10 0.3\n0.4 9.999 1\n"));
    directory.write("h.map", map_text("100 200 300\n0.4 9.999 1\n"));
    load();
    EXPECT_TRUE(log.warnings().empty());
}

TEST_F(LoadMaps, BlankNamesAreAllowedForFlatRuns) {
    settings.BASIC_H_FILE = "";
    settings.BASIC_Z0_FILE = "";
    settings.TERRAIN_MODE = "flat";
    DirectionMaps maps = load();
    EXPECT_FALSE(maps.basic_h.loaded());
    EXPECT_FALSE(maps.basic_z0.loaded());
    settings.TERRAIN_MODE = "flat2";
    EXPECT_EQ(code_of_load(), 131);
    settings.TERRAIN_MODE = "flatX";
    EXPECT_EQ(code_of_load(), 131);
    settings.BASIC_Z0_FILE = directory.file("z0.map");
    maps = load();
    EXPECT_FALSE(maps.basic_h.loaded());
    EXPECT_TRUE(maps.basic_z0.loaded());
    settings.TERRAIN_MODE = "fla";
    EXPECT_EQ(code_of_load(), 111);
}

TEST_F(LoadMaps, NamesThatAreGivenAreReadInFlatRunsToo) {
    settings.TERRAIN_MODE = "flat";
    const DirectionMaps maps = load();
    EXPECT_TRUE(maps.basic_h.loaded());
    EXPECT_TRUE(maps.basic_z0.loaded());
    settings.BASIC_H_FILE = directory.file("missing.map");
    EXPECT_EQ(code_of_load(), 111);
}

TEST_F(LoadMaps, FlatRunWithoutAMapHasElevationsOfZero) {
    settings.BASIC_H_FILE = "";
    settings.TERRAIN_MODE = "flat";
    settings.SPECIFY_ELEVATION_CORRECTION_FACTOR = true;
    load();
    console_text();
    const ElevationRange range = elevation_in_domain(settings, 100.0F, 100.0F, state, log);
    EXPECT_EQ(range.Hmax, 0.0F);
    EXPECT_EQ(range.Hmin, 0.0F);
    EXPECT_EQ(range.Havg, 0.0F);
    EXPECT_THAT(console_text(), HasSubstr("Minimum elevation in the domain is        0.0m."));
    EXPECT_FALSE(read_basic_terrain(settings, state, log).loaded());
}

TEST_F(LoadMaps, ACentreAtThePoleCannotPlaceAMap) {
    settings.cent_lat_min = 95.0 * 60.0;
    EXPECT_EQ(code_of_load(), 113);
    settings.cent_lat_min = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(code_of_load(), 113);
}

TEST_F(LoadMaps, RowOfSeveralKilobytesIsReadWhole) {
    std::string data;
    for (int j = 0; j < 2; ++j) {
        for (int i = 0; i < 5000; ++i) {
            data += std::to_string(i) + (i % 3 == 0 ? ".25\n" : ".25 ");
        }
        data += "\n";
    }
    directory.write("h.map", map_text(data, "", "n_lon = 5000, n_lat = 2"));
    const DirectionMaps maps = load();
    for (int i = 1; i <= 5000; ++i) {
        ASSERT_EQ((*maps.basic_h.values)(i, 2), static_cast<float>(i - 1) + 0.25F);
    }
}

}  // namespace
}  // namespace torvex
