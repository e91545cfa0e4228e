#include "mesh/tftb_height.hpp"

#include <gtest/gtest.h>

#include "mesh_cases.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::centred_map;
using test::console_of;
using test::stop_of;

TEST(MeanHeightBelowTop, AveragesTheCircleWithItsRim) {
    // Points every 100 m from -200 to 200; heights 10 on the axes' points at 200 m, 4 elsewhere.
    const TerrainMap map = centred_map(
        5, 5, 100.0F, [](double E, double N) { return E * E + N * N == 40000.0 ? 10.0 : 4.0; });
    // Within 200 m: 9 points of the inner square and the 4 on the rim.
    EXPECT_FLOAT_EQ(mean_height_below_top(map, 200.0F, 1000.0F),
                    1000.0F - (9.0F * 4.0F + 4.0F * 10.0F) / 13.0F);
    EXPECT_FLOAT_EQ(mean_height_below_top(map, 199.0F, 1000.0F), 996.0F);
    EXPECT_FLOAT_EQ(mean_height_below_top(map, 0.0F, 1000.0F), 996.0F);
}

TEST(MeanHeightBelowTop, IsTheTopWhereTheCircleHoldsNoPoint) {
    TerrainMap map = centred_map(5, 5, 100.0F, [](double, double) { return 4.0; });
    map.X0 = 5000.0F;
    EXPECT_EQ(mean_height_below_top(map, 300.0F, 1000.0F), 1000.0F);
}

class TftbHeight : public testing::Test {
 protected:
    TftbHeight() {
        directory.write("plateau.map",
                        "<TORVEX_MAP lon-lat>\n"
                        "n_lon = 3, n_lat = 3\nd_lon = 10.0, d_lat = 10.0\n"
                        "base_longitude = 138 50\nbase_latitude = 34 50\n--DATA--\n"
                        "900 900 900\n900 240 900\n900 900 900\n");
        settings.TERRAIN_MODE = "normal";
        settings.BASIC_H_FILE = directory.file("plateau.map");
        lines.MAX_Z = 1740.0F;
    }

    float height() { return tftb_height(settings, lines, maps, log); }

    test::TemporaryDirectory directory;
    CaseSettings settings = test::flat_case();
    MeshLines lines = test::even_lines(5, 5, 5, 100.0F);  // the corner is 1.8 km away
    MapState maps;
    RunLog log;
};

TEST_F(TftbHeight, IsTheMeanOverTheMapInsideTheMeshCorner) {
    // The middle point alone lies within 1.8 km; its neighbours are 15 and 18 km away.
    float mean = 0.0F;
    EXPECT_EQ(console_of([&] { mean = height(); }),
              std::vector<std::string>{"   - Reading terrain map to calculate TFTB height."});
    EXPECT_FLOAT_EQ(mean, 1500.0F);
}

TEST_F(TftbHeight, IsMaxZWhereThatIsGiven) {
    settings.USE_DEFAULT_MAX_Z = false;
    EXPECT_EQ(height(), 1740.0F);
}

TEST_F(TftbHeight, FlatRunWithoutAMapLiesOnTheDatum) {
    settings.TERRAIN_MODE = "flat";
    settings.BASIC_H_FILE = "";
    EXPECT_EQ(height(), 1740.0F);
}

TEST_F(TftbHeight, Stop111WithoutTheMap) {
    settings.BASIC_H_FILE = directory.file("none.map");
    EXPECT_EQ(stop_of([&] { height(); }).code(), 111);
}

}  // namespace
}  // namespace torvex
