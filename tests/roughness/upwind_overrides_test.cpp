#include "roughness/upwind_overrides.hpp"

#include <gmock/gmock.h>

#include <limits>
#include <string>

#include "roughness/roughness_cases.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class UpwindOverrides : public test::RoughnessTest {
 protected:
    float equivalent() {
        float z_up = 0.03F;
        take_equivalent_roughness(pass(), z_up);
        return z_up;
    }
    float taken_over() {
        float z_up = 0.03F;
        take_over_upwind_roughness(pass(), z_up);
        return z_up;
    }
    void files_of_earlier_runs() {
        directory.write("log-upwind_roughness-270_0", " 0.111\n");
        directory.write("atlas-log-upwind_roughness-270_0", " 0.222\n");
        directory.write("flat2-log-upwind_roughness-270_0", " 0.333\n");
    }
};

TEST_F(UpwindOverrides, EquivalentRoughnessIsThatOfTheDirection) {
    settings.EQUIVALENT_ROUGHNESS(1) = 0.4F;
    settings.EQUIVALENT_ROUGHNESS(2) = 25.0F;
    EXPECT_EQ(equivalent(), 0.03F);
    EXPECT_EQ(log.kept(), "");
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    EXPECT_EQ(equivalent(), 0.4F);
    iwd = 2;
    tag = "180_0";
    EXPECT_EQ(equivalent(), 25.0F);
    EXPECT_THAT(test::told(log),
                ElementsAre(" WD 270_0: Equivalent roughness,  0.4000E+00 (m) is used.",
                            " WD 180_0: Equivalent roughness,  0.2500E+02 (m) is used."));
}

TEST_F(UpwindOverrides, EquivalentRoughnessMustBeAboveZero) {
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    for (const float bad : {0.0F, -0.0F, -0.03F, std::numeric_limits<float>::quiet_NaN(),
                            std::numeric_limits<float>::infinity()}) {
        settings.EQUIVALENT_ROUGHNESS(1) = bad;
        const auto stopped = test::stop_of([this] { equivalent(); });
        ASSERT_TRUE(stopped) << bad;
        EXPECT_EQ(stopped->code(), 158);
        EXPECT_THAT(stopped->reason(), HasSubstr("EQUIVALENT_ROUGHNESS(1)"));
    }
    settings.EQUIVALENT_ROUGHNESS(1) = std::numeric_limits<float>::denorm_min();
    EXPECT_EQ(test::stop_code_of([this] { equivalent(); }), 0);
}

TEST_F(UpwindOverrides, EquivalentRoughnessReachesTheLastDirection) {
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    settings.EQUIVALENT_ROUGHNESS(360) = 0.7F;
    iwd = 360;
    EXPECT_EQ(equivalent(), 0.7F);
}

TEST_F(UpwindOverrides, PreviewTakesNothing) {
    iwd = preview_direction;
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    EXPECT_EQ(equivalent(), 0.03F);
    settings.ATLAS_FLAG = 1;
    EXPECT_EQ(taken_over(), 0.03F) << "and looks for no file";
    settings.MESO_DWS_MODE = true;
    settings.ATLAS_FLAG = 0;
    EXPECT_EQ(taken_over(), 0.03F);
    EXPECT_EQ(log.kept(), "");
}

TEST_F(UpwindOverrides, NormalRunLooksAtNoEarlierRun) {
    files_of_earlier_runs();
    for (const char* mode : {"normal", "flat", "flat22", "Flat2"}) {
        settings.TERRAIN_MODE = mode;
        EXPECT_EQ(taken_over(), 0.03F) << mode;
    }
    EXPECT_EQ(log.kept(), "");
}

TEST_F(UpwindOverrides, AtlasRunTakesOverFromTheNormalRun) {
    files_of_earlier_runs();
    settings.ATLAS_FLAG = 1;
    settings.run_prefix = "atlas-";
    EXPECT_EQ(taken_over(), 0.111F);
    EXPECT_THAT(test::told(log),
                ElementsAre(" WD 270_0: Atlas mode upwind roughness,  0.1110E+00 (m) is used."));
}

TEST_F(UpwindOverrides, SecondFlatRunTakesOverFromTheNormalRun) {
    files_of_earlier_runs();
    settings.TERRAIN_MODE = "flat2";
    settings.run_prefix = "flat2-";
    EXPECT_EQ(taken_over(), 0.111F);
    EXPECT_THAT(test::told(log),
                ElementsAre(" WD 270_0: Flat2 mode upwind roughness,  0.1110E+00 (m) is used."));
}

TEST_F(UpwindOverrides, MesoRunTakesOverFromTheAtlasRun) {
    files_of_earlier_runs();
    settings.MESO_DWS_MODE = true;
    for (const char* mode : {"normal", "flat2"}) {
        settings.TERRAIN_MODE = mode;
        log.discard();
        EXPECT_EQ(taken_over(), 0.222F);
        EXPECT_THAT(
            test::told(log),
            ElementsAre(" WD 270_0: Atlas mode upwind roughness,  0.2220E+00 (m) is used."));
    }
}

TEST_F(UpwindOverrides, AtlasRunInMesoModeTakesNothing) {
    files_of_earlier_runs();
    settings.MESO_DWS_MODE = true;
    settings.ATLAS_FLAG = 1;
    EXPECT_EQ(taken_over(), 0.03F);
    EXPECT_EQ(log.kept(), "");
}

TEST_F(UpwindOverrides, OnlyTheFlagOneMeansAtlas) {
    files_of_earlier_runs();
    settings.ATLAS_FLAG = 2;
    EXPECT_EQ(taken_over(), 0.03F);
}

TEST_F(UpwindOverrides, MissingFileOfTheEarlierRunStops) {
    const auto stop_in = [this](bool meso, std::int32_t atlas, const char* mode) {
        settings.MESO_DWS_MODE = meso;
        settings.ATLAS_FLAG = atlas;
        settings.TERRAIN_MODE = mode;
        return test::stop_of([this] { taken_over(); });
    };
    const auto atlas = stop_in(false, 1, "normal");
    ASSERT_TRUE(atlas);
    EXPECT_EQ(atlas->code(), 186);
    EXPECT_EQ(atlas->where(), "log-upwind_roughness-270_0");
    const auto flat2 = stop_in(false, 0, "flat2");
    ASSERT_TRUE(flat2);
    EXPECT_EQ(flat2->code(), 186);
    EXPECT_EQ(flat2->where(), "log-upwind_roughness-270_0");
    const auto meso = stop_in(true, 0, "normal");
    ASSERT_TRUE(meso);
    EXPECT_EQ(meso->code(), 186);
    EXPECT_EQ(meso->where(), "atlas-log-upwind_roughness-270_0");
    EXPECT_THAT(meso->fix(), HasSubstr("ATLAS_FLAG = 1"));
}

TEST_F(UpwindOverrides, FileOfAnotherDirectionIsNotTaken) {
    directory.write("log-upwind_roughness-090_0", "0.5\n");
    settings.ATLAS_FLAG = 1;
    EXPECT_EQ(test::stop_code_of([this] { taken_over(); }), 186);
}

TEST_F(UpwindOverrides, FileWithoutANumberStops) {
    directory.write("log-upwind_roughness-270_0", "nothing\n");
    settings.ATLAS_FLAG = 1;
    const auto stopped = test::stop_of([this] { taken_over(); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_EQ(stopped->where(), "log-upwind_roughness-270_0, line 1");
}

}  // namespace
}  // namespace torvex
