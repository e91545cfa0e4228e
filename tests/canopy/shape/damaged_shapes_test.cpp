// Shapefiles whose bytes do not fit each other, each with the message that it is refused with.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>

#include "canopy/shape/read_shape_file.hpp"
#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using testing::HasSubstr;

// Places in houses.shp. Its first record holds one ring of 5 points; the second, of two rings and
// 10 points, begins behind it.
constexpr std::size_t header = 100;
constexpr std::size_t first = header + 8;
constexpr std::size_t second = first + 44 + 4 + 5 * 16 + 8;
constexpr std::size_t part_count = 36;
constexpr std::size_t point_count = 40;
constexpr std::size_t parts = 44;

class DamagedShapes : public testing::Test {
 protected:
    DamagedShapes() {
        for (const char* extension : {".shp", ".shx", ".dbf"}) {
            std::filesystem::copy_file(std::string(TORVEX_SHAPES_DIR) + "/houses" + extension,
                                       directory.file("a") + extension);
        }
    }

    void put(const std::string& file, std::size_t at, const std::string& bytes) {
        std::string all = directory.read(file);
        all.replace(at, bytes.size(), bytes);
        directory.write(file, all);
    }

    void cut(const std::string& file, std::size_t length) {
        directory.write(file, directory.read(file).substr(0, length));
    }

    static std::string little(std::uint64_t value, int size) {
        std::string bytes;
        for (int n = 0; n < size; ++n) {
            bytes += static_cast<char>(static_cast<unsigned char>(value >> (8 * n)));
        }
        return bytes;
    }
    static std::string word(std::uint32_t value) { return little(value, 4); }
    static std::string big(std::uint32_t value) {
        const std::string turned = word(value);
        return {turned.rbegin(), turned.rend()};
    }
    static std::string real(double value) { return little(std::bit_cast<std::uint64_t>(value), 8); }

    // What the reader says of the files as they are now.
    std::string refusal() {
        ShapeSet set;
        set.name = "sf_build";
        set.filename = directory.file("a.shp");
        testing::internal::CaptureStdout();
        const auto stopped = test::stop_of([&] { read_shape_file(set); });
        testing::internal::GetCapturedStdout();
        return stopped && stopped->code() == 1 ? stopped->what() : "accepted";
    }

    test::TemporaryDirectory directory;
};

TEST_F(DamagedShapes, GoodFilesAreAccepted) {
    EXPECT_EQ(refusal(), "accepted");
}

TEST_F(DamagedShapes, FilesThatEndTooEarly) {
    cut("a.shp", 60);
    EXPECT_THAT(refusal(), HasSubstr("ends inside its header"));
}

TEST_F(DamagedShapes, ShapesThatEndTooEarly) {
    cut("a.shp", 300);
    EXPECT_THAT(refusal(), HasSubstr("the file has 300"));
}

TEST_F(DamagedShapes, IndexThatEndsTooEarly) {
    cut("a.shx", 110);
    EXPECT_THAT(refusal(), HasSubstr("a.shx"));
}

TEST_F(DamagedShapes, TableThatEndsTooEarly) {
    cut("a.dbf", 300);
    EXPECT_THAT(refusal(), HasSubstr("the header tells of 6 rows"));
    cut("a.dbf", 20);
    EXPECT_THAT(refusal(), HasSubstr("ends inside its header"));
}

TEST_F(DamagedShapes, FilesThatAreNoShapefiles) {
    put("a.shp", 0, "GIF89a..");
    EXPECT_THAT(refusal(), HasSubstr("not that of a shapefile"));
}

TEST_F(DamagedShapes, CountsThatTheRecordCannotHold) {
    put("a.shp", first + part_count, word(2000000000));
    EXPECT_THAT(refusal(), HasSubstr("2000000000 parts"));
    put("a.shp", first + part_count, word(1));
    put("a.shp", first + point_count, word(2000000000));
    EXPECT_THAT(refusal(), HasSubstr("too short for 1 parts and 2000000000 points"));
    put("a.shp", first + point_count, word(0xFFFFFFFF));
    EXPECT_THAT(refusal(), HasSubstr("-1 points"));
    put("a.shp", first + point_count, word(0));
    EXPECT_THAT(refusal(), HasSubstr("1 parts and 0 points"));
    EXPECT_THAT(refusal(), HasSubstr("entity 0"));
}

TEST_F(DamagedShapes, PartsOutOfOrder) {
    for (const std::uint32_t start : {0U, 10U, 11U, 0xFFFFFFFFU}) {
        put("a.shp", second + parts + 4, word(start));
        EXPECT_THAT(refusal(), HasSubstr("entity 1")) << start;
        EXPECT_THAT(refusal(), HasSubstr("out of order")) << start;
    }
    put("a.shp", second + parts + 4, word(5));
    EXPECT_EQ(refusal(), "accepted");
    put("a.shp", second + parts, word(1));
    EXPECT_THAT(refusal(), HasSubstr("ring 0 begins at point 1"));
}

TEST_F(DamagedShapes, CoordinatesThatAreNotFinite) {
    for (const double value :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        put("a.shp", first + parts + 4 + 16, real(value));
        EXPECT_THAT(refusal(), HasSubstr("a coordinate is not finite"));
    }
}

TEST_F(DamagedShapes, RecordsOfAnotherTypeThanTheFile) {
    put("a.shp", first, word(3));
    EXPECT_THAT(refusal(), HasSubstr("the record is of type 3, the file of type 5"));
}

TEST_F(DamagedShapes, APolygonLargerThanItsRecord) {
    // Type, box, the two counts and the part fill 48 bytes of the record, each point 16 more.
    put("a.shp", first + point_count, word(6));
    EXPECT_THAT(refusal(), HasSubstr("too short for 1 parts and 6 points"));
    // A record that ends inside its own head.
    put("a.shp", header + 4, big(20));
    put("a.shx", header + 4, big(20));
    EXPECT_THAT(refusal(), HasSubstr("ends inside the head of a polygon"));
}

TEST_F(DamagedShapes, ARecordThatReachesBeyondTheFile) {
    const std::size_t size = directory.read("a.shp").size();
    const std::size_t length = size - header - 8;  // up to the last byte
    put("a.shx", header + 4, big(static_cast<std::uint32_t>(length / 2)));
    EXPECT_THAT(refusal(), HasSubstr("the length of the record is not that of the index"));
    put("a.shx", header + 4, big(static_cast<std::uint32_t>(length / 2 + 1)));
    EXPECT_THAT(refusal(), HasSubstr("entity 0 lies outside the .shp"));
}

TEST_F(DamagedShapes, IndexThatPointsElsewhere) {
    put("a.shx", header, big(0x7FFFFFF0));
    EXPECT_THAT(refusal(), HasSubstr("entity 0 lies outside the .shp"));
    put("a.shx", header, big(second / 2 - 4));
    EXPECT_THAT(refusal(), HasSubstr("the length of the record is not that of the index"));
}

TEST_F(DamagedShapes, TableWhoseRowsAreNarrowerThanItsFields) {
    put("a.dbf", 32 + 16, std::string(1, '\xFF'));
    EXPECT_THAT(refusal(), HasSubstr("bytes wide, a row has"));
}

TEST_F(DamagedShapes, TableWithoutFields) {
    put("a.dbf", 32, "\x0D");
    EXPECT_THAT(refusal(), HasSubstr("DB File Not Found"));
}

}  // namespace
}  // namespace torvex
