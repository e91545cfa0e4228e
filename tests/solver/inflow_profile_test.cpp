// The inflow profile file.

#include "solver/inflow_profile.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class InflowProfileFile : public testing::Test {
 protected:
    InflowProfile read(std::string_view text, bool table) {
        directory_.write("inflow.dat", text);
        return read_inflow_profile(settings(table));
    }
    InflowProfile read_table(std::string_view text) { return read(text, true); }
    InflowProfile read_tpd(std::string_view text) { return read(text, false); }

    CaseSettings settings(bool table) const {
        CaseSettings s;
        s.SPECIFY_INFLOW_PROFILE = true;
        s.INFLOW_PROFILE_FILE = directory_.file("inflow.dat");
        s.INFLOW_PROFILE_TABLE = table;
        return s;
    }

    // The reading ends with code 1, naming the line and, in its reason, these words.
    void expect_refused(std::string_view text, bool table, int line, const std::string& words) {
        SCOPED_TRACE(std::string(text));
        const auto stop = test::stop_of([&] { read(text, table); });
        ASSERT_TRUE(stop.has_value());
        EXPECT_EQ(stop->code(), 1);
        EXPECT_EQ(stop->where(), directory_.file("inflow.dat") + ", line " + std::to_string(line));
        EXPECT_THAT(stop->reason(), HasSubstr(words));
        EXPECT_FALSE(stop->fix().empty());
    }

    test::TemporaryDirectory directory_;
};

TEST_F(InflowProfileFile, IsATableBehindLinesOfText) {
    const InflowProfile profile = read_table(
        "mast 12, north side\n"
        "height   u      tke\n"
        "(m)     (m/s)  (m2/s2)\n"
        "\n"
        "  0.0    0.0    1.5\n"
        " 10.0    5.5    1.25   a remark\n"
        "1.0D2, 8.25, .75\n");
    EXPECT_THAT(profile.height, ElementsAre(0.0F, 10.0F, 100.0F));
    EXPECT_THAT(profile.u, ElementsAre(0.0F, 5.5F, 8.25F));
    EXPECT_THAT(profile.tke, ElementsAre(1.5F, 1.25F, 0.75F));
}

TEST_F(InflowProfileFile, TakesTablesWithoutHeaderWithCarriageReturnsAndMarks) {
    const InflowProfile profile = read_table("\xEF\xBB\xBF 5 4 1\r\n# half-way\r\n20 6 0.5");
    EXPECT_THAT(profile.height, ElementsAre(5.0F, 20.0F));
    EXPECT_THAT(profile.u, ElementsAre(4.0F, 6.0F));
    EXPECT_THAT(profile.tke, ElementsAre(1.0F, 0.5F));
}

TEST_F(InflowProfileFile, IsAProfileOfTheSiteOutput) {
    const InflowProfile profile = read_tpd(
        "           3\n"
        " z_agl u v w p tke ted z_asl\n"
        "  0.00000000E+00  0.00000000E+00  0.1E+00  0.2E+00  0.3E+00  0.12500000E+01  0.4E+00  "
        "0.50000000E+02\n"
        "  0.10000000E+02  0.55000000E+01  0.1E+00  0.2E+00  0.3E+00  0.12500000E+01  0.4E+00  "
        "0.60000000E+02\n"
        "  0.10000000E+03  0.82500000E+01  0.1E+00  0.2E+00  0.3E+00  0.75000000E+00  0.4E+00  "
        "0.15000000E+03\n"
        "what follows the last level\n");
    EXPECT_THAT(profile.height, ElementsAre(0.0F, 10.0F, 100.0F));
    EXPECT_THAT(profile.u, ElementsAre(0.0F, 5.5F, 8.25F));
    EXPECT_THAT(profile.tke, ElementsAre(1.25F, 1.25F, 0.75F));
}

TEST_F(InflowProfileFile, RefusesATableThatCannotBeUsed) {
    expect_refused("", true, 1, "no line begins with a number");
    expect_refused("height u tke\n\n(m)\n", true, 3, "no line begins with a number");
    expect_refused("h u tke\n10 5\n", true, 2, "fewer than 3 values");
    expect_refused("10 5 1\n20 6 x\n", true, 2, "cannot read \"x\"");
    expect_refused("10 5 1\n2O 6 1\n", true, 2, "cannot read \"2O\"");
    expect_refused("10 5 1\n20,,1\n", true, 2, "finite");
    expect_refused("10 5 1\n20 /\n", true, 2, "finite");
    expect_refused("10 5 1\n20 nan 1\n", true, 2, "finite");
    expect_refused("10 5 1\n20 5 inf\n", true, 2, "finite");
    expect_refused("10 5 1\n20 1e60 1\n", true, 2, "cannot read");
    expect_refused("10 5 -0.1\n", true, 1, "negative");
    expect_refused("10 5 1\n10 6 1\n", true, 2, "does not rise");
    expect_refused("10 5 1\n\n20 6 1\n15 6 1\n", true, 4, "does not rise");
    expect_refused(std::string("10 5 1\n2\0 5 1\n", 14), true, 2, "cannot read");
}

