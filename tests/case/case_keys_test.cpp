// Every key of the case file: its default, that it can be set, and that a value of the wrong kind
// is refused by name and line.

#include "case/case_keys.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "case/case_reading.hpp"
#include "case/typed_keys.hpp"
#include "support/case_text.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::ReadGroup;
using test::stop_of;
using ::testing::HasSubstr;

std::string group_text(const char* group, const std::string& item) {
    return "&" + std::string(group) + "\n  " + item + "\n/\n";
}

CaseSettings with(const char* group, const char* key, const std::string& value) {
    return ReadGroup(group, group_text(group, std::string(key) + " = " + value)).settings;
}

void expect_refused(const char* group, const char* key, const char* value,
                    const std::string& expected) {
    const std::string item = std::string(key) + " = " + value;
    const auto stopped = stop_of([&] { ReadGroup(group, group_text(group, item)); });
    ASSERT_TRUE(stopped) << item;
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(stopped->what(), HasSubstr("group &" + std::string(group) + ": key " + key));
    EXPECT_THAT(stopped->what(), HasSubstr("expected " + expected));
    EXPECT_THAT(stopped->what(), HasSubstr("\n  in case.tin, line 2"));
}

TEST(CaseKeys, ListOfTheTestAndTableOfTheProgramHaveTheSameKeys) {
    std::size_t in_table = 0;
    for (const CaseGroup& group : namelist_groups()) {
        in_table += group.keys.size();
    }
    const std::size_t in_test = test::real_keys().size() + test::integer_keys().size() +
                                test::logical_keys().size() + test::text_keys().size() +
                                test::list_keys().size() + 1;  // and SITE
    EXPECT_EQ(in_table, in_test);
}

TEST(CaseKeys, GroupsAndTheirMessagesStandInTheirOrder) {
    const std::vector<std::pair<std::string, std::string>> expected{
        {"NML_RUN", "- nml(run) was read."},
        {"NML_CASEFILE", "- nml(casefile) was read."},
        {"NML_MONITOR", "- nml(monitor) was read."},
        {"NML_ER", "- nml(er) was read."},
        {"NML_BOUNDARY_TREATMENT", "- nml(boundary_treatment) was read."},
        {"NML_NAVIER_STOKES", "- nml(navier_stokes) was read."},
        {"NML_NUMERICAL_SOLVER", "- nml(numerical_solver) was read."},
        {"NML_SITE", ""},
    };
    ASSERT_EQ(namelist_groups().size(), expected.size());
    for (std::size_t n = 0; n < expected.size(); ++n) {
        EXPECT_EQ(namelist_groups()[n].name, expected[n].first);
        EXPECT_EQ(namelist_groups()[n].message, expected[n].second);
    }
}

TEST(CaseKeys, EmptyGroupsGiveTheDefaults) {
    CaseSettings s;
    set_defaults(s);
    for (const auto& key : test::real_keys()) {
        EXPECT_EQ(s.*key.member, key.fallback) << key.name;
    }
    for (const auto& key : test::integer_keys()) {
        EXPECT_EQ(s.*key.member, key.fallback) << key.name;
    }
    for (const auto& key : test::logical_keys()) {
        EXPECT_EQ(s.*key.member, key.fallback) << key.name;
    }
    for (const auto& key : test::text_keys()) {
        EXPECT_EQ(s.*key.member, key.fallback) << key.name;
    }
    for (const auto& key : test::list_keys()) {
        for (int i = 1; i <= key.size; ++i) {
            ASSERT_EQ(key.element(s, i), key.fallback) << key.name << '(' << i << ')';
        }
    }
    ASSERT_EQ(s.SITE.size(), 1000U);
    EXPECT_EQ(s.SITE[999].LABEL, "");
    EXPECT_EQ(s.SITE[999].LON, Triple{});
}

TEST(CaseKeys, DefaultsReplaceWhatWasThere) {
    CaseSettings s = with("NML_RUN", "TERRAIN_MODE", "'flat'");
    s.SITE[3].LABEL = "mast";
    s.ELEVATION_CORRECTION_FACTOR.fill(7.0F);
    s.shape.fa_dirs = {1.0F};
    set_defaults(s);
    EXPECT_EQ(s.TERRAIN_MODE, "normal");
    EXPECT_EQ(s.SITE[3].LABEL, "");
    EXPECT_EQ(s.ELEVATION_CORRECTION_FACTOR(361), 1.0F);
    EXPECT_TRUE(s.shape.fa_dirs.empty());
}

TEST(CaseKeys, RealsCanBeSet) {
    for (const auto& key : test::real_keys()) {
        EXPECT_EQ(with(key.group, key.name, "-7.25").*key.member, -7.25F) << key.name;
        EXPECT_EQ(with(key.group, key.name, "7").*key.member, 7.0F) << key.name;
        expect_refused(key.group, key.name, "'7'", "a real number");
    }
}

TEST(CaseKeys, IntegersCanBeSet) {
    for (const auto& key : test::integer_keys()) {
        EXPECT_EQ(with(key.group, key.name, "-73").*key.member, -73) << key.name;
        expect_refused(key.group, key.name, "7.5", "an integer");
    }
}

TEST(CaseKeys, LogicalsCanBeSet) {
    for (const auto& key : test::logical_keys()) {
        EXPECT_TRUE(with(key.group, key.name, ".true.").*key.member) << key.name;
        EXPECT_FALSE(with(key.group, key.name, ".false.").*key.member) << key.name;
        expect_refused(key.group, key.name, "1", "a logical");
    }
}

