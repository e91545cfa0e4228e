// When the mass residual tells of a failure, and how many meshes a size asks for.

#include "solver/accelerated/trouble.hpp"

#include <gtest/gtest.h>

#include "solver/accelerated/acceleration.hpp"

namespace torvex {
namespace {

class Judging : public ::testing::Test {
 protected:
    // Tells residuals one behind the other, and what the last of them means.
    Trouble tell(std::initializer_list<float> residuals) {
        Trouble last = Trouble::none;
        for (const float r : residuals) {
            last = judge(course, ++seen, r);
        }
        return last;
    }
    Trouble tell(float residual, int times) {
        Trouble last = Trouble::none;
        for (int n = 0; n < times; ++n) {
            last = judge(course, ++seen, residual);
            if (last != Trouble::none) {
                break;
            }
        }
        return last;
    }

    Course course;
    int seen = 0;
};

TEST_F(Judging, TheFirstFourIterationsCountForNothing) {
    EXPECT_EQ(tell({0.001F, 10.0F, 0.5F, 90.0F}), Trouble::none);
    EXPECT_EQ(tell({1.0F}), Trouble::none);
    EXPECT_EQ(course.smallest, 1.0F) << "the 0.001 of the first one is forgotten";
    EXPECT_EQ(course.smallest_at, 5);
}

TEST_F(Judging, ARiseAboveFiveTimesTheSmallestIsTrouble) {
    EXPECT_EQ(tell({1, 1, 1, 1, 0.5F, 0.25F, 1.0F, 1.25F}), Trouble::none);
    EXPECT_EQ(tell({1.26F}), Trouble::rising);
}

TEST_F(Judging, ASmallerValueRaisesWhatIsTakenForARise) {
    EXPECT_EQ(tell({1, 1, 1, 1, 0.5F, 2.0F, 0.3F, 1.4F}), Trouble::none);
    EXPECT_EQ(tell({1.6F}), Trouble::rising);
}

TEST_F(Judging, FortyIterationsWithoutASmallerValueAreTrouble) {
    EXPECT_EQ(tell({1, 1, 1, 1, 0.01F}), Trouble::none);
    EXPECT_EQ(tell(0.011F, 39), Trouble::none);
    EXPECT_EQ(seen, 44);
    EXPECT_EQ(tell(0.011F, 1), Trouble::hanging);
}

TEST_F(Judging, ASmallerValueBeginsThePatienceAnew) {
    EXPECT_EQ(tell({1, 1, 1, 1, 0.01F}), Trouble::none);
    EXPECT_EQ(tell(0.011F, 39), Trouble::none);
    EXPECT_EQ(tell({0.0099F}), Trouble::none);
    EXPECT_EQ(tell(0.011F, 39), Trouble::none);
    EXPECT_EQ(tell(0.011F, 1), Trouble::hanging);
}

TEST_F(Judging, WhatRestsBelowATenThousandthDoesNotHang) {
    EXPECT_EQ(tell({1, 1, 1, 1, 0.00005F}), Trouble::none);
    EXPECT_EQ(tell(0.0001F, 200), Trouble::none);
    EXPECT_EQ(tell(0.00011F, 1), Trouble::hanging) << "it was the size alone that held it back";
}

// Cells of the meshes that the figures in docs are told for, the last three beyond a level each.
TEST(LevelsWanted, FollowTheSize) {
    EXPECT_EQ(levels_wanted(0, 1000), 2);
    EXPECT_EQ(levels_wanted(0, 57024), 2);
    EXPECT_EQ(levels_wanted(0, 302400), 2);
    EXPECT_EQ(levels_wanted(0, 319999), 2);
    EXPECT_EQ(levels_wanted(0, 320000), 3);
    EXPECT_EQ(levels_wanted(0, 1108080), 3);
    EXPECT_EQ(levels_wanted(0, 4.5e6), 4);
}

TEST(LevelsWanted, AreThoseOfTheCaseWhereItSaysSo) {
    for (const int levels : {1, 2, 3, 4}) {
        EXPECT_EQ(levels_wanted(levels, 1000), levels);
        EXPECT_EQ(levels_wanted(levels, 4.5e6), levels);
    }
}

}  // namespace
}  // namespace torvex
