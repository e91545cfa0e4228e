#include "maps/map_bytes.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "maps/map_texts.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::map_text;
using ::testing::HasSubstr;

class MapBytesTest : public ::testing::Test {
 protected:
    std::string write(const std::string& text) {
        directory.write("a.map", text);
        return directory.file("a.map");
    }

    test::TemporaryDirectory directory;
};

TEST_F(MapBytesTest, TheHeaderIsReadWithoutTheData) {
    const std::string path = write(map_text("no numbers here\n", "geodetic_system = 'JGD'\n"));
    const MapHeader header = read_map_header_of(path);
    EXPECT_EQ(header.error, 0) << header.problem;
    EXPECT_EQ(header.columns, 3);
    EXPECT_EQ(header.rows, 2);
    EXPECT_EQ(header.base_latitude(1), 35.0F);
    EXPECT_EQ(header.datum, 2);
}

// Nothing could hold these files: they are sparse, and only their heads are read.
TEST_F(MapBytesTest, AHugeFileCostsNoMoreThanItsHeader) {
    const std::string good = write(map_text("1 2 3\n"));
    std::filesystem::resize_file(good, std::uintmax_t{1} << 43U);
    EXPECT_EQ(read_map_header_of(good).error, 0);
    const std::string bad = write("n_lon = 3\n");
    std::filesystem::resize_file(bad, std::uintmax_t{1} << 43U);
    const MapHeader header = read_map_header_of(bad);
    EXPECT_EQ(header.error, 3);
    EXPECT_EQ(header.line, 1);
    const std::string one_line = write("");
    std::filesystem::resize_file(one_line, std::uintmax_t{1} << 43U);
    EXPECT_EQ(read_map_header_of(one_line).error, 3);
}

TEST_F(MapBytesTest, ALongHeaderIsReadToItsEnd) {
    std::string comments;
    while (comments.size() < 300'000) {
        comments += "# nothing to see in this line\n";
    }
    const std::string text = map_text("7 8 9\n1 2 3\n", comments);
    MapBytes bytes(write("\xEF\xBB\xBF" + text));
    ASSERT_EQ(bytes.problem(), "");
    EXPECT_EQ(bytes.read_header().error, 0);
    ASSERT_TRUE(bytes.read_all());
    ListInput body = bytes.body();
    EXPECT_EQ(body.rest(), "7 8 9\n1 2 3\n");
    EXPECT_EQ(body.line(), 7 + 300'000 / 30);
}

TEST_F(MapBytesTest, ALineThatIsCutByTheFirstReadIsReadWhole) {
    const std::string text =
        map_text("1 2 3\n4 5 6\n", "#" + std::string(65'400, 'x') + "\nd_lat = 0.25\n");
    const MapHeader header = read_map_header_of(write(text));
    EXPECT_EQ(header.error, 0);
    EXPECT_EQ(header.spacing(2), 0.25F);
}

TEST_F(MapBytesTest, BlanksBehindTheTagMayBeMany) {
    std::string text = map_text("1 2 3\n4 5 6\n");
    text.insert(text.find('\n'), std::string(200'000, ' '));
    EXPECT_EQ(read_map_header_of(write(text)).error, 0);
}

TEST_F(MapBytesTest, AHeaderWithoutEndIsToldAtTheEndOfTheFile) {
    const MapHeader header = read_map_header_of(write("<TORVEX_MAP lon-lat>\nn_lon = 3\n"));
    EXPECT_EQ(header.error, 3);
    EXPECT_EQ(header.line, 3);
    EXPECT_THAT(header.problem, HasSubstr("the file ends before"));
}

TEST_F(MapBytesTest, WhatCannotBeOpenedIsErrorOne) {
    EXPECT_EQ(read_map_header_of(directory.file("none.map")).error, 1);
    EXPECT_EQ(read_map_header_of(directory.path().string()).error, 1);
    ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(read_map_header_of(directory.file("pipe")).error, 1);
    EXPECT_EQ(read_map_header_of(write("")).error, 3);
}

}  // namespace
}  // namespace torvex
