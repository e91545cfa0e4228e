#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>

#include "base/edit.hpp"
#include "canopy/shape/shape_file.hpp"
#include "canopy/shape/shape_table.hpp"
#include "maps/conversion/conversion_fixture.hpp"
#include "maps/conversion/degree_raster.hpp"
#include "maps/map_file.hpp"
#include "prep/prep_fixture.hpp"
#include "run/run_fixture.hpp"

namespace torvex {
namespace {

namespace fs = std::filesystem;
using test::prep;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

double plane(double lon, double lat) {
    return 300.0 + 2.0 * (lon - 8388) - 3.0 * (lat - 2142);
}

// A database round 35 42 30 N, 139 48 45 E: nine tiles of a plane and of one land use.
class PrepMaps : public ::testing::Test {
 protected:
    PrepMaps() {
        fs::create_directory("db");
        for (const char* table : {"conv_table.tin", "cnpy_conv_table.tin"}) {
            fs::copy_file(std::string(TORVEX_EXAMPLES_DIR) + "/tables/" + table, table);
        }
        for (int row = 427; row <= 429; ++row) {
            for (int column = 317; column <= 319; ++column) {
                const Tile tile{row, column};
                directory.write("db/" + tile.name() + "_h.map", test::tile_text(tile, plane));
                directory.write("db/" + tile.name() + "_lu.map",
                                test::tile_text(tile, [](double, double) { return 14; }));
            }
        }
    }

    void write_settings(const std::string& extra = {}) const {
        directory.write("trdb2tvm.tin",
                        "&TRDB2TVM\n  DB_DR = 'db'\n"
                        "  CENT_LON = 139, 48, 45\n  CENT_LAT = 35, 42, 30\n"
                        "  WE_LENGTH = 400, NS_LENGTH = 400, MAX_DXY = 50\n  " +
                            extra + "\n/\n");
    }
    std::shared_ptr<const ParsedMap> map(const std::string& name) {
        return read_map_file(name, name == "roughness.map" ? basic_z0_role : basic_h_role, nullptr,
                             log);
    }
    // A forest in one rectangle of degrees, with the columns Z0, LU and H.
    void write_forest(double west, double south, double east, double north, double z0 = 0.5,
                      int luid = 5, double height = 12) const {
        ShapeWriter shapes;
        TableWriter table;
        shapes.create("forest.shp");
        table.create("forest.shp");
        table.add_double("Z0", 12, 6);
        table.add_integer("LU", 8);
        table.add_double("H", 12, 3);
        shapes.write_ring({west, west, east, east, west}, {south, north, north, south, south});
        table.write(0, 0, z0);
        table.write(0, 1, luid);
        table.write(0, 2, height);
    }
    void write_case(const std::string& lines) const {
        directory.write("torvex.tin",
                        "&shp_parameters\ntrdb2shp_fn = 'forest.shp'\n" + lines + "/\n");
    }
    // What went wrong, and that no map was begun.
    std::string failure(int status) {
        const auto done = prep({"maps"});
        EXPECT_EQ(done.status, status) << done.err;
        EXPECT_FALSE(directory.has("terrain.map"));
        EXPECT_FALSE(directory.has("roughness.map"));
        EXPECT_FALSE(directory.has("roughness_check_tvm.shp"));
        return done.err;
    }

