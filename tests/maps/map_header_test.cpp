#include "maps/map_header.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace torvex {
namespace {

using ::testing::HasSubstr;

constexpr std::string_view tag = "<TORVEX_MAP lon-lat>\n";
constexpr std::string_view items =
    "n_lon = 3, n_lat = 4\n"
    "d_lon = 0.5, d_lat = 0.25\n"
    "base_longitude = 139 45.5\n"
    "base_latitude = 35 30\n";

MapHeader header_of(const std::string& text) {
    ListInput input(text);
    return read_map_header(input);
}

// A complete header in which one item line stands in front of the others.
MapHeader with_line(const std::string& line) {
    return header_of(std::string(tag) + line + "\n" + std::string(items) + "--DATA--\n");
}

// A complete header with one piece of text replaced.
MapHeader with(std::string_view old_text, std::string_view new_text) {
    std::string text = std::string(tag) + std::string(items) + "--DATA--\n";
    text.replace(text.find(old_text), old_text.size(), new_text);
    return header_of(text);
}

TEST(MapHeader, ReadsAllKeysAndStopsAtTheFirstDataRow) {
    const std::string text =
        std::string(tag) + std::string(items) + "geodetic_system = 'WGS'\n--DATA--\n1 2 3\n";
    ListInput input(text);
    const MapHeader header = read_map_header(input);
    EXPECT_EQ(header.error, 0) << header.problem;
    EXPECT_EQ(header.kind, 1);
    EXPECT_EQ(header.columns, 3);
    EXPECT_EQ(header.rows, 4);
    EXPECT_EQ(header.spacing(1), 0.5F);
    EXPECT_EQ(header.spacing(2), 0.25F);
    EXPECT_EQ(header.base_longitude(1), 139.0F);
    EXPECT_EQ(header.base_longitude(2), 45.5F);
    EXPECT_EQ(header.base_latitude(1), 35.0F);
    EXPECT_EQ(header.base_latitude(2), 30.0F);
    EXPECT_EQ(header.offset(1), 0.0F);
    EXPECT_EQ(header.offset(2), 0.0F);
    EXPECT_EQ(header.datum, 3);
    EXPECT_EQ(input.line(), 8);
    std::string_view row;
    ASSERT_TRUE(input.read_line(row));
    EXPECT_EQ(row, "1 2 3");
}

TEST(MapHeader, TwoItemsOnALineSetBothAndARemarkIsDropped) {
    const MapHeader header = with("n_lon = 3, n_lat = 4", "n_lon = 7, n_lat = 9, a remark");
    EXPECT_EQ(header.error, 0) << header.problem;
    EXPECT_EQ(header.columns, 7);
    EXPECT_EQ(header.rows, 9);
}

TEST(MapHeader, TrailingCommaBlanksAndCarriageReturnsDoNoHarm) {
    const MapHeader header = header_of(
        "<TORVEX_MAP lon-lat>   \r\n  n_lon=3 ,n_lat =4 ,  \r\nd_lon = 5.0D-1 , d_lat = .25\r\n"
        "base_longitude = -113   -5.5,\r\nbase_latitude =35 30\r\n--DATA--  \r\n1 2 3\r\n");
    EXPECT_EQ(header.error, 0) << header.problem;
    EXPECT_EQ(header.columns, 3);
    EXPECT_EQ(header.rows, 4);
    EXPECT_EQ(header.spacing(1), 0.5F);
    EXPECT_EQ(header.base_longitude(1), -113.0F);
    EXPECT_EQ(header.base_longitude(2), -5.5F);
}

TEST(MapHeader, HashIsACommentInTheFirstColumnOnly) {
    EXPECT_EQ(with_line("# n_lon = 99").columns, 3);
    // Elsewhere it is part of the key, and the item is an unknown one.
    EXPECT_EQ(with_line(" # n_lon = 99").error, 0);
    // In front of a comma it does not reach the next item.
    const MapHeader header = with("n_lon = 3,", " # = 99, n_lon = 5,");
    EXPECT_EQ(header.error, 0) << header.problem;
    EXPECT_EQ(header.columns, 5);
}

TEST(MapHeader, UnknownItemsArePassedUpToTheirComma) {
    const MapHeader header = with("n_lon = 3,", "colour = n_lon = 99, n_lon = 3,");
    EXPECT_EQ(header.error, 0) << header.problem;
    EXPECT_EQ(header.columns, 3);
    EXPECT_EQ(with_line("just words, and more of them").error, 0);
    EXPECT_EQ(with_line("= 5").error, 0);
    EXPECT_EQ(with_line(",,,=,,=,").error, 0);
    EXPECT_EQ(with("n_lon = 3", "a remark, another,, n_lon = 5").columns, 5);
    EXPECT_EQ(with("n_lon = 3", "remark n_lon = 5").error, 2);
}

TEST(MapHeader, TheLastOfARepeatedKeyCounts) {
    EXPECT_EQ(with_line("n_lon = 99").columns, 3);
}

TEST(MapHeader, KeysAreComparedWithCaseAndWhole) {
    EXPECT_EQ(with("n_lon", "N_LON").error, 2);
    EXPECT_EQ(with("n_lon", "n_lo").error, 2);
}

TEST(MapHeader, DatumNames) {
    EXPECT_EQ(with_line("").datum, 0);
    EXPECT_EQ(with_line("geodetic_system = TKY").datum, 1);
    EXPECT_EQ(with_line("geodetic_system = 'TKY'").datum, 1);
    EXPECT_EQ(with_line("geodetic_system = 'TD'").datum, 1);
    EXPECT_EQ(with_line("geodetic_system = TDX and words").datum, 1);
    EXPECT_EQ(with_line("geodetic_system=JGD2000").datum, 2);
    EXPECT_EQ(with_line("geodetic_system = 'WGS84' , x = 1").datum, 3);
    EXPECT_EQ(with_line("geodetic_system = wgs").datum, 0);
    EXPECT_EQ(with_line("geodetic_system = T").datum, 0);
    EXPECT_EQ(with_line("geodetic_system = ").datum, 0);
    EXPECT_EQ(with_line("geodetic_system = WGS, geodetic_system = other").datum, 3);
}

TEST(MapHeader, MetricMapIsRefusedAtOnce) {
    const MapHeader header = header_of("<TORVEX_MAP x-y>\nni = 3\n");
    EXPECT_EQ(header.kind, 2);
    EXPECT_EQ(header.error, 1);
    EXPECT_EQ(header.line, 1);
    EXPECT_EQ(header.columns, 0);
}

TEST(MapHeader, UnknownFirstLineAndEmptyFileAreErrorThree) {
    EXPECT_EQ(header_of("").error, 3);
    EXPECT_EQ(header_of("<TORVEX_MAP>\n").error, 3);
    EXPECT_EQ(header_of(" <TORVEX_MAP lon-lat>\n").error, 3);
    EXPECT_EQ(header_of("<TORVEX_MAP lon-lat> x\n").error, 3);
    EXPECT_EQ(header_of(std::string("\0\xff\x01", 3)).error, 3);
    EXPECT_EQ(header_of("<TORVEX_MAP lon-latt>\n").kind, 0);
}

TEST(MapHeader, EndOfFileBeforeTheSeparatorIsErrorThree) {
    const MapHeader header = header_of(std::string(tag) + std::string(items));
    EXPECT_EQ(header.error, 3);
    EXPECT_EQ(header.line, 6);
    EXPECT_THAT(header.problem, HasSubstr("--DATA--"));
    EXPECT_EQ(header_of(std::string(tag) + std::string(items) + "--DATA-").error, 3);
}

TEST(MapHeader, EachRequiredKeyMustBeThere) {
    for (const std::string_view key :
         {"n_lon", "n_lat", "d_lon", "d_lat", "base_longitude", "base_latitude"}) {
        const MapHeader header = with(key, "other");
        EXPECT_EQ(header.error, 2) << key;
        EXPECT_EQ(header.line, 6) << key;
        EXPECT_THAT(header.problem, HasSubstr(key));
    }
}

TEST(MapHeader, UnreadableValuesAreErrorThreeAndNameKeyAndLine) {
    const MapHeader header = with("n_lat = 4", "n_lat = four");
    EXPECT_EQ(header.error, 3);
    EXPECT_EQ(header.line, 2);
    EXPECT_THAT(header.problem, HasSubstr("n_lat"));
    EXPECT_THAT(header.problem, HasSubstr("four"));
    EXPECT_EQ(with("n_lon = 3", "n_lon =").error, 3);
    EXPECT_EQ(with("n_lon = 3", "n_lon = 99999999999").error, 3);
    EXPECT_EQ(with("d_lon = 0.5", "d_lon = 1e99").error, 3);
    EXPECT_EQ(with("d_lon = 0.5", "d_lon = nan").error, 3);
    EXPECT_EQ(with("d_lat = 0.25", "d_lat = inf").error, 3);
    EXPECT_EQ(with("35 30", "35 nan").error, 3);
    EXPECT_EQ(with("139 45.5", "139, 45.5").error, 3);
    EXPECT_EQ(with("139 45.5", "139").error, 3);
}

TEST(MapHeader, CountsAndSpacingsOutOfRangeAreErrorTwo) {
    EXPECT_EQ(with("n_lon = 3", "n_lon = 1").error, 2);
    EXPECT_EQ(with("n_lat = 4", "n_lat = 0").error, 2);
    EXPECT_EQ(with("n_lat = 4", "n_lat = -4").error, 2);
    EXPECT_EQ(with("d_lon = 0.5", "d_lon = 0").error, 2);
    EXPECT_EQ(with("d_lat = 0.25", "d_lat = -0.25").error, 2);
    EXPECT_EQ(with("n_lon = 3", "n_lon = 2").error, 0);
}

TEST(MapHeader, LongLinesAreReadWhole) {
    const MapHeader header =
        with_line("remark = " + std::string(5000, 'x') + ", geodetic_system=JGD");
    EXPECT_EQ(header.error, 0) << header.problem;
    EXPECT_EQ(header.datum, 2);
}

TEST(MapHeader, AMillionEmptyItemsArePassedInOneGo) {
    EXPECT_EQ(with_line(std::string(1000000, ',') + "n_lon = 9").error, 0);
}

}  // namespace
}  // namespace torvex
