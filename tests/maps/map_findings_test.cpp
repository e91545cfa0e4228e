#include "maps/map_findings.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "maps/load_maps.hpp"
#include "maps/map_file.hpp"
#include "maps/map_texts.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::map_text;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const std::string good_data = "1 2 3\n4 5 6\n";

class MapFindingsTest : public ::testing::Test {
 protected:
    MapFindings findings_of(const std::string& text, const MapRole& role = basic_h_role) {
        directory.write("a.map", text);
        RunLog log;
        return read_map_file(directory.file("a.map"), role, nullptr, log)->findings;
    }

    // What is told of a map that stands for the basic terrain.
    const RunLog& told_of(const std::string& text) {
        directory.write("a.map", text);
        CaseSettings settings;
        settings.BASIC_H_FILE = directory.file("a.map");
        settings.cent_lat_min = 35.0 * 60.0;
        settings.cent_lon_min = 139.0 * 60.0;
        MapState state;
        log_ = std::make_unique<RunLog>();
        ::testing::internal::CaptureStderr();
        read_basic_terrain(settings, state, *log_);
        read_basic_terrain(settings, state, *log_);
        error = ::testing::internal::GetCapturedStderr();
        return *log_;
    }
    std::string spaced(const std::string& items) { return map_text(good_data, items); }

    test::TemporaryDirectory directory;
    std::string error;
    std::unique_ptr<RunLog> log_;
};

TEST_F(MapFindingsTest, SmallestAndLargestOfRowsOfAnyLength) {
    for (int columns = 2; columns < 60; ++columns) {
        for (const int at : {1, columns / 2 + 1, columns}) {
            std::string data;
            for (int j = 1; j <= 2; ++j) {
                for (int i = 1; i <= columns; ++i) {
                    data += i == at ? (j == 1 ? "-7.5 " : "812.5 ") : "100 ";
                }
                data += '\n';
            }
            const MapFindings f = findings_of(
                map_text(data, "", "n_lon = " + std::to_string(columns) + ", n_lat = 2"));
            EXPECT_EQ(f.smallest, -7.5F) << columns << " " << at;
            EXPECT_EQ(f.largest, 812.5F) << columns << " " << at;
            EXPECT_EQ(f.odd_count, 0);
        }
    }
}

TEST_F(MapFindingsTest, ElevationsThatAreNoneAreCountedFromTheFirst) {
    const MapFindings f =
        findings_of(map_text("1 2 3\n4 -9999\n9001\n-501 1 9000.5\n", "", "n_lon = 3, n_lat = 3"));
    EXPECT_EQ(f.odd_count, 4);
    EXPECT_EQ(f.first_row, 2);
    EXPECT_EQ(f.first_column, 2);
    EXPECT_EQ(f.first_line, 8);
    EXPECT_EQ(f.first_value, -9999.0F);
    EXPECT_EQ(f.smallest, -9999.0F);
    EXPECT_EQ(f.largest, 9001.0F);
}

TEST_F(MapFindingsTest, TheLineIsThatOfTheValueNotOfItsRow) {
    const MapFindings f = findings_of(map_text("1 2\n\n3\n4 5\n32767\n"));
    EXPECT_EQ(f.first_row, 2);
    EXPECT_EQ(f.first_column, 3);
    EXPECT_EQ(f.first_row_line, 10);
    EXPECT_EQ(f.first_line, 11);
}

TEST_F(MapFindingsTest, TheShoresOfTheDeadSeaAndTheHighestTopAreElevations) {
    EXPECT_EQ(findings_of(map_text("-430.5 8849 -500\n9000 0 1\n")).odd_count, 0);
    EXPECT_EQ(findings_of(map_text("-500.1 0 0\n0 0 0\n")).odd_count, 1);
    EXPECT_EQ(findings_of(map_text("9000.1 0 0\n0 0 0\n")).odd_count, 1);
}

TEST_F(MapFindingsTest, RoughnessIsOddAboveTenMetres) {
    const MapFindings f = findings_of(map_text("0.1 10 3\n4 20 30\n"), basic_z0_role);
    EXPECT_EQ(f.odd_count, 2);
    EXPECT_EQ(f.first_row_line, 8);
    EXPECT_EQ(f.largest, 30.0F);
}

TEST_F(MapFindingsTest, OneLineOfTheLogTellsOfAMap) {
    const RunLog& log = told_of(map_text("-3.25 2 3\n4 5 812.5\n"));
    EXPECT_EQ(error, "");
    // At 35 degrees, default ellipsoid: 1521.47 m and 1849.01 m a minute.
    EXPECT_EQ(log.kept().substr(19),
              " Read basic terrain map " + directory.file("a.map") +
                  ": longitude 139.00000 to 139.03333, latitude 35.00000 to 35.00833 degrees, "
                  "spacing 1521.469 m by 924.505 m, values -3.2 to 812.5 m.\n");
}

TEST_F(MapFindingsTest, GapsAreToldOnceOnStandardErrorAndInTheLog) {
    const RunLog& log = told_of(map_text("1 -9999 3\n4 5 -9999\n"));
    const std::string told = "2 elevations of " + directory.file("a.map") +
                             " below -500 m or above 9000 m, the first is -9999.0 m in row 1, "
                             "column 2 (line 7)";
    EXPECT_THAT(error, AllOf(HasSubstr("Warning: " + told), ::testing::EndsWith(".\n")));
    EXPECT_EQ(error.find(told), error.rfind(told));
    EXPECT_THAT(log.kept(), HasSubstr(" Warning: " + told));
    EXPECT_EQ(log.reminders(), "2 impossible elevations in " + directory.file("a.map"));
}

