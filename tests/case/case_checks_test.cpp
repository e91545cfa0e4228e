// Limits that no run can go beyond: each is met from both sides, and its message names file, key,
// value and line. Angles with members of different sign are warned of.

#include "case/case_checks.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "case/case_blocks.hpp"
#include "case/case_reading.hpp"
#include "support/case_text.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::case_text;
using test::CaseItems;
using test::line_of;
using test::ReadCase;
using test::stop_of;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// The message that a case is refused with, blank if it is accepted.
std::string refusal(const CaseItems& items, const std::string& behind = {}) {
    ReadCase c(case_text(items, behind));
    read_nest_points(c.file, c.settings, c.log);
    const auto stopped = stop_of([&] { check_limits(c.file, c.settings, c.lines); });
    if (!stopped) {
        return {};
    }
    EXPECT_EQ(stopped->code(), 1);
    return stopped->what();
}

std::string at_line(const CaseItems& items, const std::string& what) {
    return "\n  in case.tin, line " + std::to_string(line_of(case_text(items), what));
}

CaseItems item(const std::string& group, const std::string& text) {
    return {{group, text}};
}

std::string given_angles(int count, const std::string& angles) {
    return "WD_TYPE = 1, N_WIND_DIRECTION = " + std::to_string(count) +
           ", WIND_DIRECTION_ANGLE = " + angles;
}

TEST(CaseChecks, PlainCasePasses) {
    EXPECT_THAT(refusal({}), IsEmpty());
}

TEST(CaseChecks, NumberOfDirections) {
    for (const char* good : {"0", "1", "360"}) {
        EXPECT_THAT(refusal(item("NML_CASEFILE", "N_WIND_DIRECTION = " + std::string(good))),
                    IsEmpty());
    }
    for (const char* bad : {"-1", "361", "2147483647"}) {
        const CaseItems items = item("NML_CASEFILE", "N_WIND_DIRECTION = " + std::string(bad));
        EXPECT_EQ(refusal(items), "key N_WIND_DIRECTION is " + std::string(bad) +
                                      ", expected 0 to 360" +
                                      at_line(items, "N_WIND_DIRECTION = " + std::string(bad)));
    }
}

TEST(CaseChecks, NumberOfSites) {
    EXPECT_THAT(refusal(item("NML_SITE", "N_SITE = 1000")), IsEmpty());
    for (const char* bad : {"-1", "1001"}) {
        const CaseItems items = item("NML_SITE", "N_SITE = " + std::string(bad));
        EXPECT_EQ(refusal(items), "key N_SITE is " + std::string(bad) + ", expected 0 to 1000" +
                                      at_line(items, "N_SITE"));
    }
}

TEST(CaseChecks, MonitorStepMustBeGiven) {
    EXPECT_THAT(refusal(item("NML_MONITOR", "MONITOR_STEP = 1")), IsEmpty());
    for (const char* bad : {"0", "-10"}) {
        const CaseItems items = item("NML_MONITOR", "MONITOR_STEP = " + std::string(bad));
        EXPECT_EQ(refusal(items), "key MONITOR_STEP is " + std::string(bad) +
                                      ", expected at least 1 (it has no default)" +
                                      at_line(items, "MONITOR_STEP = " + std::string(bad)));
    }
    ReadCase c(test::empty_groups());
    const auto stopped = stop_of([&] { check_limits(c.file, c.settings, c.lines); });
    ASSERT_TRUE(stopped);
    EXPECT_STREQ(stopped->what(),
                 "key MONITOR_STEP is 0, expected at least 1 (it has no default)\n  in case.tin");
}

