#include "results/position_name.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace torvex {
namespace {

const Triple zero{0.0F, 0.0F, 0.0F};

TEST(PositionName, DegreesMinutesAndSecondsHaveTheirColumns) {
    const std::string name = position_name({35.0F, 5.0F, 2.5F}, {139.0F, 45.0F, 0.0F}, 0);
    EXPECT_EQ(name, "T350502_5000-1394500_0000");
    EXPECT_EQ(name.size(), 25U);
    EXPECT_EQ(position_name({5.0F, 0.0F, 9.25F}, {7.0F, 22.0F, 32.5F}, 0),
              "T050009_2500-0072232_5000");
    EXPECT_EQ(position_name(zero, zero, 0), "T000000_0000-0000000_0000");
}

TEST(PositionName, TheLetterFollowsTheDatum) {
    const char letters[] = {'T', 'T', 'J', 'W'};
    for (int datum = 0; datum <= 3; ++datum) {
        EXPECT_EQ(position_name(zero, zero, datum).front(), letters[datum]) << datum;
    }
}

TEST(PositionName, TheSignOfTheWholeAngleIsDropped) {
    const Triple lat{43.0F, 24.0F, 3.6F};
    EXPECT_EQ(position_name(lat, {-113.0F, -1.0F, -30.0F}, 3), "W432403_6000-1130130_0000");
    // 113 degrees less 1 minute 30 seconds: the members count as they stand
    EXPECT_EQ(position_name(lat, {-113.0F, 1.0F, 30.0F}, 3), "W432403_6000-1125830_0000");
    EXPECT_EQ(position_name({-43.0F, -24.0F, -3.6F}, {113.0F, 1.0F, 30.0F}, 3),
              "W432403_6000-1130130_0000");
}

TEST(PositionName, MembersBeyondTheirRangeAreCarriedOver) {
    // 10 deg 75 min 130 s = 11 deg 17 min 10 s; 20.5 deg 0.25 min = 20 deg 30 min 15 s
    EXPECT_EQ(position_name({10.0F, 75.0F, 130.0F}, {20.5F, 0.25F, 0.0F}, 0),
              "T111710_0000-0203015_0000");
}

TEST(PositionName, RoundingOfTheSecondsCarriesNothingOver) {
    EXPECT_EQ(position_name({35.0F, 5.0F, 59.99996F}, {139.0F, 59.0F, 59.99996F}, 0),
              "T350560_0000-1395960_0000");
}

TEST(PositionName, AnglesTooGreatForTheirFieldsShowStars) {
    EXPECT_EQ(position_name({100.0F, 1.0F, 2.0F}, {1000.0F, 1.0F, 2.0F}, 0),
              "T**0102_0000-***0102_0000");
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float absurd : {1.0e30F, std::numeric_limits<float>::infinity(), nan}) {
        EXPECT_EQ(position_name({absurd, 0.0F, 0.0F}, zero, 0).substr(0, 5), "T****") << absurd;
        EXPECT_EQ(position_name({absurd, 0.0F, 0.0F}, zero, 0).size(), 25U) << absurd;
    }
}

}  // namespace
}  // namespace torvex
