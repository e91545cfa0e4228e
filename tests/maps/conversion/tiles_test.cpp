#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "maps/conversion/conversion_fixture.hpp"
#include "maps/conversion/read_tiles.hpp"
#include "maps/conversion/tile_grid.hpp"

namespace torvex {
namespace {

using test::stop_of;
using testing::HasSubstr;

AreaLimits point(double lon, double lat) {
    return {lon, lon, lat, lat};
}

TEST(TileGrid, NameAndBaseOfAPlace) {
    const TileRange range = tiles_of(point(139.767 * 60, 35.681 * 60));
    EXPECT_EQ(range.first.name(), "533946");
    EXPECT_EQ(range.last.name(), "533946");
    EXPECT_NEAR(range.first.base_lon(), 8385.0375, 1e-9);
    EXPECT_NEAR(range.first.base_lat(), 2140.025, 1e-9);
}

TEST(TileGrid, NeighboursCarryOverIntoTheNextSquare) {
    EXPECT_EQ((Tile{53 * 8 + 7, 39 * 8 + 7}.name()), "533977");
    EXPECT_EQ((Tile{53 * 8 + 8, 39 * 8 + 8}.name()), "544000");
    EXPECT_EQ((Tile{0, 0}.name()), "000000");
}

TEST(TileGrid, ASouthWestCornerBelongsToItsTile) {
    EXPECT_EQ(tiles_of(point(8385.0, 2140.0)).first.name(), "533946");
    EXPECT_EQ(tiles_of(point(8384.999, 2139.999)).first.name(), "533935");
}

TEST(TileGrid, ElsewhereOnTheEarthThereIsNoTile) {
    for (const AreaLimits& area :
         {point(-113 * 60, 43 * 60), point(139 * 60, -35 * 60), point(99.9 * 60, 35 * 60),
          point(200.1 * 60, 35 * 60), point(139 * 60, 66.7 * 60), point(NAN, 35 * 60)}) {
        const auto stopped = stop_of([&] { tiles_of(area); });
        ASSERT_TRUE(stopped);
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("TERRAIN_MODE = 2"));
    }
}

// Heights of a plane over the earth, in minutes.
double plane(double lon, double lat) {
    return 12.0 + 0.5 * (lon - 8380) - 0.25 * (lat - 2140);
}

class Tiles : public ::testing::Test {
 protected:
    Tiles() { std::filesystem::create_directory("db"); }

    void write(const Tile& tile, const std::string& text) const {
        directory.write("db/" + tile.name() + "_h.map", text);
    }
    void write_plane(const Tile& tile) const { write(tile, test::tile_text(tile, plane)); }
    TileRaster read(const AreaLimits& area, float sea = 0) {
        return read_tiles({"db", "_h.map", "elevation"}, area, sea, log);
    }

    test::WorkingDirectory directory;
    RunLog log;
    Tile sw{428, 318};
};

TEST_F(Tiles, APlaneIsMetAtEverySampleOfWholeTiles) {
    for (const int row : {428, 429}) {
        for (const int column : {318, 319}) {
            write_plane({row, column});
        }
    }
    // From inside the first tile to inside the last.
    const TileRaster tiles = read({8390, 8394, 2144, 2146});
    EXPECT_EQ(tiles.tiles, 4);
    EXPECT_EQ(tiles.missing, 0);
    const DegreeRaster& raster = tiles.raster;
    EXPECT_EQ(raster.datum, 2);
    EXPECT_EQ(raster.values.ni(), 200);
    EXPECT_EQ(raster.values.nj(), 200);
    EXPECT_NEAR(raster.base_lon, 8385.0375, 1e-9);
    EXPECT_NEAR(raster.base_lat, 2140.025, 1e-9);
    EXPECT_EQ(raster.d_lon, 0.075);
    EXPECT_EQ(raster.d_lat, 0.05);
    double worst = 0;
    for (int j = 1; j <= 200; ++j) {
        for (int i = 1; i <= 200; ++i) {
            worst = std::max(
                worst, std::abs(double{raster.values(i, j)} - plane(raster.lon(i), raster.lat(j))));
        }
    }
    EXPECT_LT(worst, 0.00051);  // three decimals in the tiles
}

TEST_F(Tiles, AMissingTileIsSea) {
    write_plane(sw);
    const TileRaster tiles = read({8390, 8394, 2144, 2144.5}, -7);
    EXPECT_EQ(tiles.tiles, 2);
    EXPECT_EQ(tiles.missing, 1);
    EXPECT_EQ(tiles.raster.values(101, 1), -7.0F);
    EXPECT_EQ(tiles.raster.values(200, 100), -7.0F);
    EXPECT_NE(tiles.raster.values(100, 100), -7.0F);
}

TEST_F(Tiles, AllMissingEndsTheConversion) {
    const auto stopped = stop_of([&] { read({8390, 8394, 2144, 2144.5}); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(stopped->what(), HasSubstr("none of the 2 elevation tiles is there"));
    EXPECT_THAT(stopped->what(), HasSubstr("533946_h.map to 533947_h.map"));
}

TEST_F(Tiles, AHeaderThatIsNotThatOfTheNameIsRefused) {
    const AreaLimits area{8390, 8390, 2144, 2144};
    const std::string good = test::tile_text(sw, plane);
    const auto with = [&good](const std::string& from, const std::string& to) {
        std::string text = good;
        text.replace(text.find(from), from.size(), to);
        return text;
    };
    ASSERT_NE(good.find("45.037500"), std::string::npos);
    for (const std::string& text :
         {with("45.037500", "45.038100"), with("40.025000", "40.024400"),
          with("d_lon = 0.075", "d_lon = 0.0751"), with("n_lon = 100", "n_lon = 99")}) {
        write(sw, text);
        const auto stopped = stop_of([&] { read(area); });
        ASSERT_TRUE(stopped);
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("db/533946_h.map"));
    }
    write(sw, with("45.037500", "45.037900"));  // within half a thousandth of a minute
    EXPECT_EQ(read(area).missing, 0);
}

TEST_F(Tiles, DatumsMustBeEqual) {
    write_plane(sw);
    write({428, 319}, test::tile_text({428, 319}, plane, "geodetic_system = 'TKY'\n"));
    const auto stopped = stop_of([&] { read({8390, 8394, 2144, 2144.5}); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(stopped->what(), HasSubstr("533947_h.map"));
    EXPECT_THAT(stopped->what(), HasSubstr("533946_h.map"));
}

TEST_F(Tiles, TheDatumOfTheFirstTileThatIsThereIsFound) {
    const TileSet set{"db", "_h.map", "elevation"};
    EXPECT_FALSE(datum_of_tiles(set, test::small_area(), log).has_value());
    write(sw, test::tile_text(sw, plane, "geodetic_system = 'TKY'\n"));
    EXPECT_EQ(datum_of_tiles(set, test::small_area(), log), 1);
}

TEST_F(Tiles, ATornTileNamesItsFile) {
    const std::string text = test::tile_text(sw, plane);
    write(sw, text.substr(0, text.size() / 2));
    const auto stopped = stop_of([&] { read({8390, 8390, 2144, 2144}); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 113);
    EXPECT_THAT(stopped->what(), HasSubstr("533946_h.map"));
}

}  // namespace
}  // namespace torvex