TEST(CaseChecks, AnglesLieWithinTheCircle) {
    EXPECT_THAT(refusal(item("NML_CASEFILE", given_angles(2, "0, 360"))), IsEmpty());
    for (const char* bad : {"-0.1", "360.1", "1000000"}) {
        const CaseItems items = item("NML_CASEFILE", given_angles(2, "10, " + std::string(bad)));
        EXPECT_THAT(refusal(items),
                    HasSubstr("key WIND_DIRECTION_ANGLE(2) is " + std::string(bad)));
        EXPECT_THAT(refusal(items), HasSubstr("expected 0 to 360 degrees"));
        EXPECT_THAT(refusal(items), HasSubstr(at_line(items, "WIND_DIRECTION_ANGLE")));
    }
    EXPECT_THAT(refusal(item("NML_CASEFILE", given_angles(1, "10, -5"))), IsEmpty())
        << "angles behind the count are not used";
}

TEST(CaseChecks, GivenAnglesAreNotLookedAtInEqualSectors) {
    EXPECT_THAT(refusal(item("NML_CASEFILE", "WIND_DIRECTION_ANGLE = 400, -1")), IsEmpty());
}

TEST(CaseChecks, TagsDiffer) {
    EXPECT_THAT(refusal(item("NML_CASEFILE", given_angles(3, "22.5, 22.6, 22.4"))), IsEmpty());
    EXPECT_THAT(
        refusal(item("NML_CASEFILE", given_angles(3, "22.5, 10, 22.5"))),
        HasSubstr("key WIND_DIRECTION_ANGLE(3) is 22.5000000, expected an angle of its own: "
                  "another direction has the tag 022_5 too"));
    EXPECT_THAT(refusal(item("NML_CASEFILE", given_angles(2, "22.5, 22.58"))),
                HasSubstr("the tag 022_5"));
    EXPECT_THAT(refusal(item("NML_CASEFILE", given_angles(2, "0, 0.05"))),
                HasSubstr("the tag 000_0"));
}

TEST(CaseChecks, SpacingsAndLayerRatioAreAboveZero) {
    for (const char* key : {"MIN_DXY", "MIN_DZ", "MESH_VRATIO"}) {
        for (const char* bad : {"0", "-5"}) {
            const std::string text = std::string(key) + " = " + bad;
            const CaseItems items = item("NML_CASEFILE", text);
            EXPECT_THAT(refusal(items), HasSubstr("key " + std::string(key) + " is "));
            EXPECT_THAT(refusal(items), HasSubstr("expected a value above 0"));
            EXPECT_THAT(refusal(items), HasSubstr(at_line(items, text)));
        }
        EXPECT_THAT(refusal(item("NML_CASEFILE", std::string(key) + " = 1e-3")), IsEmpty());
    }
}

TEST(CaseChecks, WindTunnelNeedsARoughness) {
    const auto tunnel = [](const std::string& mode, const std::string& z0) {
        return refusal(item("NML_BOUNDARY_TREATMENT",
                            "WIND_TUNNEL_MODE = " + mode + ", WIND_TUNNEL_Z0 = " + z0));
    };
    EXPECT_THAT(tunnel("1", "0.001"), IsEmpty());
    EXPECT_THAT(tunnel("0", "0"), IsEmpty());
    EXPECT_THAT(tunnel("-1", "0"), IsEmpty());
    EXPECT_THAT(tunnel("1", "0"), HasSubstr("key WIND_TUNNEL_Z0 is "));
    EXPECT_THAT(tunnel("2", "-0.1"), HasSubstr("expected a value above 0"));
    EXPECT_THAT(refusal(item("NML_BOUNDARY_TREATMENT", "WIND_TUNNEL_MODE = 1")),
                HasSubstr("WIND_TUNNEL_Z0"));
}

TEST(CaseChecks, SlopeLimitMustBeAboveZeroWhereItActs) {
    const auto buffer = [](const std::string& mode, const std::string& gradient) {
        return refusal(item("NML_ER", "BOUNDARY_HEIGHT_MODE = " + mode +
                                          ", BUFFER_ZONE_SLOPE_GRADIENT = " + gradient));
    };
    EXPECT_THAT(buffer("1", "40"), IsEmpty());
    EXPECT_THAT(buffer("0", "0"), IsEmpty());
    EXPECT_THAT(buffer("1", "0"), HasSubstr("key BUFFER_ZONE_SLOPE_GRADIENT is "));
    EXPECT_THAT(buffer("1", "-1"), HasSubstr("expected a value above 0"));
}

