#include "maps/conversion/conversion_settings.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "maps/conversion/conversion_fixture.hpp"

namespace torvex {
namespace {

using testing::HasSubstr;

TEST(ConversionSettings, DefaultsWithAnAreaAreEnough) {
    check_conversion_settings(test::small_area(), "trdb2tvm.tin");
    const ConversionSettings settings;
    EXPECT_EQ(settings.BASIC_H_FILE, "terrain.map");
    EXPECT_EQ(settings.BASIC_Z0_FILE, "roughness.map");
    EXPECT_TRUE(settings.writes_terrain());
    EXPECT_TRUE(settings.writes_roughness());
}

TEST(ConversionSettings, RefusesWhatItDoesNotKnow) {
    struct Wrong {
        std::string key;
        std::function<void(ConversionSettings&)> set;
    };
    const std::vector<Wrong> cases{
        {"OUTPUT_TYPE", [](auto& s) { s.OUTPUT_TYPE = 2; }},
        {"TERRAIN_MODE", [](auto& s) { s.TERRAIN_MODE = 3; }},
        {"TERRAIN_MODE", [](auto& s) { s.TERRAIN_MODE = -1; }},
        {"ROUGHNESS_MODE", [](auto& s) { s.ROUGHNESS_MODE = 4; }},
        {"SHP_MODE", [](auto& s) { s.SHP_MODE = 3; }},
        {"BASIC_H_VISUALISE_TYPE", [](auto& s) { s.BASIC_H_VISUALISE_TYPE = 3; }},
        {"BASIC_Z0_VISUALISE_TYPE", [](auto& s) { s.BASIC_Z0_VISUALISE_TYPE = 3; }},
        {"BASIC_H_VISUALISE_FILE", [](auto& s) { s.BASIC_H_VISUALISE_TYPE = 1; }},
        {"BASIC_Z0_VISUALISE_FILE", [](auto& s) { s.BASIC_Z0_VISUALISE_TYPE = 2; }},
        {"WE_LENGTH", [](auto& s) { s.WE_LENGTH = 0; }},
        {"NS_LENGTH", [](auto& s) { s.NS_LENGTH = -1; }},
        {"MAX_DXY", [](auto& s) { s.MAX_DXY = 0; }},
        {"Z0_DEFAULT", [](auto& s) { s.Z0_DEFAULT = 0; }},
        {"UP_BR", [](auto& s) { s.UP_BR = -0.1F; }},
        {"COEF_MAX_RAD", [](auto& s) { s.COEF_MAX_RAD = -1; }},
        {"D_LON", [](auto& s) { s.D_LON = -1; }},
        {"CENT_LAT",
         [](auto& s) {
             s.CENT_LAT = {91, 0, 0};
         }},
        {"CENT_LAT",
         [](auto& s) {
             s.CENT_LAT = s.CENT_LON = {0, 0, 0};
         }},
        {"DB_DR", [](auto& s) { s.DB_DR = " "; }},
        {"BASIC_H_FILE", [](auto& s) { s.BASIC_H_FILE = ""; }},
        {"BASIC_Z0_FILE", [](auto& s) { s.BASIC_Z0_FILE = ""; }},
        {"BASIC_Z0_FILE", [](auto& s) { s.BASIC_Z0_FILE = s.BASIC_H_FILE; }},
        {"ROUGHNESS_MODE 3", [](auto& s) { s.ROUGHNESS_MODE = 3; }},
        {"SHP_MODE",
         [](auto& s) {
             s.ROUGHNESS_MODE = 0;
             s.SHP_MODE = 1;
         }},
        {"no map to write",
         [](auto& s) {
             s.ROUGHNESS_MODE = 0;
             s.ONLY_Z0C = true;
         }},
    };
    for (const Wrong& wrong : cases) {
        ConversionSettings settings = test::small_area();
        wrong.set(settings);
        const auto stopped =
            test::stop_of([&] { check_conversion_settings(settings, "trdb2tvm.tin"); });
        ASSERT_TRUE(stopped) << wrong.key;
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr(wrong.key));
        EXPECT_THAT(stopped->what(), HasSubstr("trdb2tvm.tin"));
    }
}

TEST(ConversionSettings, AShapefileAloneNeedsNoDatabase) {
    ConversionSettings settings = test::small_area();
    settings.ROUGHNESS_MODE = roughness_source::shape;
    settings.SHP_MODE = 1;
    settings.ONLY_Z0C = true;
    settings.DB_DR = "";
    check_conversion_settings(settings, "trdb2tvm.tin");
    EXPECT_FALSE(settings.writes_terrain());
}

}  // namespace
}  // namespace torvex
