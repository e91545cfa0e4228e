#include "maps/conversion/write_map.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "maps/conversion/conversion_fixture.hpp"
#include "maps/conversion/map_picture.hpp"
#include "maps/map_file.hpp"

namespace torvex {
namespace {

DegreeRaster raster(int columns, int rows) {
    DegreeRaster map;
    map.base_lon = 8385.0375;
    map.base_lat = 2140.025;
    map.d_lon = 0.075;
    map.d_lat = 0.05;
    map.datum = 2;
    map.values.allocate(columns, rows);
    for (int j = 1; j <= rows; ++j) {
        for (int i = 1; i <= columns; ++i) {
            map.values(i, j) = static_cast<float>(100 * j + i);
        }
    }
    return map;
}

TEST(WriteMap, TenValuesALineAndEachRowOnItsOwn) {
    const test::WorkingDirectory directory;
    DegreeRaster map = raster(11, 2);
    map.values(1, 1) = -3.25F;
    write_map("h.map", map, Quantity::elevation);
    EXPECT_EQ(directory.read("h.map"),
              "<TORVEX_MAP lon-lat>\n"
              "# made by torvex-prep maps\n"
              "n_lon = 11\n"
              "n_lat = 2\n"
              "d_lon = 0.075000000000\n"
              "d_lat = 0.050000000000\n"
              "base_longitude = 139 45.037500000\n"
              "base_latitude = 35 40.025000000\n"
              "geodetic_system = 'JGD'\n"
              "--DATA--\n"
              "    -3.2   102.0   103.0   104.0   105.0   106.0   107.0   108.0   109.0   110.0\n"
              "   111.0\n"
              "   201.0   202.0   203.0   204.0   205.0   206.0   207.0   208.0   209.0   210.0\n"
              "   211.0\n");
}

TEST(WriteMap, RoughnessHasFiveDecimalsAndIsNeverZero) {
    const test::WorkingDirectory directory;
    DegreeRaster map = raster(4, 1);
    map.datum = 0;
    map.values(1, 1) = 0.03F;
    map.values(2, 1) = 0.000001F;
    map.values(3, 1) = 0.0F;
    map.values(4, 1) = 1.5F;
    write_map("z0.map", map, Quantity::roughness);
    const std::string text = directory.read("z0.map");
    EXPECT_TRUE(text.ends_with("--DATA--\n  0.03000  0.00001  0.00001  1.50000\n"));
    EXPECT_EQ(text.find("geodetic_system"), std::string::npos);
}

TEST(WriteMap, IsReadBackByTheReaderOfMaps) {
    const test::WorkingDirectory directory;
    DegreeRaster map = raster(23, 7);
    map.base_lon = -113 * 60 - 5.88333342;
    map.base_lat = -0.5 * 60;
    map.d_lon = 1.0 / 60.0;
    write_map("h.map", map, Quantity::elevation);
    RunLog log;
    const auto read = read_map_file("h.map", basic_h_role, nullptr, log);
    EXPECT_TRUE(log.kept().empty());  // no warning about signs
    EXPECT_EQ(read->header.columns, 23);
    EXPECT_EQ(read->header.rows, 7);
    EXPECT_EQ(read->header.datum, 2);
    EXPECT_FLOAT_EQ(read->header.spacing(1), 1.0F / 60.0F);
    const DegreeRaster back = raster_of(read->header);
    EXPECT_NEAR(back.base_lon, map.base_lon, 1e-6);
    EXPECT_NEAR(back.base_lat, map.base_lat, 1e-6);
    EXPECT_EQ((*read->values)(23, 7), 723.0F);
}

TEST(WriteMap, AValueThatDoesNotFitLeavesNoHalfMap) {
    for (const float value : {100000.0F, -12345.0F, NAN, INFINITY}) {
        const test::WorkingDirectory directory;
        DegreeRaster map = raster(3, 3);
        map.values(3, 3) = value;
        EXPECT_EQ(test::stop_code_of([&] { write_map("h.map", map, Quantity::elevation); }), 1);
        EXPECT_FALSE(directory.has("h.map"));
    }
    const test::WorkingDirectory directory;
    DegreeRaster map = raster(3, 3);  // 303 m of roughness
    EXPECT_EQ(test::stop_code_of([&] { write_map("z0.map", map, Quantity::roughness); }), 1);
}

TEST(MapPicture, APixmapHasNorthOnTopAndTheEndsOfTheRamp) {
    const test::WorkingDirectory directory;
    write_map_picture("h.ppm", 2, raster(3, 2), Quantity::elevation);
    const std::string bytes = directory.read("h.ppm");
    const std::string head = "P6\n3 2\n255\n";
    ASSERT_EQ(bytes.size(), head.size() + 18);
    EXPECT_TRUE(bytes.starts_with(head));
    // Highest in the north-east, third pixel of the first row; lowest in the south-west.
    const auto pixel = [&](std::size_t n) { return bytes.substr(head.size() + 3 * n, 3); };
    EXPECT_EQ(pixel(2), "\xFA\xFA\xFA");
    EXPECT_EQ(pixel(3), "\x14\x5A\x3C");
}

TEST(MapPicture, ALevelMapAndAnyRoughnessHaveAColour) {
    const test::WorkingDirectory directory;
    DegreeRaster map = raster(2, 1);
    map.values.fill(5);
    write_map_picture("h.ppm", 2, map, Quantity::elevation);
    map.values(1, 1) = 1.0e-9F;
    map.values(2, 1) = 50;
    write_map_picture("z0.ppm", 2, map, Quantity::roughness);
    EXPECT_TRUE(directory.read("z0.ppm").ends_with("\x14\x5A\x3C\xFA\xFA\xFA"));
}

TEST(MapPicture, ATextGridHasDegreesForAxes) {
    const test::WorkingDirectory directory;
    write_map_picture("h.grd", 1, raster(3, 2), Quantity::elevation);
    const std::string text = directory.read("h.grd");
    EXPECT_TRUE(text.starts_with("DSAA\n           3           2\n   139.750626"));
    EXPECT_NE(text.find("\n0.0 4000.0\n"), std::string::npos);
}

}  // namespace
}  // namespace torvex
