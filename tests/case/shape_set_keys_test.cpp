#include "case/shape_set_keys.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "case/case_warnings.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using testing::HasSubstr;

CaseText block(const std::string& lines) {
    return {"case.tin", "&shp_parameters\n" + lines + "/\n"};
}

ShapeSet read(const std::string& lines) {
    RunLog log;
    return read_shape_set(block(lines), tree_set, log);
}

std::string refusal(const std::string& lines) {
    const auto stopped = test::stop_of([&] { read("sf_tree%filename = wood.shp\n" + lines); });
    return stopped && stopped->code() == 1 ? stopped->what() : "";
}

TEST(ShapeSetKeys, AllOfASet) {
    const ShapeSet set = read(
        "sf_build%filename = 'town.shp'\n"
        "sf_tree%filename = 'data/wood 1.shp'\nsf_tree%cs = 9\nsf_tree%dbf_h = H\n"
        "sf_tree%dbf_pd = 'PD'\nsf_tree%dbf_rls = L\nsf_tree%dbf_cf = CF\nsf_tree%scale = 0.3048\n"
        "sf_tree%dbf_z0 = Z\nsf_tree%dbf_z0org = ZO\nsf_tree%dbf_luid = USE\n"
        "sf_tree%data_type = 2\nsf_tree%height_unit = 0.01\nsf_tree%height_missing = 1\n"
        "sf_tree%uconv = 0.1\nsf_tree%height_missing_value = 12\nsf_tree%height_marker = -1\n"
        "sf_tree%n_mod_entity = 2\nsf_tree%mod_1 = 17, 12.5\nsf_tree%mod_2 = 0 3\n");
    EXPECT_EQ(set.name, "sf_tree");
    EXPECT_EQ(set.filename, "data/wood 1.shp");
    EXPECT_TRUE(set.cs_given);
    EXPECT_EQ(set.cs, 9);
    EXPECT_EQ(set.dbf_h, "H");
    EXPECT_EQ(set.dbf_pd, "PD");
    EXPECT_EQ(set.dbf_rls, "L");
    EXPECT_EQ(set.dbf_cf, "CF");
    EXPECT_EQ(set.dbf_z0, "Z");
    EXPECT_EQ(set.dbf_z0org, "ZO");
    EXPECT_EQ(set.dbf_luid, "USE");
    EXPECT_EQ(set.scale, 0.3048F);
    EXPECT_EQ(set.data_type, 2);
    EXPECT_EQ(set.height_unit, 0.01F);
    EXPECT_EQ(set.height_missing, 1);
    EXPECT_EQ(set.uconv, 0.1F);
    EXPECT_EQ(set.height_missing_value, 12.0F);
    EXPECT_EQ(set.height_marker, -1.0F);
    ASSERT_EQ(set.modified.size(), 2U);
    EXPECT_EQ(set.modified[0].entity, 17);
    EXPECT_EQ(set.modified[0].height, 12.5F);
    EXPECT_EQ(set.modified[1].entity, 0);
}

TEST(ShapeSetKeys, AbsentKeysTakeTheDefaultsOfTheTable) {
    const ShapeSet set = read("sf_tree%filename = wood.shp\n");
    EXPECT_FALSE(set.cs_given);
    EXPECT_EQ(set.dbf_h, "");
    for (const ShapeSetKey& key : shape_set_keys()) {
        ShapeSet fresh;
        const KeyTarget target = key.target(fresh);
        if (const auto* real = std::get_if<std::span<float>>(&target)) {
            EXPECT_EQ(std::to_string(static_cast<int>(real->front())), key.fallback) << key.suffix;
        }
    }
}

TEST(ShapeSetKeys, WithoutAFileNameTheSetIsOff) {
    EXPECT_EQ(read("").filename, "");
    EXPECT_EQ(read("sf_tree%filename = ''\n").filename, "");
    RunLog log;
    EXPECT_EQ(read_shape_set({"case.tin", ""}, tree_set, log).filename, "");
    EXPECT_EQ(log.kept(), "");
}

TEST(ShapeSetKeys, SetIsToldInTheLog) {
    RunLog log;
    read_shape_set(block("sf_tree%filename = wood.shp\nsf_tree%cs = 9\nsf_tree%dbf_pd = PD\n"
                         "sf_tree%dbf_rls = L\nsf_tree%dbf_cf = CF\n"),
                   tree_set, log);
    EXPECT_EQ(log.kept(),
              "SHP File:wood.shp\nCoordinate Sytem ID :9\n PackDen:PD\n Length:L\n Cf:CF\n");
}

TEST(ShapeSetKeys, ValuesThatCannotBeUsedNameTheirKey) {
    EXPECT_THAT(refusal("sf_tree%cs = nine\n"), HasSubstr("key sf_tree%cs"));
    EXPECT_THAT(refusal("sf_tree%scale = 0\n"), HasSubstr("key sf_tree%scale"));
    EXPECT_THAT(refusal("sf_tree%height_unit = -1\n"), HasSubstr("%height_unit"));
    EXPECT_THAT(refusal("sf_tree%uconv = 0\n"), HasSubstr("%uconv"));
    EXPECT_THAT(refusal("sf_tree%data_type = 3\n"), HasSubstr("%data_type"));
    EXPECT_THAT(refusal("sf_tree%height_missing = 2\n"), HasSubstr("%height_missing"));
    EXPECT_THAT(refusal("sf_tree%n_mod_entity = -1\n"), HasSubstr("%n_mod_entity"));
}

TEST(ShapeSetKeys, ModifiedHeightsMustAllBeThere) {
    EXPECT_THAT(refusal("sf_tree%n_mod_entity = 1\n"), HasSubstr("%mod_1"));
    for (const char* pair : {"17", "1.5, 3", "-1, 3", "2, -3", "x, 3"}) {
        EXPECT_THAT(
            refusal("sf_tree%n_mod_entity = 1\nsf_tree%mod_1 = " + std::string(pair) + "\n"),
            HasSubstr("%mod_1"))
            << pair;
    }
}

TEST(ShapeSetKeys, KeysOfSetsAreKnown) {
    EXPECT_TRUE(is_shape_set_key("sf_build%filename"));
    EXPECT_TRUE(is_shape_set_key("trdb2shp%dbf_luid"));
    EXPECT_TRUE(is_shape_set_key("sf_tree%mod_12"));
    for (const char* key : {"sf_tree", "sf_tree%", "sf_tree%files", "sf_house%filename",
                            "sf_tree%mod_", "sf_tree%mod_0", "%filename", ""}) {
        EXPECT_FALSE(is_shape_set_key(key)) << key;
    }
}

TEST(ShapeSetKeys, RunWarnsOfUnknownOnesAlone) {
    const auto warned_of = [](const std::string& lines) {
        RunLog log;
        testing::internal::CaptureStderr();
        warn_of_case(block(lines), CaseSettings{}, KeyLines{}, log);
        testing::internal::GetCapturedStderr();
        return log.kept();
    };
    EXPECT_THAT(warned_of("sf_tree%filename = wood.shp\nsf_tree%mod_1 = 3, 4\n"),
                testing::Not(HasSubstr("has no key")));
    EXPECT_THAT(warned_of("sf_tree%filenam = wood.shp\n"),
                HasSubstr("did you mean sf_tree%filename?"));
}

}  // namespace
}  // namespace torvex