TEST_F(InflowProfileFile, RefusesAProfileThatCannotBeUsed) {
    const std::string head = "2\ntitles\n";
    const std::string level = "0 0 0 0 0 1 0 0\n";
    expect_refused("", false, 1, "number of levels");
    expect_refused("z_agl\n", false, 1, "number of levels");
    expect_refused("0\ntitles\n", false, 1, "above 0");
    expect_refused("-3\ntitles\n", false, 1, "above 0");
    expect_refused("99999999999\ntitles\n", false, 1, "cannot read");
    expect_refused("2147483647\ntitles\n" + level, false, 4, "ends before level 2");
    expect_refused(head, false, 3, "ends before level 1");
    expect_refused(head + level, false, 4, "ends before level 2 of 2");
    expect_refused(head + level + "5 1 0 0 0 1 0\n", false, 4, "fewer than 8 values");
    expect_refused(head + level + "5 1 0 **** 0 1 0 0\n", false, 4, "****");
    expect_refused(head + level + "5 nan 0 0 0 1 0 0\n", false, 4, "finite");
    expect_refused(head + level + "0 1 0 0 0 1 0 0\n", false, 4, "does not rise");
    expect_refused(head + level + "5 1 0 0 0 -1 0 0\n", false, 4, "negative");
}

// The two forms are not mistaken for each other.
TEST_F(InflowProfileFile, RefusesTheOtherForm) {
    expect_refused("2\ntitles\n0 0 0 0 0 1 0 0\n5 1 0 0 0 1 0 0\n", true, 1, "fewer than 3");
    expect_refused("h u tke\n10 5 1\n", false, 1, "number of levels");
    expect_refused("10 5 1\n20 6 1\n30 7 1\n", false, 3, "fewer than 8");
}

// Whatever the bytes: a profile that rises and is finite, or a stop with code 1.
TEST_F(InflowProfileFile, SurvivesRandomTexts) {
    std::mt19937 random(7);
    const std::string_view alphabet = "0123456789012345 \n\n  +-.,/*eE'x\"\t\r!";
    int read_well = 0;
    for (int n = 0; n < 200; ++n) {
        std::string text = n % 2 == 0 ? "3\n\n" : "";
        for (auto left = random() % 60; left > 0; --left) {
            text += alphabet[random() % alphabet.size()];
        }
        try {
            const InflowProfile profile = read(text, n % 4 < 2);
            ASSERT_FALSE(profile.height.empty());
            EXPECT_TRUE(std::is_sorted(profile.height.begin(), profile.height.end()));
            EXPECT_TRUE(std::isfinite(value_at(profile.u, place_in(profile, 10))));
            ++read_well;
        } catch (const Stop& stop) {
            EXPECT_EQ(stop.code(), 1);
        }
    }
    EXPECT_GT(read_well, 0);
}

TEST_F(InflowProfileFile, RefusesWhatIsNoReadableFile) {
    const auto expect_stop = [](const CaseSettings& s, const std::string& where) {
        const auto stop = test::stop_of([&] { read_inflow_profile(s); });
        ASSERT_TRUE(stop.has_value());
        EXPECT_EQ(stop->code(), 1);
        EXPECT_EQ(stop->where(), where);
        EXPECT_THAT(stop->fix(), HasSubstr("INFLOW_PROFILE_FILE"));
    };
    CaseSettings s = settings(true);
    expect_stop(s, s.INFLOW_PROFILE_FILE);  // absent
    s.INFLOW_PROFILE_FILE = directory_.path().string();
    expect_stop(s, s.INFLOW_PROFILE_FILE);  // a directory
    s.INFLOW_PROFILE_FILE = "";
    expect_stop(s, "INFLOW_PROFILE_FILE");
}

TEST(InflowProfile, IsLinearBetweenItsLevelsAndConstantOutside) {
    const InflowProfile profile{{10, 20, 40}, {4, 6, 5}, {1, 0.5F, 0}};
    const auto u = [&profile](float h) { return value_at(profile.u, place_in(profile, h)); };
    const auto tke = [&profile](float h) { return value_at(profile.tke, place_in(profile, h)); };
    EXPECT_EQ(u(-5), 4.0F);
    EXPECT_EQ(u(0), 4.0F);
    EXPECT_EQ(u(10), 4.0F);
    EXPECT_EQ(u(12.5F), 4.5F);
    EXPECT_EQ(u(20), 6.0F);
    EXPECT_EQ(u(25), 5.75F);
    EXPECT_EQ(u(40), 5.0F);
    EXPECT_EQ(u(1000), 5.0F);
    EXPECT_EQ(tke(15), 0.75F);
    EXPECT_EQ(tke(30), 0.25F);
    EXPECT_EQ(tke(41), 0.0F);
}

TEST(InflowProfile, OfOneLevelHoldsEverywhere) {
    const InflowProfile profile{{10}, {4}, {1}};
    for (const float h : {0.0F, 10.0F, 11.0F}) {
        EXPECT_EQ(value_at(profile.u, place_in(profile, h)), 4.0F);
    }
}

}  // namespace
}  // namespace torvex