TEST(CaseKeys, TextsCanBeSetUpToTheirLength) {
    for (const auto& key : test::text_keys()) {
        EXPECT_EQ(with(key.group, key.name, "'a b'").*key.member, "a b") << key.name;
        const std::string longest(key.length, 'x');
        EXPECT_EQ(with(key.group, key.name, "'" + longest + "'").*key.member, longest);
        EXPECT_EQ(with(key.group, key.name, "'" + longest + "  '").*key.member, longest);
        const std::string beyond = "'" + longest + "yz'";
        if (key.length == CaseKey::file_name_length) {
            expect_refused(key.group, key.name, beyond.c_str(), "a name of at most 256 characters");
        } else {
            EXPECT_EQ(with(key.group, key.name, beyond).*key.member, longest);
        }
        expect_refused(key.group, key.name, "unquoted", "a text in quotes");
    }
}

TEST(CaseKeys, ListsCanBeSetFromEndToEnd) {
    for (const auto& key : test::list_keys()) {
        const std::string count = std::to_string(key.size);
        const CaseSettings all = with(key.group, key.name, count + "*4");
        EXPECT_EQ(key.element(all, 1), 4.0) << key.name;
        EXPECT_EQ(key.element(all, key.size), 4.0) << key.name;
        const std::string last = std::string(key.name) + "(" + count + ")";
        const CaseSettings one = with(key.group, last.c_str(), "4");
        EXPECT_EQ(key.element(one, key.size), 4.0) << key.name;
        EXPECT_EQ(key.element(one, key.size - 1), key.fallback) << key.name;
        expect_refused(key.group, key.name, (count + "*4, 5").c_str(),
                       "at most " + count + " value(s)");
    }
}

// Keyed blocks

TEST(BlockKeys, DefaultsSwitchTheirPartsOff) {
    CaseSettings s;
    s.nest.nest_bc_ofix = false;
    s.nest.nest_mode = 3;
    s.canopy.canopy_mode = 1;
    s.shape.calc_fa = true;
    set_defaults(s);
    EXPECT_EQ(s.nest.nest_mode, 0);
    EXPECT_TRUE(s.nest.nest_bc_ofix);
    EXPECT_FALSE(s.shape.calc_fa);
    EXPECT_FALSE(s.shape.exclude_donut_shape);
    EXPECT_EQ(s.canopy.canopy_mode, 0);
    EXPECT_FALSE(s.canopy.modify_terrain);
}

TEST(BlockKeys, CanopyConstantsHaveTheirDefaults) {
    CaseSettings s;
    s.canopy = {};
    set_defaults(s);
    EXPECT_EQ(s.canopy.start_cal_src, 1);
    EXPECT_FALSE(s.canopy.src_included_model);
    EXPECT_EQ(s.canopy.beta_p, 1.0F);
    EXPECT_EQ(s.canopy.beta_d, 5.1F);
    EXPECT_EQ(s.canopy.cpe1, 0.9F);
    EXPECT_EQ(s.canopy.alphak1, 0.0F);
    EXPECT_EQ(s.canopy.alphak2, 1.0F);
    EXPECT_EQ(s.canopy.alphae1, 0.0F);
    EXPECT_EQ(s.canopy.alphae2, 0.9F);
    EXPECT_EQ(s.canopy.alphae3, 0.0F);
    EXPECT_EQ(s.canopy.alphae4, 0.9F);
    EXPECT_EQ(s.canopy.r1max, 0.0F);
    EXPECT_EQ(s.canopy.r2max, 0.0F);
}

std::vector<std::string> names_of(const char* block) {
    std::vector<std::string> names;
    for (const CaseKey& key : keyed_block(block).keys) {
        names.emplace_back(key.name);
    }
    return names;
}

TEST(BlockKeys, EachBlockHasItsKeys) {
    EXPECT_THAT(names_of("nest_points"),
                ::testing::UnorderedElementsAre(
                    "nest_mode", "nest_site%label", "nest_site%lon", "nest_site%lat",
                    "nest_site%n_x_div", "nest_site%n_y_div", "nest_site%c2xmax",
                    "nest_site%c2ymax", "nest_bc_distr", "nest_bc_ofix"));
    EXPECT_THAT(names_of("canopy_parameters"),
                ::testing::UnorderedElementsAreArray({"canopy_mode",
                                                      "start_cal_src",
                                                      "src_included_model",
                                                      "use_vegetation_layer",
                                                      "pm_tiny",
                                                      "cfp1",
                                                      "cfp2",
                                                      "magick",
                                                      "beta_p",
                                                      "beta_d",
                                                      "alphak1",
                                                      "alphak2",
                                                      "cpe1",
                                                      "cpe2",
                                                      "alphae1",
                                                      "alphae2",
                                                      "alphae3",
                                                      "alphae4",
                                                      "r1max",
                                                      "r2max",
                                                      "wt_floor_mode",
                                                      "wt_floor_z0",
                                                      "wt_floor_ttr",
                                                      "modify_terrain",
                                                      "modify_circle_range",
                                                      "use_z0_judge",
                                                      "use_ff_judge",
                                                      "output_log_shape_height"}));
    EXPECT_THAT(names_of("shp_parameters"),
                ::testing::UnorderedElementsAre("shp_def_cs", "shp_or_radius", "trdb2shp_fn",
                                                "calc_fa", "fa_ndir", "fa_read_dirs", "fa_dirs",
                                                "exclude_donut_shape"));
}

}  // namespace
}  // namespace torvex
