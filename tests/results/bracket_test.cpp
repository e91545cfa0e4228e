#include "results/bracket.hpp"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>

namespace torvex {
namespace {

Line1 line_of(std::initializer_list<float> values) {
    Line1 line(static_cast<int>(values.size()));
    int i = 0;
    for (const float value : values) {
        line(++i) = value;
    }
    return line;
}

TEST(Bracket, FindsTheIntervalThatHoldsItsLowerEnd) {
    const Line1 line = line_of({-3.0F, 0.0F, 1.0F, 10.0F});
    EXPECT_EQ(bracket(-3.0F, line), 1);
    EXPECT_EQ(bracket(-0.5F, line), 1);
    EXPECT_EQ(bracket(0.0F, line), 2);
    EXPECT_EQ(bracket(1.0F, line), 3);
    EXPECT_EQ(bracket(9.99F, line), 3);
}

TEST(Bracket, TheLastValueGivesTheLastIndexAndBeyondIsZero) {
    const Line1 line = line_of({-3.0F, 0.0F, 10.0F});
    EXPECT_EQ(bracket(10.0F, line), 3);
    EXPECT_EQ(bracket(10.1F, line), 0);
    EXPECT_EQ(bracket(-3.1F, line), 0);
    EXPECT_EQ(bracket(std::numeric_limits<float>::quiet_NaN(), line), 0);
}

TEST(Bracket, AListThatDoesNotRiseStrictlyIsRefused) {
    EXPECT_EQ(bracket(0.5F, line_of({0.0F, 1.0F, 1.0F, 2.0F})), -1);
    EXPECT_EQ(bracket(0.5F, line_of({0.0F, 2.0F, 1.0F})), -1);
    EXPECT_EQ(bracket(0.5F, line_of({0.0F, std::numeric_limits<float>::quiet_NaN(), 1.0F})), -1);
}

TEST(PlaceOn, TheLastValueIsTheUpperEndOfTheLastInterval) {
    const Line1 line = line_of({0.0F, 2.0F, 6.0F});
    EXPECT_EQ(place_on(3.0F, line).i, 2);
    EXPECT_FLOAT_EQ(place_on(3.0F, line).w, 0.25F);
    EXPECT_EQ(place_on(6.0F, line).i, 2);
    EXPECT_FLOAT_EQ(place_on(6.0F, line).w, 1.0F);
    EXPECT_FALSE(place_on(6.5F, line).inside());
    EXPECT_FALSE(place_on(1.0F, line_of({1.0F})).inside());
}

TEST(Bilinear, CornersGoRoundCounterClockwise) {
    // a at (0,0), b at (1,0), c at (1,1), d at (0,1)
    EXPECT_EQ(bilinear(0.0F, 0.0F, 1.0F, 2.0F, 3.0F, 4.0F), 1.0F);
    EXPECT_EQ(bilinear(1.0F, 0.0F, 1.0F, 2.0F, 3.0F, 4.0F), 2.0F);
    EXPECT_EQ(bilinear(1.0F, 1.0F, 1.0F, 2.0F, 3.0F, 4.0F), 3.0F);
    EXPECT_EQ(bilinear(0.0F, 1.0F, 1.0F, 2.0F, 3.0F, 4.0F), 4.0F);
    // 0.75*(0.25*3 + 0.75*4) + 0.25*(0.25*2 + 0.75*1)
    EXPECT_FLOAT_EQ(bilinear(0.25F, 0.75F, 1.0F, 2.0F, 3.0F, 4.0F), 3.125F);
}

}  // namespace
}  // namespace torvex