    test::WorkingDirectory directory;
    RunLog log;
};

TEST_F(PrepMaps, TilesBecomeTheMapsOfTheArea) {
    write_settings();
    const auto done = prep({"maps"});
    ASSERT_EQ(done.status, 0) << done.err;
    EXPECT_TRUE(done.err.empty()) << done.err;
    // R = 1204.3 m: 0.65 minutes of latitude, within one tile.
    EXPECT_THAT(done.out, HasSubstr("the maps must reach    1164.3 m"));
    const auto h = map("terrain.map");
    EXPECT_EQ(h->header.columns, 100);
    EXPECT_EQ(h->header.rows, 100);
    EXPECT_EQ(h->header.datum, 2);
    double worst = 0;
    for (int j = 1; j <= 100; ++j) {
        for (int i = 1; i <= 100; ++i) {
            worst = std::max(
                worst, std::abs(double{(*h->values)(i, j)} -
                                plane(8385.0375 + 0.075 * (i - 1), 2140.025 + 0.05 * (j - 1))));
        }
    }
    EXPECT_LT(worst, 0.051);
    EXPECT_EQ((*map("roughness.map")->values)(50, 50), 0.03F);
    EXPECT_THAT(directory.read("torvex-prep.log"), HasSubstr(" wrote terrain.map: 100 x 100"));
}

TEST_F(PrepMaps, ARunAcceptsTheMapsInEveryDirection) {
    // Half a minute from the corner of four tiles.
    write_settings("CENT_LON = 139, 45, 20, CENT_LAT = 35, 40, 15");
    ASSERT_EQ(prep({"maps"}).status, 0);
    EXPECT_EQ(map("terrain.map")->header.columns, 200);
    directory.write("torvex.tin",
                    test::quick_case_text(
                        {{"NML_CASEFILE",
                          "BASIC_H_FILE = 'terrain.map', BASIC_Z0_FILE = 'roughness.map', "
                          "CENT_LON = 139, 45, 20, CENT_LAT = 35, 40, 15, N_WIND_DIRECTION = 8"}}));
    const auto ran = test::run_torvex_program({}, directory.path());
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.err, Not(HasSubstr("151")));
    EXPECT_THAT(directory.read("torvex.log"), Not(HasSubstr("151")));
}

TEST_F(PrepMaps, TheSettingsMayHaveAnotherNameAndPlace) {
    fs::create_directory("site");
    write_settings("DB_DR = '../db', ROUGHNESS_MODE = 0, BASIC_H_FILE = 'h.map'");
    fs::rename("trdb2tvm.tin", "site/my.tin");
    EXPECT_EQ(prep({"maps", "site/my.tin"}).status, 0);
    EXPECT_TRUE(directory.has("site/h.map"));
    EXPECT_FALSE(directory.has("site/roughness.map"));
}

TEST_F(PrepMaps, PicturesOfBothKinds) {
    write_settings(
        "BASIC_H_VISUALISE_TYPE = 1, BASIC_H_VISUALISE_FILE = 'h.grd', "
        "BASIC_Z0_VISUALISE_TYPE = 2, BASIC_Z0_VISUALISE_FILE = 'z0.ppm'");
    ASSERT_EQ(prep({"maps"}).status, 0);
    EXPECT_TRUE(directory.read("h.grd").starts_with("DSAA\n"));
    EXPECT_TRUE(directory.read("z0.ppm").starts_with("P6\n100 100\n255\n"));
}

TEST_F(PrepMaps, OnlyTheRoughness) {
    write_settings("ONLY_Z0C = T");
    ASSERT_EQ(prep({"maps"}).status, 0);
    EXPECT_FALSE(directory.has("terrain.map"));
    EXPECT_TRUE(directory.has("roughness.map"));
}

TEST_F(PrepMaps, MissingTilesAreSeaAndCounted) {
    fs::remove("db/533946_lu.map");
    fs::remove("db/533946_h.map");
    write_settings("CENT_LON = 139, 45, 20, CENT_LAT = 35, 40, 15");
    const auto done = prep({"maps"});
    ASSERT_EQ(done.status, 0);
    EXPECT_THAT(done.out, HasSubstr("elevation: 4 tiles, 1 of them missing"));
    EXPECT_THAT(done.out, HasSubstr("land-use: 4 tiles, 1 of them missing"));
    EXPECT_EQ((*map("roughness.map")->values)(150, 150), 0.0002F);
    EXPECT_EQ((*map("terrain.map")->values)(150, 150), 0.0F);
}

TEST_F(PrepMaps, BadInputIsToldAndLeavesNoHalfMap) {
    write_settings("WE_LENGHT = 3");
    EXPECT_THAT(failure(1), AllOf(HasSubstr("did you mean WE_LENGTH"), HasSubstr("line 6")));
    write_settings("TERRAIN_MODE = 7");
    EXPECT_THAT(failure(1), HasSubstr("TERRAIN_MODE is 7"));
    write_settings("DB_DR = 'nowhere'");
    EXPECT_THAT(failure(1), HasSubstr("tiles is there"));
    write_settings("TERRAIN_MODE = 2");
    EXPECT_THAT(failure(1), HasSubstr("db/index.txt"));
    write_settings("CENT_LON = 10, 0, 0");
    EXPECT_THAT(failure(1), HasSubstr("outside the grid of the tiles"));
    write_settings();
    const Tile tile{428, 318};
    directory.write("db/533946_lu.map", test::tile_text(tile, [](double, double) { return 77; }));
    EXPECT_THAT(failure(1), HasSubstr("without a row in the table: 77"));
    fs::remove("conv_table.tin");
    EXPECT_THAT(failure(1), HasSubstr("conv_table.tin not found."));
    fs::remove("trdb2tvm.tin");
    EXPECT_THAT(failure(1), HasSubstr("trdb2tvm.tin"));
    EXPECT_EQ(prep({"maps", "a.tin", "b.tin"}).status, 102);
}

TEST_F(PrepMaps, AMosaicOfGridsAnywhereOnTheEarth) {
    std::string text = "ncols 60\nnrows 60\nxllcorner -113.3\nyllcorner 43.2\ncellsize 0.01\n";
    for (int row = 0; row < 60; ++row) {
        for (int i = 0; i < 60; ++i) {
            const double lon = -113.3 + 0.01 * (i + 0.5);
            const double lat = 43.2 + 0.01 * (59.5 - row);
            text += edit::F(1500 + 1000 * (lon + 113) + 500 * (lat - 43.5), 12, 3);
        }
        text += '\n';
    }
    directory.write("db/a.asc", text);
    directory.write("db/index.txt", "a.asc\n");
    write_settings(
        "TERRAIN_MODE = 2, ROUGHNESS_MODE = 0, CENT_LON = -113, -1, -30, "
        "CENT_LAT = 43, 24, 3.6, D_LON = 0.1, D_LAT = 0.1");
    ASSERT_EQ(prep({"maps"}).status, 0);
    const auto h = map("terrain.map");
    const DegreeRaster raster = raster_of(h->header);
    EXPECT_LT(raster.base_lon, 0);
    for (int j = 1; j <= h->header.rows; ++j) {
        for (int i = 1; i <= h->header.columns; ++i) {
            ASSERT_NEAR(
                double{(*h->values)(i, j)},
                1500 + 1000 * (raster.lon(i) / 60 + 113) + 500 * (raster.lat(j) / 60 - 43.5), 0.06);
        }
    }
}

// The eastern edge of the wood goes through the samples of column 51 of the tile.
TEST_F(PrepMaps, AShapefileOverTheRaster) {
    const double edge = (8385.0375 + 50 * 0.075) / 60;
    write_forest(139, 35, edge, 36);
    write_case("trdb2shp%dbf_z0 = 'Z0'\n");
    write_settings("TERRAIN_MODE = 0, SHP_MODE = 1");
    const auto done = prep({"maps"});
    ASSERT_EQ(done.status, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr("Now Cliping Landuse Shapfile:forest.shp\n"));
    const std::shared_ptr<const ParsedMap> written = map("roughness.map");
    const Field2& z0 = *written->values;
    EXPECT_FLOAT_EQ(z0(50, 50), 0.5F);
    EXPECT_NEAR(double{z0(51, 50)}, 0.23158, 2e-4);
    EXPECT_FLOAT_EQ(z0(52, 50), 0.03F);
    EXPECT_FALSE(directory.has("roughness_check_tvm.shp"));
}

TEST_F(PrepMaps, AShapefileAloneTakesItsLandUseThroughTheTables) {
    write_forest(139, 35, 139.8125, 36);  // to the centre
    write_case("trdb2shp%dbf_luid = LU\n");
    write_settings("DB_DR = '', ONLY_Z0C = T, ROUGHNESS_MODE = 3, SHP_MODE = 2, Z0_DEFAULT = 0.01");
    const auto done = prep({"maps"});
    ASSERT_EQ(done.status, 0) << done.err;
    const auto map_read = map("roughness.map");
    const Field2& z0 = *map_read->values;
    EXPECT_FLOAT_EQ(map_read->header.spacing(1), 0.075F);
    EXPECT_FLOAT_EQ(z0(1, 1), 0.8F);
    EXPECT_FLOAT_EQ(z0(z0.ni(), 1), 0.01F);
    const int middle = (z0.ni() + 1) / 2;
    EXPECT_GT(z0(middle, 1), 0.01F);
    EXPECT_LT(z0(middle, 1), 0.8F);
    // The check file has a rectangle a sample with the roughness before and after.
    ShapeReader shapes;
    TableReader table;
    ASSERT_EQ(shapes.open("roughness_check_tvm.shp"), 0);
    ASSERT_EQ(table.open("roughness_check_tvm.shp"), 0);
    ShapeFileInfo info;
    shapes.info(info);
    EXPECT_EQ(info.count, z0.ni() * z0.nj());
    EXPECT_EQ(table.number(0, table.column("LandUseID")).value, 5);
    EXPECT_NEAR(table.number(0, table.column("Z0org")).value, 0.01, 1e-6);
    EXPECT_NEAR(table.number(0, table.column("RLS")).value, 0.8, 1e-6);
    EXPECT_EQ(table.number(info.count - 1, table.column("index_i")).value, z0.ni());
    EXPECT_EQ(table.number(info.count - 1, table.column("index_j")).value, z0.nj());
    // The samples lie evenly round the centre, the rectangles half a step round the samples.
    const double west = 139 * 60 + 48.75 - 0.5 * (z0.ni() - 1) * 0.075;
    const double south = 35 * 60 + 42.5 - 0.5 * (z0.nj() - 1) * 0.05;
    EXPECT_EQ(z0.ni() % 2, 1);
    EXPECT_EQ(z0.nj() % 2, 1);
    ShapeObject first;
    ASSERT_EQ(shapes.read(0, first), 0);
    EXPECT_NEAR(first.box.min_x * 60, west - 0.0375, 1e-6);
    EXPECT_NEAR(first.box.max_x * 60, west + 0.0375, 1e-6);
    EXPECT_NEAR(first.box.min_y * 60, south - 0.025, 1e-6);
    EXPECT_NEAR(first.box.max_y * 60, south + 0.025, 1e-6);
    ShapeObject last;
    ASSERT_EQ(shapes.read(info.count - 1, last), 0);
    EXPECT_NEAR(last.box.max_x * 60, west + (z0.ni() - 0.5) * 0.075, 1e-6);
    EXPECT_NEAR(last.box.max_y * 60, south + (z0.nj() - 0.5) * 0.05, 1e-6);
}

TEST_F(PrepMaps, PolygonsWithoutHeightCanBeLeftOut) {
    write_forest(139, 35, 140, 36, 0.5, 5, 0);
    write_case("trdb2shp%dbf_z0 = 'Z0'\ntrdb2shp%dbf_h = 'H'\n");
    write_settings("TERRAIN_MODE = 0, SHP_MODE = 1, IGNORE_ZERO_HEIGHT = T");
    ASSERT_EQ(prep({"maps"}).status, 0);
    EXPECT_FLOAT_EQ((*map("roughness.map")->values)(50, 50), 0.03F);
    write_settings("TERRAIN_MODE = 0, SHP_MODE = 1");
    ASSERT_EQ(prep({"maps"}).status, 0);
    EXPECT_FLOAT_EQ((*map("roughness.map")->values)(50, 50), 0.5F);
}

TEST_F(PrepMaps, TheCheckShowsHowHighTreesAndHousesAre) {
    write_forest(139, 35, 139.8125, 36);
    write_case("trdb2shp%dbf_z0 = 'Z0'\nsf_tree%filename = 'forest.shp'\nsf_tree%dbf_h = 'H'\n");
    write_settings("TERRAIN_MODE = 0, SHP_MODE = 2");
    const auto done = prep({"maps"});
    ASSERT_EQ(done.status, 0) << done.err;
    TableReader table;
    ASSERT_EQ(table.open("roughness_check_tvm.shp"), 0);
    EXPECT_EQ(table.number(0, table.column("Height")).value, 12);
    EXPECT_EQ(table.number(99, table.column("Height")).value, 0);
}

TEST_F(PrepMaps, ACoordinateSystemOfTheSettingsWinsOverThatOfTheFile) {
    write_forest(139, 35, 140, 36);
    write_case("trdb2shp%dbf_z0 = 'Z0'\ntrdb2shp%cs = 9\nshp_def_cs = 10\n");
    write_settings("TERRAIN_MODE = 0, SHP_MODE = 1, SHP_CS = 0");
    ASSERT_EQ(prep({"maps"}).status, 0);
    EXPECT_FLOAT_EQ((*map("roughness.map")->values)(50, 50), 0.5F);
    write_settings("TERRAIN_MODE = 0, SHP_MODE = 1");  // metres of zone 9: far away
    ASSERT_EQ(prep({"maps"}).status, 0);
    EXPECT_FLOAT_EQ((*map("roughness.map")->values)(50, 50), 0.03F);
    // Metres east and north of the centre: 200 m round it.
    write_forest(-200, -200, 200, 200);
    write_settings("TERRAIN_MODE = 0, SHP_MODE = 1, SHP_CS = -1");
    ASSERT_EQ(prep({"maps"}).status, 0);
    EXPECT_FLOAT_EQ((*map("roughness.map")->values)(50, 50), 0.5F);
    EXPECT_FLOAT_EQ((*map("roughness.map")->values)(54, 50), 0.03F);
}

TEST_F(PrepMaps, BadShapeInputIsToldAndLeavesNoHalfMap) {
    write_settings("SHP_MODE = 1");
    EXPECT_THAT(failure(1), HasSubstr("torvex.tin"));
    write_case("");
    EXPECT_THAT(failure(1), HasSubstr("trdb2shp%dbf_z0"));
    write_case("trdb2shp%dbf_z0 = 'Z0'\n");
    EXPECT_THAT(failure(1), HasSubstr("ERROR: Shape File Not Found."));
    write_forest(139, 35, 140, 36);
    fs::remove("forest.dbf");
    EXPECT_THAT(failure(1), HasSubstr("ERROR: DB File Not Found."));
    write_forest(139, 35, 140, 36);
    write_case("trdb2shp%dbf_z0 = 'ROUGH'\n");
    EXPECT_THAT(failure(1), HasSubstr("ERROR: DB File Field Not Found."));
    write_forest(139, 35, 140, 36, 0.0);
    write_case("trdb2shp%dbf_z0 = 'Z0'\n");
    EXPECT_THAT(failure(1), HasSubstr("entity 0 has no roughness above 0"));
    write_forest(1000, 2000, 3000, 4000);
    EXPECT_THAT(failure(1), HasSubstr("are no degrees"));
    write_settings("SHP_MODE = 1, SHP_CS = 77");
    EXPECT_THAT(failure(1), HasSubstr("SHP_CS"));
    write_settings("SHP_MODE = 1");
    write_forest(139, 35, 140, 36, 0.5, 99);
    write_case("trdb2shp%dbf_luid = 'LU'\n");
    EXPECT_THAT(failure(1), HasSubstr("without a row in the table: 99"));
}

TEST_F(PrepMaps, BufferZonesThatFollowTheGroundAreWarnedOf) {
    directory.write("torvex.tin", test::quick_case_text({{"NML_ER", "BOUNDARY_HEIGHT_MODE = 1"}}));
    write_settings("ROUGHNESS_MODE = 0");
    EXPECT_THAT(prep({"maps"}).err, HasSubstr("COEF_FROM_TORVEX_BASIC"));
    write_settings("ROUGHNESS_MODE = 0, COEF_FROM_TORVEX_BASIC = 6");
    EXPECT_EQ(prep({"maps"}).err, "");
}

}  // namespace
}  // namespace torvex
