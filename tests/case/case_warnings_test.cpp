// What a case says that its author hardly means: each is told once, with its place, and what is
// fine is not told.

#include "case/case_warnings.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "case/case_blocks.hpp"
#include "case/case_reading.hpp"
#include "case/key_effects.hpp"
#include "support/case_text.hpp"

namespace torvex {
namespace {

using test::case_text;
using test::CaseItems;
using test::line_of;
using test::nest_block;
using test::ReadCase;
using test::without_dates;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

void read_keyed_blocks(ReadCase& c) {
    read_nest_points(c.file, c.settings, c.log);
    read_canopy_parameters(c.file, c.settings);
    read_shape_parameters(c.file, c.settings);
    read_user_domain(c.file, c.settings);
}

// Mixed signs

std::string warnings(const CaseItems& items, const std::string& behind = {}) {
    ReadCase c(case_text(items, behind));
    RunLog log;
    read_keyed_blocks(c);
    warn_of_case(c.file, c.settings, c.lines, log);
    return without_dates(log.kept());
}

TEST(MixedSigns, AreWarnedOfWithTheValueUnderstood) {
    const CaseItems items{{"NML_CASEFILE", "CENT_LON = -113, 1, 30"}};
    // -113*60 + 1 + 0.5 minutes are -112.975 degrees.
    EXPECT_EQ(warnings(items),
              "<date> (Warning) CENT_LON has members of different sign; understood as -112.975000 "
              "degrees (case.tin, line " +
                  std::to_string(line_of(case_text(items), "CENT_LON = -113")) + ").\n");
}

TEST(MixedSigns, OneSignAndZerosAreFine) {
    EXPECT_THAT(warnings({{"NML_CASEFILE", "CENT_LON = -113, -1, -30, CENT_LAT = 0, 0, -5"}}),
                IsEmpty());
    EXPECT_THAT(warnings({{"NML_CASEFILE", "CENT_LON = 113, 1, 30, CENT_LAT = 0, -3, 0"}}),
                IsEmpty());
}

TEST(MixedSigns, MonitorCountsOnlyWhereItIsGiven) {
    const std::string monitor = "MONITOR_LON = 139, 45, -1, MONITOR_LAT = 35, 30, -1";
    EXPECT_THAT(warnings({{"NML_MONITOR", monitor}}), Not(HasSubstr("different sign")));
    const std::string two = warnings({{"NML_MONITOR", monitor},
                                      {"NML_MONITOR", "MONITOR_POSITION = 1"},
                                      {"NML_MONITOR", "MONITOR_HEIGHT = 10"}});
    EXPECT_THAT(two, HasSubstr("MONITOR_LON has members of different sign"));
    EXPECT_THAT(two, HasSubstr("MONITOR_LAT has members of different sign"));
}

TEST(MixedSigns, SitesCountUpToTheirNumber) {
    const CaseItems items{{"NML_SITE", "SITE(1)%LON = 1, -1, 0"},
                          {"NML_SITE", "SITE(2)%LAT = -1, 1, 0"},
                          {"NML_SITE", "SITE(3)%LAT = -1, 1, 0"},
                          {"NML_SITE", "N_SITE = 2"}};
    const std::string text = warnings(items);
    EXPECT_THAT(text, HasSubstr("SITE(1)%LON has members of different sign"));
    EXPECT_THAT(text, HasSubstr("SITE(2)%LAT has members of different sign"));
    EXPECT_EQ(text.find("SITE(3)"), std::string::npos);
    EXPECT_THAT(text, HasSubstr("line " + std::to_string(line_of(case_text(items), "SITE(2)"))));
}

TEST(UnknownKeys, OfKeyedBlocksAreWarnedOfWithALikelyName) {
    const std::string block = "&canopy_parameters\n  canopy_mod = 1\n/\n";
    EXPECT_EQ(warnings({}, block),
              "<date> (Warning) case.tin, line " +
                  std::to_string(line_of(case_text({}, block), "canopy_mod")) +
                  ": block &canopy_parameters has no key \"canopy_mod\"; did you mean "
                  "canopy_mode?; the line is passed over.\n");
    EXPECT_THAT(warnings({}, "&user_domain\n Inlet = 1\n/\n"), HasSubstr("\"Inlet\""));
}

TEST(UnknownKeys, KnownKeysCommentsAndTextBesideTheBlocksAreFine) {
    EXPECT_THAT(warnings({},
                         "&canopy_parameters\n canopy_mode = 0 ! a = b\n ! c = 1\n"
                         " a remark\n\n/\nelsewhere = 3\n"),
                IsEmpty());
    EXPECT_THAT(warnings({}), IsEmpty());
    EXPECT_THAT(warnings({}, nest_block()), IsEmpty());
}

// Sets of shapes have their keys in the same block; a suffix that none has is still told.
TEST(UnknownKeys, KeysOfShapeSetsAreKnown) {
    EXPECT_THAT(warnings({},
                         "&shp_parameters\n sf_tree%filename = 'wood.shp'\n"
                         " sf_build%dbf_h = 'H'\n trdb2shp%cs = 9\n"
                         " sf_tree%mod_12 = 17, 12.5\n/\n"),
                IsEmpty());
    EXPECT_THAT(warnings({}, "&shp_parameters\n sf_tree%hight = 'H'\n/\n"),
                HasSubstr("has no key \"sf_tree%hight\""));
    EXPECT_THAT(warnings({}, "&shp_parameters\n sf_bush%filename = 'a'\n/\n"),
                HasSubstr("has no key \"sf_bush%filename\""));
}

TEST(UnknownGroups, AreToldWithALikelyName) {
    const std::string behind = "&canopy_parameter\n canopy_mode = 1\n/\n";
    EXPECT_EQ(warnings({}, behind),
              "<date> Warning: case.tin, line " +
                  std::to_string(line_of(case_text({}, behind), "&canopy_parameter")) +
                  ": no group or block has the name \"canopy_parameter\"; did you mean "
                  "canopy_parameters?; what it holds is passed over.\n");
    EXPECT_THAT(warnings({}, "  $nml_sites a = 1 $end\n"), HasSubstr("did you mean NML_SITE?"));
}

// A block is known by the head of its name, a group without regard to case.
TEST(UnknownGroups, KnownOnesAreNotTold) {
    EXPECT_THAT(warnings({}, "&canopy_parameters2\n canopy_mode = 0\n/\n"), IsEmpty());
    EXPECT_THAT(warnings({}, "&nml_site /\n"), IsEmpty());
    EXPECT_THAT(warnings({}, "a & b\n & c\n"), IsEmpty());
}

TEST(Angles, SixtyMinutesOrSecondsAreTold) {
    // 139 + 60/60 and 35 - 0 + 75.5/3600 degrees.
    EXPECT_THAT(warnings({{"NML_CASEFILE", "CENT_LON = 139, 60, 0"}}),
                HasSubstr("CENT_LON has 60 minutes or seconds, or more; understood as 140.000000 "
                          "degrees"));
    EXPECT_THAT(warnings({{"NML_CASEFILE", "CENT_LAT = 35, 0, 75.5"}}),
                HasSubstr("CENT_LAT has 60 minutes or seconds, or more; understood as 35.020972 "
                          "degrees"));
    EXPECT_THAT(warnings({{"NML_CASEFILE", "CENT_LON = -139, -59, -59.9"}}), IsEmpty());
}

TEST(Angles, MetresInPlaceOfDegreesAreTold) {
    EXPECT_THAT(warnings({{"NML_CASEFILE", "CENT_LAT = 4808050, 0, 0"}}),
                HasSubstr("CENT_LAT lies beyond 90 degrees; degrees, minutes and seconds are "
                          "expected, not metres; understood as 4808050.000000 degrees"));
    EXPECT_THAT(warnings({{"NML_SITE", "N_SITE = 1, SITE(1)%LON = 361, 0, 0"}}),
                HasSubstr("SITE(1)%LON lies beyond 360 degrees"));
    EXPECT_THAT(warnings({{"NML_CASEFILE", "CENT_LON = 359, 0, 0, CENT_LAT = -89, 0, 0"}}),
                IsEmpty());
}

TEST(Counts, ThatDisagreeWithTheirListsAreTold) {
    EXPECT_THAT(warnings({{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 2"},
                          {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 10, 20, 30"}}),
                HasSubstr("N_WIND_DIRECTION is 2, but WIND_DIRECTION_ANGLE goes up to 3"));
    EXPECT_THAT(warnings({{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 3"},
                          {"NML_CASEFILE", "WIND_DIRECTION_ANGLE(2) = 20, 30"}}),
                IsEmpty());
    EXPECT_THAT(warnings({{"NML_SITE", "N_SITE = 1, SITE(2)%LABEL = 'B'"}}),
                HasSubstr("N_SITE is 1, but SITE goes up to 2"));
    EXPECT_THAT(warnings({{"NML_SITE", "N_SITE = 2, SITE(2)%LABEL = 'B'"}}), IsEmpty());
}

TEST(Labels, OfTwoSitesThatAreEqualAreTold) {
    EXPECT_THAT(warnings({{"NML_SITE", "N_SITE = 3, SITE(1)%LABEL = 'A', SITE(2)%LABEL = 'B'"},
                          {"NML_SITE", "SITE(3)%LABEL = 'A'"}}),
                HasSubstr("sites 1 and 3 have the same label, \"A\"."));
}

TEST(IdleKeys, BehindASwitchThatIsOffAreTold) {
    const CaseItems items{{"NML_BOUNDARY_TREATMENT", "MAX_Z = 2000"}};
    EXPECT_EQ(warnings(items),
              "<date> Warning: MAX_Z has no effect: it acts with USE_DEFAULT_MAX_Z = F (case.tin, "
              "line " +
                  std::to_string(line_of(case_text(items), "MAX_Z")) + ").\n");
    EXPECT_THAT(warnings({{"NML_BOUNDARY_TREATMENT", "MAX_Z = 2000, USE_DEFAULT_MAX_Z = F"}}),
                IsEmpty());
    EXPECT_THAT(warnings({{"NML_ER", "EQUIVALENT_ROUGHNESS = 16*0.1"}}),
                HasSubstr("EQUIVALENT_ROUGHNESS has no effect"));
    EXPECT_THAT(warnings({}, "&canopy_parameters\n beta_d = 4\n/\n"),
                HasSubstr("beta_d has no effect: it acts with canopy_mode = 1"));
    EXPECT_THAT(warnings({}, "&canopy_parameters\n beta_d = 4\n canopy_mode = 1\n/\n"), IsEmpty());
}

TEST(IdleKeys, ThatNeverActAreToldInOneLine) {
    EXPECT_EQ(warnings({{"NML_NUMERICAL_SOLVER", "UNSTEADY_SOLVER = T, SIP_ALPHA = 0.5"}},
                       "&canopy_parameters\n magick = 1\n/\n"),
              "<date> Warning: accepted, but without effect in any case: UNSTEADY_SOLVER, "
              "SIP_ALPHA, magick.\n");
}

// Every row of the table names a key that there is, once.
TEST(KeyEffects, AreThoseOfKnownKeys) {
    std::set<std::string_view> known;
    for (const auto& list : {namelist_groups(), keyed_blocks()}) {
        for (const CaseGroup& group : list) {
            for (const CaseKey& key : group.keys) {
                known.insert(key.name);
            }
        }
    }
    std::set<std::string_view> seen;
    for (const KeyEffect& effect : key_effects()) {
        EXPECT_TRUE(known.contains(effect.key)) << effect.key;
        EXPECT_TRUE(seen.insert(effect.key).second) << effect.key;
        EXPECT_EQ(effect.never(), effect.condition.empty()) << effect.key;
    }
}

// Where the keys' fallbacks stand, a key behind a switch is idle: the switches are off by default.
TEST(KeyEffects, SwitchesAreOffInACaseThatSetsNone) {
    CaseSettings settings;
    set_defaults(settings);
    for (const std::string_view key :
         {"EQUIVALENT_ROUGHNESS", "MAX_Z", "WIND_TUNNEL_Z0", "INFLOW_PROFILE_FILE", "MONITOR_LON",
          "KL_CMU", "URFP_MAX", "beta_p", "xyz_file", "nest_site%lon", "FLAT_ROUGHNESS"}) {
        ASSERT_NE(effect_of(key), nullptr) << key;
        EXPECT_FALSE(effect_of(key)->acts(settings)) << key;
    }
    EXPECT_EQ(effect_of("MIN_DXY"), nullptr);
    EXPECT_TRUE(effect_of("KE_CMU")->acts(settings));
}

TEST(KeyEffects, KeysOfTheDensityFormNeedCanopyAndThatForm) {
    CaseSettings settings;
    set_defaults(settings);
    const KeyEffect* const effect = effect_of("alphak1");
    ASSERT_NE(effect, nullptr);
    for (const bool canopy : {false, true}) {
        for (const bool form : {false, true}) {
            settings.canopy.canopy_mode = canopy ? 1 : 0;
            settings.canopy.src_included_model = form;
            EXPECT_EQ(effect->acts(settings), canopy && form) << canopy << form;
        }
    }
}

// What wins over an equilibrium inflow is told with the line of the key.
TEST(EquilibriumInflow, GivesWayWithALine) {
    const auto told = [](const CaseItems& more, const std::string& behind = {}) {
        CaseItems items{{"NML_BOUNDARY_TREATMENT", "EQUILIBRIUM_INFLOW = T"}};
        items.insert(items.end(), more.begin(), more.end());
        return warnings(items, behind);
    };
    EXPECT_THAT(told({}), IsEmpty());
    EXPECT_THAT(told({{"NML_BOUNDARY_TREATMENT", "SPECIFY_INFLOW_PROFILE = T"}}),
                HasSubstr("EQUILIBRIUM_INFLOW gives way to the profile of INFLOW_PROFILE_FILE "
                          "(case.tin, line "));
    EXPECT_THAT(told({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 2"}}),
                HasSubstr("EQUILIBRIUM_INFLOW gives way to the k-l model"));
    EXPECT_THAT(told({}, nest_block()), HasSubstr("EQUILIBRIUM_INFLOW gives way to the parent"));
    EXPECT_THAT(warnings({{"NML_BOUNDARY_TREATMENT", "SPECIFY_INFLOW_PROFILE = T"},
                          {"NML_BOUNDARY_TREATMENT", "EQUILIBRIUM_INFLOW = F"}}),
                Not(HasSubstr("EQUILIBRIUM_INFLOW")));
}

}  // namespace
}  // namespace torvex
