#include "roughness/calc_sbz_roughness2.hpp"

#include <gmock/gmock.h>

#include <cmath>
#include <string>

#include "roughness/calc_roughness1.hpp"
#include "roughness/roughness_cases.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

class CalcSbzRoughness2 : public test::RoughnessTest {
 protected:
    // A field as a canopy file brings it, ghosts included.
    CalcSbzRoughness2() : z0(lines.ni, lines.nj, 0.0002F) {
        for (int j = 1; j <= lines.nj; ++j) {
            for (int i = 1; i <= lines.ni; ++i) {
                z0(i, j) = 0.001F * std::pow(1.5F, static_cast<float>((5 * i + 3 * j) % 17));
            }
        }
        for (int i = 1; i <= lines.ni; ++i) {
            z0(i, 1) = z0(i, lines.nj) = 55.0F;
        }
    }
    void calc() { calc_sbz_roughness2(pass(), upwind, z0); }

    UpwindRoughness upwind;
    Field2 z0;
};

// The same strips and stamps as over a map with these values, one point for each cell centre of a
// mesh that is uniform for this once.
TEST_F(CalcSbzRoughness2, GivesWhatTheMapsWouldGive) {
    for (int i = 1; i <= lines.nx; ++i) {
        lines.x_line(i) = 100.0F * static_cast<float>(i - lines.i_centre);
    }
    for (int j = 1; j <= lines.ny; ++j) {
        lines.y_line(j) = 100.0F * static_cast<float>(j - lines.j_centre);
    }
    for (int i = 1; i <= lines.ni; ++i) {
        z0(i, 1) = z0(i, lines.nj) = 0.02F;
    }
    auto values = std::make_shared<Field2>(z0);
    DirectionMaps maps;
    maps.basic_z0.values = values;
    maps.basic_z0.columns = lines.ni;
    maps.basic_z0.rows = lines.nj;
    maps.basic_z0.dX = maps.basic_z0.dY = 100.0F;
    maps.basic_z0.X0 = lines.x_line(1) - 50.0F;
    maps.basic_z0.Y0 = lines.y_line(1) - 50.0F;
    const GridGeometry grid = test::centres_over(lines);
    Field2 from_maps;
    UpwindRoughness upwind_of_maps;
    calc_roughness1(pass(), maps, grid, upwind_of_maps, from_maps);
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            EXPECT_NEAR(z0(i, j) / from_maps(i, j), 1.0F, 1.0e-4F) << i << ", " << j;
        }
    }
    EXPECT_NEAR(upwind.z_up / upwind_of_maps.z_up, 1.0F, 1.0e-4F);
}

TEST_F(CalcSbzRoughness2, GhostsOfTheFileAreNotUsed) {
    const Field2 before = z0;
    calc();
    for (int i = 4; i <= 9; ++i) {
        EXPECT_EQ(z0(i, 1), z0(i, 2));
        EXPECT_EQ(z0(i, 10), z0(i, 9));
        EXPECT_LT(z0(i, 1), 1.0F);
        for (int j = 4; j <= 7; ++j) {
            EXPECT_EQ(z0(i, j), before(i, j)) << "cells between the zones stay";
        }
    }
    EXPECT_EQ(z0(12, 10), z0(11, 9));
}

TEST_F(CalcSbzRoughness2, NoGhostOfTheFileShowsAnywhere) {
    const Field2 given = z0;
    calc();
    const Field2 expected = z0;
    const std::string table = directory.read("calc_sbz_roughness2-270_0.tdt");
    z0 = given;
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            if (i == 1 || i == lines.ni || j == 1 || j == lines.nj) {
                z0(i, j) = 7.0F;
            }
        }
    }
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            EXPECT_EQ(z0(i, j), expected(i, j)) << i << ", " << j;
        }
    }
    EXPECT_EQ(directory.read("calc_sbz_roughness2-270_0.tdt"), table);
}

TEST_F(CalcSbzRoughness2, InflowPlaneCarriesTheUpwindRoughness) {
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        EXPECT_EQ(z0(1, j), upwind.z_up);
    }
}

TEST_F(CalcSbzRoughness2, FieldOfTheReaderDefaultIsUnchanged) {
    z0.fill(0.0002F);
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            EXPECT_NEAR(z0(i, j) / 0.0002F, 1.0F, 2.0e-6F);
        }
    }
}

TEST_F(CalcSbzRoughness2, WritesItsTableAndTheUpwindRoughness) {
    z0.fill(0.03F);
    settings.run_prefix = "flat2-";
    calc();
    EXPECT_THAT(files(), UnorderedElementsAre("calc_sbz_roughness2-270_0.tdt",
                                              "flat2-log-upwind_roughness-270_0"));
    EXPECT_THAT(directory.read("calc_sbz_roughness2-270_0.tdt"),
                StartsWith("     3.0000     3.0000"));
    EXPECT_THAT(test::told(log), ElementsAre(" WD 270_0: Default upwind z0 is  0.3000E-01 (m)"));
}

TEST_F(CalcSbzRoughness2, DirectionalAlphaDoesNotAct) {
    settings.USE_DIRECTIONAL_ALPHA = true;
    settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS(1) = 1;
    settings.alpha_direction = {0.0F, 360.2F};
    settings.alpha_value = {0.2F, 0.2F};
    z0.fill(0.03F);
    calc();
    EXPECT_NEAR(upwind.z_up, 0.03F, 1.0e-7F);
    EXPECT_EQ(upwind.alpha, 0.0F);
    EXPECT_FALSE(directory.has("alpha2z0_convergence-270_0.txt"));
}

TEST_F(CalcSbzRoughness2, OtherOverridesActInTheirOrder) {
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    EXPECT_EQ(test::stop_code_of([this] { calc(); }), 158);
    settings.EQUIVALENT_ROUGHNESS(1) = 0.7F;
    calc();
    EXPECT_EQ(upwind.z_up, 0.7F);
    settings.TERRAIN_MODE = "flat2";
    settings.run_prefix = "flat2-";
    directory.write("log-upwind_roughness-270_0", "0.6");
    calc();
    EXPECT_EQ(upwind.z_up, 0.6F);
    EXPECT_EQ(z0(1, 1), 0.6F);
    settings.MESO_DWS_MODE = true;
    EXPECT_EQ(test::stop_code_of([this] { calc(); }), 186);
}

TEST_F(CalcSbzRoughness2, NestedRunKeepsItsFieldAndLeavesNoUpwindFile) {
    settings.nest.nest_mode = 2;
    const Field2 before = z0;
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            EXPECT_EQ(z0(i, j), before(std::clamp(i, 2, lines.nx), std::clamp(j, 2, lines.ny)));
        }
    }
    EXPECT_THAT(files(), ElementsAre("calc_sbz_roughness2-270_0.tdt"));
    settings.USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = true;
    directory.write("log-upwind_roughness-270_0", "0.25\n");
    calc();
    EXPECT_EQ(z0(1, 1), 0.25F);
    EXPECT_EQ(z0(lines.nx, 3), 0.25F);
}

TEST_F(CalcSbzRoughness2, ConstantRoughnessEverywhere) {
    settings.USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = true;
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            EXPECT_NEAR(z0(i, j) / upwind.z_up, 1.0F, 2.0e-6F);
        }
    }
}

TEST_F(CalcSbzRoughness2, PreviewWritesNothing) {
    iwd = preview_direction;
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    calc();
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_EQ(log.kept(), "");
}

}  // namespace
}  // namespace torvex