TEST_F(MapFindingsTest, SpacingsOfNoTerrainMapAreTold) {
    // A minute of latitude is 1849 m, one of longitude 1521 m.
    for (const char* items : {"d_lon = 3.3\n", "d_lat = 2.71\n", "d_lon = 0.00006\n"}) {
        const RunLog& log = told_of(spaced(items));
        EXPECT_THAT(error, HasSubstr("apart, expected 0.1 m to 5 km")) << items;
        EXPECT_EQ(log.reminders(), "odd spacing of " + directory.file("a.map"));
    }
    for (const char* items : {"d_lon = 3.28\n", "d_lat = 2.70\n", "d_lon = 0.00007\n"}) {
        EXPECT_THAT(told_of(spaced(items)).warnings(), IsEmpty()) << items;
    }
}

// A base in metres is read as degrees; the degrees understood are told.
TEST_F(MapFindingsTest, PlacesThatAreNoDegreesAreTold) {
    std::string text = map_text("1 2 3\n4 5 6\n");
    const std::size_t line = text.find("base_latitude");
    text.replace(line, text.find('\n', line) - line, "base_latitude = 4808050 0");
    const RunLog& log = told_of(text);
    EXPECT_THAT(error, HasSubstr("and from latitude 4808050.00000 to "));
    EXPECT_THAT(error, HasSubstr("degrees: its base is in degrees and minutes, not metres"));
    EXPECT_THAT(log.reminders(), HasSubstr("impossible place of " + directory.file("a.map")));
}

TEST_F(MapFindingsTest, RowsThatLeaveValuesAreTold) {
    const RunLog& log = told_of(map_text("1 2 3 3.5\n4 5 6 6.5\n"));
    EXPECT_THAT(error,
                HasSubstr("2 rows of 3 values leave further values unread on their line, the "
                          "first is row 1 in line 7"));
    EXPECT_THAT(log.warnings(), SizeIs(1));
    EXPECT_EQ(log.reminders(),
              "counts in " + directory.file("a.map") + " that do not fit its data");
}

TEST_F(MapFindingsTest, ValuesBehindTheLastRowAreTold) {
    const RunLog& log = told_of(map_text(good_data + "\n 7 8 9\n"));
    EXPECT_THAT(error, HasSubstr("numbers go on behind row 2, the last, from line 10 on"));
    EXPECT_THAT(log.warnings(), SizeIs(1));
    for (const char* behind : {"", "\n \n\n", "end\n", "# 1 2 3\n"}) {
        EXPECT_THAT(told_of(map_text(good_data + behind)).warnings(), IsEmpty()) << behind;
    }
}

// Rows of 8 values, broken behind the sixth, under a header of 4 columns.
TEST_F(MapFindingsTest, AHeaderWithTheCountsOfAnotherMapIsTold) {
    const std::string lines = "1 2 3 4 5 6\n7 8\n9 10 11 12 13 14\n15 16\n";
    const MapFindings f = findings_of(map_text(lines, "", "n_lon = 4, n_lat = 2"));
    EXPECT_EQ(f.long_rows, 2);
    EXPECT_EQ(f.first_long_row, 1);
    EXPECT_EQ(f.first_long_line, 7);
    EXPECT_EQ(f.line_behind, 10);
}

// 4 values on each of 2 lines under a header of 2 columns and 4 rows.
TEST_F(MapFindingsTest, DataThatEndTooEarlyForThatReasonSaySo) {
    directory.write("a.map", map_text("1 2 3 4\n5 6 7 8\n", "", "n_lon = 2, n_lat = 4"));
    RunLog log;
    const Stop s =
        test::stop_of([&] { read_map_file(directory.file("a.map"), basic_h_role, nullptr, log); });
    EXPECT_EQ(s.code(), 113);
    EXPECT_THAT(s.fix(), HasSubstr("left values unread on their line, from line 7 on"));
}

TEST_F(MapFindingsTest, WhatIsToldDoesNotChangeWhatIsRead) {
    directory.write("a.map", map_text("1 2 3 4\n5 6\n", "", "n_lon = 2, n_lat = 2"));
    RunLog log;
    const auto map = read_map_file(directory.file("a.map"), basic_h_role, nullptr, log);
    const std::vector<float> expected{1, 2, 5, 6};
    EXPECT_EQ(std::vector<float>(map->values->data(), map->values->data() + 4), expected);
    EXPECT_EQ(map->findings.long_rows, 1);
}

TEST_F(MapFindingsTest, ABadHeaderIsRefusedBeforeItsDataAreLookedAt) {
    directory.write("a.map", map_text("1 2\n", "d_lat = half\n"));
    std::filesystem::resize_file(directory.file("a.map"), std::uintmax_t{1} << 43U);
    RunLog log;
    const Stop s =
        test::stop_of([&] { read_map_file(directory.file("a.map"), basic_h_role, nullptr, log); });
    EXPECT_EQ(s.code(), 113);
    EXPECT_THAT(s.reason(), HasSubstr("cannot read d_lat = \"half\""));
}

}  // namespace
}  // namespace torvex
