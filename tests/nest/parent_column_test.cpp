#include "nest/parent_column.hpp"

#include <gtest/gtest.h>

#include "nest/nest_case.hpp"

namespace torvex {
namespace {

using test::grid_over;
using test::line_of;

TEST(HeightMap, KeepsHeightsBelowAndMeetsAtTheTop) {
    const HeightMap map = height_map(100.0F, 1000.0F, 900.0F);
    EXPECT_EQ(map(0.0F), 0.0F);
    EXPECT_EQ(map(60.0F), 60.0F);
    EXPECT_EQ(map(100.0F), 100.0F);
    EXPECT_FLOAT_EQ(map(500.0F), 100.0F + 400.0F * 900.0F / 800.0F);
    EXPECT_FLOAT_EQ(map(900.0F), 1000.0F);
}

// Columns lower than twice CONSTANT_DZ_HEIGHT keep their lower half.
TEST(HeightMap, KeepsHalfOfTheLowerColumnAtMost) {
    EXPECT_EQ(height_map(100.0F, 150.0F, 900.0F).Hc, 75.0F);
    EXPECT_EQ(height_map(100.0F, 900.0F, 120.0F).Hc, 60.0F);
    EXPECT_FLOAT_EQ(height_map(100.0F, 150.0F, 900.0F)(900.0F), 150.0F);
}

TEST(HeightMap, EqualColumnsAreLeftAlone) {
    const HeightMap map = height_map(100.0F, 1200.0F, 1200.0F);
    for (const float h : {1.0F, 99.0F, 101.0F, 777.0F, 1200.0F}) {
        EXPECT_EQ(map(h), h);
    }
}

class ColumnLevels : public ::testing::Test {
 protected:
    // Centres of the cells at 5, 20 and 60 m above the ground of 40 m, the top at 90 m.
    GridGeometry g = [] {
        GridGeometry grid = grid_over(line_of({0, 10}), line_of({0, 10}), line_of({0, 10, 30, 90}));
        for (std::size_t n = 0; n < grid.zn.size(); ++n) {
            grid.zn.data()[n] += 40.0F;
        }
        XYZ2XYZC(grid);
        return grid;
    }();
    Field3 q = test::field_on(g, [](double, double, double h) { return 2.0 * h; });

    float value(float h) const { return value_at(q, 2, 2, level_at(g, 2, 2, h)); }
};

TEST_F(ColumnLevels, ValuesAreLinearBetweenCentres) {
    for (const float h : {5.0F, 12.0F, 20.0F, 33.0F, 60.0F, 75.0F, 90.0F}) {
        EXPECT_FLOAT_EQ(value(h), 2.0F * h);
        EXPECT_FALSE(level_at(g, 2, 2, h).below_first());
    }
}

TEST_F(ColumnLevels, FirstCentreStandsForWhatIsBelowIt) {
    const ColumnLevel at = level_at(g, 2, 2, 3.0F);
    EXPECT_TRUE(at.below_first());
    EXPECT_EQ(at.h, 3.0F);
    EXPECT_EQ(at.h_first, 5.0F);
    EXPECT_FLOAT_EQ(value(3.0F), 10.0F);
}

TEST_F(ColumnLevels, TopHoldsAboveIt) {
    EXPECT_FLOAT_EQ(value(95.0F), 180.0F);
}

}  // namespace
}  // namespace torvex
