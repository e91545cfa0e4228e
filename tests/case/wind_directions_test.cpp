// Angles of equal sectors and given ones, and the tags of file names.

#include "case/wind_directions.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace torvex {
namespace {

using ::testing::ElementsAre;

TEST(WindDirectionTag, IsTheFloorInTenths) {
    EXPECT_EQ(wd_tag_of(0.0F), "000_0");
    EXPECT_EQ(wd_tag_of(22.5F), "022_5");
    EXPECT_EQ(wd_tag_of(337.5F), "337_5");
    EXPECT_EQ(wd_tag_of(360.0F), "360_0");
    EXPECT_EQ(wd_tag_of(359.96F), "359_9");
    EXPECT_EQ(wd_tag_of(51.428571F), "051_4");
    EXPECT_EQ(wd_tag_of(0.09F), "000_0");
    EXPECT_EQ(wd_tag_of(9.99F), "009_9");
}

TEST(WindDirectionTag, RoundingOfTenthsDoesNotSlipBelow) {
    // Every tenth of a degree has the tag of its own digits, although most tenths have no exact
    // value.
    for (int tenths = 0; tenths <= 3600; ++tenths) {
        const float angle = static_cast<float>(tenths) / 10.0F;
        std::string digits = std::to_string(10000 + tenths).substr(1);
        digits.insert(3, "_");
        EXPECT_EQ(wd_tag_of(angle), digits);
    }
}

TEST(WindDirections, EqualSectorsBeginAtZero) {
    CaseSettings s;
    s.WD_TYPE = 0;
    s.N_WIND_DIRECTION = 16;
    s.WIND_DIRECTION_ANGLE.fill(77.0F);
    set_angles(s);
    for (int i = 1; i <= 16; ++i) {
        EXPECT_EQ(s.WIND_DIRECTION_ANGLE(i), 22.5F * static_cast<float>(i - 1));
    }
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(17), 77.0F);
    EXPECT_THAT(wd_tags(s), ElementsAre("000_0", "022_5", "045_0", "067_5", "090_0", "112_5",
                                        "135_0", "157_5", "180_0", "202_5", "225_0", "247_5",
                                        "270_0", "292_5", "315_0", "337_5"));
}

TEST(WindDirections, SectorsThatDoNotDivideTheCircle) {
    CaseSettings s;
    s.N_WIND_DIRECTION = 7;
    set_angles(s);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(2), 360.0F / 7.0F);
    EXPECT_THAT(wd_tags(s),
                ElementsAre("000_0", "051_4", "102_8", "154_2", "205_7", "257_1", "308_5"));
}

TEST(WindDirections, GivenAnglesStay) {
    CaseSettings s;
    s.WD_TYPE = 2;
    s.N_WIND_DIRECTION = 3;
    s.WIND_DIRECTION_ANGLE = {10.0F, 359.96F, 5.0F};
    set_angles(s);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(2), 359.96F);
    EXPECT_THAT(wd_tags(s), ElementsAre("010_0", "359_9", "005_0"));
}

TEST(WindDirections, NoneIsAnEmptyList) {
    CaseSettings s;
    s.N_WIND_DIRECTION = 0;
    set_angles(s);
    EXPECT_TRUE(wd_tags(s).empty());
}

TEST(WindDirections, UserDomainHasOneAtZero) {
    CaseSettings s;
    s.WD_TYPE = 1;
    s.N_WIND_DIRECTION = 3;
    s.WIND_DIRECTION_ANGLE.fill(45.0F);
    force_one_direction(s);
    EXPECT_EQ(s.N_WIND_DIRECTION, 1);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(1), 0.0F);
    EXPECT_EQ(s.WIND_DIRECTION_ANGLE(361), 0.0F);
    EXPECT_THAT(wd_tags(s), ElementsAre("000_0"));
}

}  // namespace
}  // namespace torvex
