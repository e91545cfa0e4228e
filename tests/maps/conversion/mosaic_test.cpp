#include "maps/conversion/mosaic.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "maps/conversion/conversion_fixture.hpp"
#include "maps/conversion/esri_grid.hpp"
#include "roughness/roughness_mean.hpp"

namespace torvex {
namespace {

using test::stop_of;
using testing::HasSubstr;

constexpr float none = std::numeric_limits<float>::quiet_NaN();

DegreeRaster raster(double lon, double lat, double step, int columns, int rows,
                    const std::function<double(double, double)>& value) {
    DegreeRaster map;
    map.base_lon = lon;
    map.base_lat = lat;
    map.d_lon = map.d_lat = step;
    map.values.allocate(columns, rows);
    for (int j = 1; j <= rows; ++j) {
        for (int i = 1; i <= columns; ++i) {
            map.values(i, j) = static_cast<float>(value(map.lon(i), map.lat(j)));
        }
    }
    return map;
}

double plane(double lon, double lat) {
    return 100.0 + 3.0 * lon - 2.0 * lat;
}
std::function<double(double, double)> level(double value) {
    return [value](double, double) { return value; };
}

MosaicSources sources(std::vector<DegreeRaster> maps) {
    MosaicSources s;
    s.maps = std::move(maps);
    return s;
}

TEST(Mosaic, APlaneIsMetBetweenThePointsOfAMap) {
    const MosaicSources maps = sources({raster(0, 0, 1, 11, 11, plane)});
    const DegreeRaster map = mosaic(maps, {2.3, 7.7, 3.1, 8.9}, 0.25, 0.5, Quantity::elevation);
    // The first sample of the map plus whole steps, round the area.
    EXPECT_NEAR(map.base_lon, 2.25, 1e-12);
    EXPECT_NEAR(map.base_lat, 3.0, 1e-12);
    EXPECT_EQ(map.values.ni(), 23);  // to 7.75
    EXPECT_EQ(map.values.nj(), 13);  // to 9
    for (int j = 1; j <= map.values.nj(); ++j) {
        for (int i = 1; i <= map.values.ni(); ++i) {
            ASSERT_NEAR(double{map.values(i, j)}, plane(map.lon(i), map.lat(j)), 1e-4);
        }
    }
}

TEST(Mosaic, StepsOfZeroAreThoseOfTheFirstMap) {
    const MosaicSources maps = sources({raster(0.5, 0, 0.1, 101, 101, plane)});
    const DegreeRaster map = mosaic(maps, {2, 3, 2, 3}, 0, 0, Quantity::elevation);
    EXPECT_EQ(map.d_lon, 0.1);
    EXPECT_EQ(map.d_lat, 0.1);
    EXPECT_LE(map.base_lon, 2.0);
    EXPECT_GT(map.base_lon, 1.85);
    EXPECT_GE(map.lon(map.values.ni()), 3.0 - 1e-9);
}

TEST(Mosaic, TheFirstMapThatCoversAPlaceWins) {
    const MosaicSources maps =
        sources({raster(0, 0, 1, 6, 11, level(1)), raster(0, 0, 1, 11, 11, level(2))});
    const DegreeRaster map = mosaic(maps, {0, 10, 0, 10}, 0.5, 0.5, Quantity::elevation);
    EXPECT_EQ(map.values(1, 1), 1.0F);
    EXPECT_EQ(map.values(11, 5), 1.0F);  // on the last column of the first map
    EXPECT_EQ(map.values(12, 5), 2.0F);
}

TEST(Mosaic, APlaceBesideMissingDataIsLeftToTheNextMap) {
    DegreeRaster holed = raster(0, 0, 1, 11, 11, level(1));
    holed.values(6, 6) = none;  // at (5, 5)
    const MosaicSources maps = sources({holed, raster(-1, -1, 2, 8, 8, level(2))});
    const DegreeRaster map = mosaic(maps, {0, 10, 0, 10}, 0.5, 0.5, Quantity::elevation);
    EXPECT_EQ(map.values(11, 11), 2.0F);  // the missing point itself
    EXPECT_EQ(map.values(10, 10), 2.0F);  // one of four corners is missing
    EXPECT_EQ(map.values(12, 11), 2.0F);
    EXPECT_EQ(map.values(9, 11), 1.0F);  // on a point that is known
}

TEST(Mosaic, AShareWithoutCoverEndsTheConversion) {
    const MosaicSources maps = sources({raster(0, 0, 1, 6, 11, level(1))});
    const auto stopped = stop_of([&] { mosaic(maps, {0, 9, 0, 9}, 1, 1, Quantity::elevation); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    // First sample at 6 minutes = 0.1 degrees; four of ten columns.
    EXPECT_THAT(stopped->what(), HasSubstr("0.10000 degrees east"));
    EXPECT_THAT(stopped->what(), HasSubstr("0.00000 degrees north"));
    EXPECT_THAT(stopped->what(), HasSubstr("40.00 %"));
}

TEST(Mosaic, RoughnessIsBlendedAsDrag) {
    const MosaicSources maps =
        sources({raster(0, 0, 1, 3, 3, [](double lon, double) { return lon < 0.5 ? 0.03 : 0.5; })});
    const DegreeRaster map = mosaic(maps, {0, 1, 0, 1}, 0.5, 0.5, Quantity::roughness);
    EXPECT_FLOAT_EQ(map.values(1, 1), 0.03F);
    EXPECT_FLOAT_EQ(map.values(3, 1), 0.5F);
    // R(0.03) = 1/ln^2(333.3), R(0.5) = 1/ln^2(20); their mean is that of 0.1679... worked apart:
    const double mean = 0.5 / std::pow(std::log(10 / 0.03), 2) + 0.5 / std::pow(std::log(20.0), 2);
    EXPECT_NEAR(double{map.values(2, 1)}, 10.0 / std::exp(1.0 / std::sqrt(mean)), 1e-6);
}

TEST(Mosaic, TooManySamplesAreRefused) {
    const MosaicSources maps = sources({raster(0, 0, 1, 11, 11, plane)});
    EXPECT_EQ(test::stop_code_of([&] {
                  mosaic(maps, {0, 10, 0, 10}, 1e-9, 1e-9, Quantity::elevation);
              }),
              1);
}

class MosaicFiles : public ::testing::Test {
 protected:
    MosaicFiles() { std::filesystem::create_directories("db/sub"); }

    MosaicSources read(Quantity quantity = Quantity::elevation) {
        return read_mosaic_sources("db", "index.txt", quantity, log);
    }
    static std::string map(const std::string& extra = {}) {
        return "<TORVEX_MAP lon-lat>\nn_lon = 3, n_lat = 2, d_lon = 0.1, d_lat = 0.2\n"
               "base_longitude = 139 30.05\nbase_latitude = -35 -12.5\n" +
               extra + "--DATA--\n1 2 3\n4 5 6\n";
    }

    test::WorkingDirectory directory;
    RunLog log;
};

TEST_F(MosaicFiles, TheIndexNamesMapsAndGridsFromItsOwnDirectory) {
    directory.write("db/index.txt", "# heights\n\n a.map \nsub/b.asc\n");
    directory.write("db/a.map", map("geodetic_system = 'WGS'\n"));
    directory.write("db/sub/b.asc",
                    "ncols 2\nnrows 2\nxllcorner 139.5\nyllcorner 35\ncellsize 0.5\n1 2\n3 4\n");
    const MosaicSources s = read();
    ASSERT_EQ(s.maps.size(), 2U);
    EXPECT_EQ(s.datum, 3);
    // The decimal numbers of the file, not the singles nearest to them.
    EXPECT_DOUBLE_EQ(s.maps[0].d_lon, 0.1);
    EXPECT_DOUBLE_EQ(s.maps[0].base_lon, 139 * 60 + 30.05);
    EXPECT_DOUBLE_EQ(s.maps[0].base_lat, -35 * 60 - 12.5);
    EXPECT_EQ(s.maps[0].values(2, 2), 5.0F);
    EXPECT_DOUBLE_EQ(s.maps[1].base_lon, 139.75 * 60);
    EXPECT_DOUBLE_EQ(s.maps[1].base_lat, 35.25 * 60);
    EXPECT_EQ(s.maps[1].values(1, 1), 3.0F);  // rows come from the north
    EXPECT_EQ(s.maps[1].values(2, 2), 2.0F);
}

TEST_F(MosaicFiles, BadIndexesNameTheFile) {
    EXPECT_EQ(stop_of([&] { read(); })->code(), 1);
    directory.write("db/index.txt", "# nothing\n");
    EXPECT_THAT(stop_of([&] { read(); })->what(), HasSubstr("db/index.txt"));
    directory.write("db/index.txt", "absent.map\n");
    EXPECT_EQ(stop_of([&] { read(); })->code(), 111);
    EXPECT_EQ(stop_of([&] { read(Quantity::roughness); })->code(), 131);
    directory.write("db/index.txt", "a.map\nb.map\n");
    directory.write("db/a.map", map("geodetic_system = 'WGS'\n"));
    directory.write("db/b.map", map("geodetic_system = 'JGD'\n"));
    EXPECT_THAT(stop_of([&] { read(); })->what(), HasSubstr("db/b.map"));
}

TEST_F(MosaicFiles, AnEsriGrid) {
    directory.write(
        "a.asc",
        "NCOLS 3\r\nNROWS 2\r\nXLLCENTER 10.0\r\nYLLCENTER -5.5\r\nDX 0.5\r\nDY 0.25\r\n"
        "NODATA_value -1\r\n1 2 -1\r\n4 5\r\n6\r\n");
    const DegreeRaster map = read_esri_grid("a.asc", false);
    EXPECT_DOUBLE_EQ(map.base_lon, 600);
    EXPECT_DOUBLE_EQ(map.base_lat, -330);
    EXPECT_DOUBLE_EQ(map.d_lon, 30);
    EXPECT_DOUBLE_EQ(map.d_lat, 15);
    EXPECT_EQ(map.datum, 0);
    EXPECT_EQ(map.values(1, 1), 4.0F);
    EXPECT_EQ(map.values(3, 1), 6.0F);
    EXPECT_TRUE(std::isnan(map.values(3, 2)));
}

TEST_F(MosaicFiles, WithoutAMarkMinus9999IsNoData) {
    directory.write("a.asc",
                    "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 1\n-9999 1 1 1\n");
    EXPECT_TRUE(std::isnan(read_esri_grid("a.asc", true).values(1, 2)));
}

TEST_F(MosaicFiles, DamagedEsriGridsAreTold) {
    const std::string head = "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 1\n";
    const std::vector<std::string> damaged{
        "",
        "1 2 3\n",
        "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\n1 2\n3 4\n",
        "ncols 2\nnrows 2\nyllcorner 0\ncellsize 1\n1 2\n3 4\n",
        "ncols 2.5\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2\n3 4\n",
        "ncols 2000000000\nnrows 2000000000\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2\n3 4\n",
        "ncols two\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 1\n1 2\n3 4\n",
        "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize -1\n1 2\n3 4\n",
        head + "1 2\n3\n",
        head + "1 2\n3 x\n",
        head + "1 2\n0 4\n",  // no roughness
    };
    for (const std::string& text : damaged) {
        directory.write("a.asc", text);
        const auto stopped = stop_of([] { read_esri_grid("a.asc", true); });
        ASSERT_TRUE(stopped) << text;
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("a.asc")) << text;
    }
    EXPECT_EQ(test::stop_code_of([] { read_esri_grid("absent.asc", true); }), 1);
}

}  // namespace
}  // namespace torvex