TEST(CaseChecks, UserDomainBringsItsOwnMeshAndDirection) {
    CaseItems items = item("NML_RUN", "TORVEX_MODE = 1");
    items.emplace_back("NML_CASEFILE", "MIN_DXY = 0, MIN_DZ = 0, MESH_VRATIO = 0");
    items.emplace_back("NML_CASEFILE", given_angles(2, "500, 500"));
    EXPECT_THAT(refusal(items), IsEmpty());
}

TEST(CaseChecks, UserDomainCannotBeAChild) {
    EXPECT_THAT(refusal(item("NML_RUN", "TORVEX_MODE = 1"), test::nest_block()),
                HasSubstr("key TORVEX_MODE is 1, expected 0 in a nested run"));
}

// The files of flat and atlas runs carry a prefix, those of a parent do not.
TEST(CaseChecks, ParentOfANestedRunIsAPlainCase) {
    for (const char* mode : {"flat", "flat2"}) {
        const std::string key = "TERRAIN_MODE = '" + std::string(mode) + "'";
        EXPECT_THAT(
            refusal(item("NML_RUN", key), test::nest_block()),
            HasSubstr("key TERRAIN_MODE is '" + std::string(mode) + "', expected 'normal'"));
        EXPECT_THAT(refusal(item("NML_RUN", key)), IsEmpty());
    }
    EXPECT_THAT(refusal(item("NML_RUN", "ATLAS_FLAG = 1"), test::nest_block()),
                HasSubstr("key ATLAS_FLAG is 1, expected 0 in a nested run"));
    EXPECT_THAT(refusal(item("NML_RUN", "ATLAS_FLAG = 1")), IsEmpty());
    EXPECT_THAT(refusal({}, test::nest_block()), IsEmpty());
}

TEST(CaseChecks, ChoicesBetweenFewValuesTakeNoOther) {
    const auto refused = [](const std::string& key, const std::string& value) {
        const CaseItems items = item("NML_NUMERICAL_SOLVER", key + " = " + value);
        return refusal(items);
    };
    for (const auto& [key, most] : std::vector<std::pair<std::string, int>>{
             {"ACCEL", 1}, {"ACCEL_LEVELS", 4}, {"PRESSURE_SOLVER", 1}}) {
        EXPECT_THAT(refused(key, std::to_string(most)), IsEmpty());
        const std::string above = std::to_string(most + 1);
        EXPECT_THAT(refused(key, above), HasSubstr("key " + key + " is " + above +
                                                   ", expected 0 to " + std::to_string(most)));
        EXPECT_THAT(refused(key, "-1"), HasSubstr("key " + key + " is -1"));
    }
    EXPECT_THAT(refused("STOP_SITES", "0.005"), IsEmpty());
    EXPECT_THAT(refused("STOP_SITES", "1.0"), HasSubstr("a fraction, 0 to below 1"));
    EXPECT_THAT(refused("STOP_SITES", "-0.1"), HasSubstr("key STOP_SITES is"));
}

TEST(CaseChecks, SweepsBeyondTenThousandAreRefused) {
    for (const std::string key : {"NSWPU", "NSWPV", "NSWPW", "NSWPP", "NSWPK", "NSWPE"}) {
        EXPECT_THAT(refusal(item("NML_NUMERICAL_SOLVER", key + " = 10000")), IsEmpty());
        const CaseItems items = item("NML_NUMERICAL_SOLVER", key + " = 10001");
        EXPECT_EQ(refusal(items),
                  "key " + key + " is 10001, expected at most 10000" + at_line(items, "10001"));
    }
}

}  // namespace
}  // namespace torvex
