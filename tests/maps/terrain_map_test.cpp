#include "maps/terrain_map.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace torvex {
namespace {

// 4 columns by 3 rows, 10 m by 20 m, first point at (-15, -20); h = 1 + 2 i + 30 j + i j.
TerrainMap small_map() {
    auto values = std::make_shared<Field2>(4, 3);
    for (int j = 1; j <= 3; ++j) {
        for (int i = 1; i <= 4; ++i) {
            (*values)(i, j) = static_cast<float>(1 + 2 * i + 30 * j + i * j);
        }
    }
    TerrainMap map;
    map.values = values;
    map.columns = 4;
    map.rows = 3;
    map.dX = 10.0F;
    map.dY = 20.0F;
    map.X0 = -15.0F;
    map.Y0 = -20.0F;
    return map;
}

TEST(Locate, FindsTheCellAndThePlaceInIt) {
    const auto cell = locate(small_map(), -2.5F, 5.0F);
    ASSERT_TRUE(cell.has_value());
    EXPECT_EQ(cell->p, 1);
    EXPECT_EQ(cell->q, 1);
    EXPECT_FLOAT_EQ(cell->s, 0.25F);
    EXPECT_FLOAT_EQ(cell->t, 0.25F);
}

TEST(Locate, FirstColumnAndRowAreInsideAndLastOnesOutside) {
    const TerrainMap map = small_map();
    ASSERT_TRUE(locate(map, -15.0F, -20.0F).has_value());
    EXPECT_EQ(locate(map, -15.0F, -20.0F)->p, 0);
    EXPECT_EQ(locate(map, -15.0F, -20.0F)->s, 0.0F);
    EXPECT_FALSE(locate(map, -15.001F, -20.0F).has_value());
    EXPECT_FALSE(locate(map, -15.0F, -20.001F).has_value());
    EXPECT_FALSE(locate(map, 15.0F, 0.0F).has_value());
    EXPECT_FALSE(locate(map, 0.0F, 20.0F).has_value());
    ASSERT_TRUE(locate(map, 14.999F, 19.999F).has_value());
    EXPECT_EQ(locate(map, 14.999F, 19.999F)->p, 2);
    EXPECT_EQ(locate(map, 14.999F, 19.999F)->q, 1);
}

TEST(Locate, FarAndUndefinedPointsAreOutside) {
    const TerrainMap map = small_map();
    const float far = 3.0e38F;
    const float infinite = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float bad : {far, -far, infinite, -infinite, nan, 2.2e10F, -2.2e10F}) {
        EXPECT_FALSE(locate(map, bad, 0.0F).has_value()) << bad;
        EXPECT_FALSE(locate(map, 0.0F, bad).has_value()) << bad;
    }
    EXPECT_FALSE(locate(TerrainMap{}, 0.0F, 0.0F).has_value());
}

TEST(Locate, HugeCountsDoNotOverflow) {
    TerrainMap map = small_map();
    map.columns = std::numeric_limits<int>::max();
    map.dX = 1.0F;
    map.X0 = 0.0F;
    const float below = 2147483520.0F;  // largest real below 2^31
    ASSERT_TRUE(locate(map, below, 0.0F).has_value());
    EXPECT_EQ(locate(map, below, 0.0F)->p, 2147483520);
    EXPECT_FALSE(locate(map, 2147483648.0F, 0.0F).has_value());
}

TEST(BilinearValue, IsExactForAProductOfTheCoordinates) {
    const TerrainMap map = small_map();
    for (int m = 0; m < 24; ++m) {
        for (int n = 0; n < 16; ++n) {
            const float X = -15.0F + 1.25F * static_cast<float>(m);
            const float Y = -20.0F + 2.5F * static_cast<float>(n);
            const auto cell = locate(map, X, Y);
            ASSERT_TRUE(cell.has_value());
            const double i = 1.0 + (static_cast<double>(X) + 15.0) / 10.0;
            const double j = 1.0 + (static_cast<double>(Y) + 20.0) / 20.0;
            EXPECT_NEAR(static_cast<double>(bilinear_value(map, *cell)),
                        1.0 + 2.0 * i + 30.0 * j + i * j, 2.0e-5);
        }
    }
}

TEST(BilinearValue, TakesEachCornerExactly) {
    const TerrainMap map = small_map();
    const Field2& h = *map.values;
    EXPECT_EQ(bilinear_value(map, {.p = 1, .q = 0, .s = 0.0F, .t = 0.0F}), h(2, 1));
    EXPECT_EQ(bilinear_value(map, {.p = 1, .q = 0, .s = 1.0F, .t = 0.0F}), h(3, 1));
    EXPECT_EQ(bilinear_value(map, {.p = 1, .q = 0, .s = 1.0F, .t = 1.0F}), h(3, 2));
    EXPECT_EQ(bilinear_value(map, {.p = 1, .q = 0, .s = 0.0F, .t = 1.0F}), h(2, 2));
}

}  // namespace
}  // namespace torvex
