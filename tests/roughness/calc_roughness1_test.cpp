#include "roughness/calc_roughness1.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "roughness/roughness_cases.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::dx;
using test::dy;
using test::map_of;
using test::StripSum;
using test::uniform_map;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

// Two roughness lengths in fields whose borders run between cell centres, and split every strip.
double two_valued(double east, double north) {
    int borders = 0;
    for (const double border : {-700.0, -150.0, 300.0}) {
        borders += east < border ? 1 : 0;
    }
    for (const double border : {-300.0, 100.0, 300.0}) {
        borders += north < border ? 1 : 0;
    }
    return borders % 2 == 1 ? 0.03 : 0.5;
}

class CalcRoughness1 : public test::RoughnessTest {
 protected:
    CalcRoughness1() { maps.basic_z0 = map_of(two_valued, 1100.0F, 10.0F); }

    void calc() { calc_roughness1(pass(), maps, grid, upwind, z0); }

    // What the routine must give, in double precision and with the marks of uneven_lines() written
    // out: strips south j = 2, 3 and north j = 8, 9; upwind i = 2, 3; downwind i = 10, 11.
    struct Expected {
        std::array<std::array<double, 11>, 13> z0{};  // [i][j]
        double z_up = 0;
    };
    Expected expected() const {
        Expected e;
        auto& z = e.z0;
        for (int j = 2; j <= 9; ++j) {
            for (int i = 2; i <= 11; ++i) {
                at(z, i, j) = two_valued(static_cast<double>(grid.xc(i, j, 1)),
                                         static_cast<double>(grid.yc(i, j, 1)));
            }
        }
        for (int i = 2; i <= 11; ++i) {
            for (const int low : {2, 8}) {
                StripSum strip;
                strip.add(at(z, i, low), dx(lines, i) * dy(lines, low));
                strip.add(at(z, i, low + 1), dx(lines, i) * dy(lines, low + 1));
                at(z, i, low) = at(z, i, low + 1) = strip.mean(420.0 * dx(lines, i));
            }
        }
        StripSum zone;
        for (int j = 2; j <= 9; ++j) {
            zone.add(at(z, 2, j), 300.0 * dy(lines, j));
            zone.add(at(z, 3, j), 250.0 * dy(lines, j));
        }
        e.z_up = zone.mean(550.0 * 1200.0);
        for (int j = 2; j <= 9; ++j) {
            at(z, 2, j) = at(z, 3, j) = e.z_up;
            StripSum row;
            row.add(at(z, 10, j), 150.0);
            row.add(at(z, 11, j), 220.0);
            at(z, 10, j) = at(z, 11, j) = row.mean(370.0);
            at(z, 1, j) = at(z, 2, j);
            at(z, 12, j) = at(z, 11, j);
        }
        for (int i = 1; i <= 12; ++i) {
            at(z, i, 1) = at(z, i, 2);
            at(z, i, 10) = at(z, i, 9);
        }
        return e;
    }
    static double& at(std::array<std::array<double, 11>, 13>& z, int i, int j) {
        return z[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
    }
    void expect_field(Expected e) {
        ASSERT_EQ(z0.ni(), 12);
        ASSERT_EQ(z0.nj(), 10);
        for (int j = 1; j <= 10; ++j) {
            for (int i = 1; i <= 12; ++i) {
                EXPECT_NEAR(static_cast<double>(z0(i, j)) / at(e.z0, i, j), 1.0, 3.0e-6)
                    << i << ", " << j;
            }
        }
        EXPECT_NEAR(static_cast<double>(upwind.z_up) / e.z_up, 1.0, 3.0e-6);
    }
    void applicable_alpha(float alpha) {
        settings.USE_DIRECTIONAL_ALPHA = true;
        settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS(1) = 1;
        settings.alpha_direction = {0.0F, 360.0F + alpha};
        settings.alpha_value = {alpha, alpha};
    }

    DirectionMaps maps;
    GridGeometry grid = test::centres_over(lines);
    UpwindRoughness upwind;
    Field2 z0;
};

TEST_F(CalcRoughness1, UniformMapComesOutUnchanged) {
    for (const float value : {0.0002F, 0.03F, 0.5F, 2.0F}) {
        maps.basic_z0 = uniform_map(value);
        calc();
        for (int j = 1; j <= lines.nj; ++j) {
            for (int i = 1; i <= lines.ni; ++i) {
                EXPECT_NEAR(z0(i, j) / value, 1.0F, 3.0e-6F);
            }
        }
        EXPECT_NEAR(upwind.z_up / value, 1.0F, 3.0e-6F);
    }
}

TEST_F(CalcRoughness1, TwoValuedMapGivesTheMeansOfItsStrips) {
    // The borders split each strip in two values.
    const auto value = [this](int i, int j) {
        return two_valued(static_cast<double>(grid.xc(i, j, 1)),
                          static_cast<double>(grid.yc(i, j, 1)));
    };
    ASSERT_NE(value(2, 5), value(3, 5));
    ASSERT_NE(value(10, 5), value(11, 5));
    ASSERT_NE(value(5, 2), value(5, 3));
    ASSERT_NE(value(5, 8), value(5, 9));
    calc();
    expect_field(expected());
}

// Every cell as the map has it, ghosts like the cell beside them.
TEST_F(CalcRoughness1, NestedRunKeepsTheMapAndLeavesNoFile) {
    settings.nest.nest_mode = 1;
    settings.run_prefix = "nest-";
    calc();
    for (int j = 1; j <= 10; ++j) {
        for (int i = 1; i <= 12; ++i) {
            const int in = std::clamp(i, 2, 11);
            const int jn = std::clamp(j, 2, 9);
            const double there = two_valued(static_cast<double>(grid.xc(in, jn, 1)),
                                            static_cast<double>(grid.yc(in, jn, 1)));
            EXPECT_NEAR(static_cast<double>(z0(i, j)) / there, 1.0, 3.0e-6) << i << ", " << j;
        }
    }
    EXPECT_THAT(files(), ElementsAre("calc_roughness1-270_0.tdt"));
    EXPECT_EQ(log.kept(), "");
}

TEST_F(CalcRoughness1, NestedRunMayTakeTheParentsUpwindRoughnessEverywhere) {
    settings.nest.nest_mode = 1;
    settings.run_prefix = "nest-";
    settings.USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = true;
    EXPECT_EQ(test::stop_code_of([this] { calc(); }), 186);
    directory.write("log-upwind_roughness-270_0", "0.25\n");
    calc();
    for (std::size_t n = 0; n < z0.size(); ++n) {
        ASSERT_EQ(z0.data()[n], 0.25F);
    }
    EXPECT_THAT(log.kept(), ::testing::HasSubstr("The parent's upwind roughness,"));
}

TEST_F(CalcRoughness1, EarlierFieldOfAnyContentIsForgotten) {
    calc();
    const Field2 first = z0;
    z0.fill(5.0F);
    calc();
    for (std::size_t n = 0; n < first.size(); ++n) {
        ASSERT_EQ(first.data()[n], z0.data()[n]);
    }
    z0.allocate(2, 2, 5.0F);
    calc();
    ASSERT_EQ(z0.size(), first.size());
}

TEST_F(CalcRoughness1, InflowPlaneCarriesTheUpwindRoughness) {
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    settings.EQUIVALENT_ROUGHNESS(1) = 0.8F;
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        EXPECT_EQ(z0(1, j), 0.8F) << j;
        EXPECT_EQ(z0(2, j), 0.8F) << j;
        EXPECT_EQ(z0(3, j), 0.8F) << j;
    }
}

TEST_F(CalcRoughness1, LogTellsTheUpwindRoughness) {
    calc();
    char line[80];
    std::snprintf(line, sizeof line, " WD 270_0: Default upwind z0 is  0.%04.0fE+00 (m)",
                  expected().z_up * 1.0e4);
    EXPECT_THAT(test::told(log), ElementsAre(line));
}

TEST_F(CalcRoughness1, LeavesTheUpwindRoughnessAndATableOfTheFieldBeforeTheStamp) {
    maps.basic_z0 = uniform_map(0.03F);
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    settings.EQUIVALENT_ROUGHNESS(1) = 0.8F;
    calc();
    EXPECT_THAT(files(),
                UnorderedElementsAre("calc_roughness1-270_0.tdt", "log-upwind_roughness-270_0"));
    EXPECT_EQ(std::stof(directory.read("log-upwind_roughness-270_0")), 0.8F);
    std::string row;
    for (int i = 1; i <= 12; ++i) {
        row += "     3.0000";
    }
    std::string table;
    for (int j = 1; j <= 10; ++j) {
        table += row + '\n';
    }
    EXPECT_EQ(directory.read("calc_roughness1-270_0.tdt"), table);
}

TEST_F(CalcRoughness1, UpwindRoughnessFileCarriesThePrefixOfTheRun) {
    settings.TERRAIN_MODE = "flat";
    settings.FLAT_ROUGHNESS = 0.25F;
    settings.run_prefix = "flat-";
    calc();
    EXPECT_THAT(files(), UnorderedElementsAre("calc_roughness1-270_0.tdt",
                                              "flat-log-upwind_roughness-270_0"));
    EXPECT_NEAR(std::stod(directory.read("flat-log-upwind_roughness-270_0")), 0.25, 1.0e-6);
}

TEST_F(CalcRoughness1, FlatRunIsUniform) {
    settings.TERRAIN_MODE = "flat";
    settings.FLAT_ROUGHNESS = 0.02F;
    maps = {};
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            EXPECT_NEAR(z0(i, j), 0.02F, 6.0e-8F);
        }
    }
}

// Each of the overrides in the order in which they win.
TEST_F(CalcRoughness1, LaterOverrideWins) {
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    settings.EQUIVALENT_ROUGHNESS(1) = 0.8F;
    calc();
    EXPECT_EQ(upwind.z_up, 0.8F);

    directory.write("log-upwind_roughness-270_0", "0.4\n");
    settings.ATLAS_FLAG = 1;
    settings.run_prefix = "atlas-";
    calc();
    EXPECT_EQ(upwind.z_up, 0.4F);

    applicable_alpha(0.2F);
    log.discard();
    calc();
    EXPECT_NEAR(upwind.z_up, 0.1172758F, 1.0e-6F);
    EXPECT_EQ(z0(1, 5), upwind.z_up);
    const std::vector<std::string> lines_told = test::told(log);
    ASSERT_EQ(lines_told.size(), 7U);
    EXPECT_THAT(lines_told[0], ::testing::StartsWith(" WD 270_0: Default upwind z0 is "));
    EXPECT_EQ(lines_told[1], " WD 270_0: Equivalent roughness,  0.8000E+00 (m) is used.");
    EXPECT_EQ(lines_told[2], " WD 270_0: Atlas mode upwind roughness,  0.4000E+00 (m) is used.");
    EXPECT_EQ(lines_told[3], " WD 270_0: Interpolated directional alpha,  0.2000E+00 is used.");
    EXPECT_EQ(lines_told[4], " Bisectoin method is used to calculate z0");
    EXPECT_EQ(lines_told[5], "  0.1000E-03< z0 < 0.1000E+01  eps= 0.1000E-02 maxit=20");
    EXPECT_EQ(lines_told[6], " WD 270_0: Corresponding z0,  0.1173E+00 (m) is used.");
    EXPECT_NEAR(std::stod(directory.read("atlas-log-upwind_roughness-270_0")), 0.1172758, 1.0e-6);
}

TEST_F(CalcRoughness1, BadBracketKeepsTheOverrideBefore) {
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    settings.EQUIVALENT_ROUGHNESS(1) = 0.8F;
    applicable_alpha(0.2F);
    settings.DIRECTIONAL_ALPHA_Z0_MIN = 3.0F;
    calc();
    EXPECT_EQ(upwind.z_up, 0.8F);
}

TEST_F(CalcRoughness1, StopsOfTheOverridesComeThrough) {
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    EXPECT_EQ(test::stop_code_of([this] { calc(); }), 158);
    settings.EQUIVALENT_ROUGHNESS(1) = 0.1F;
    settings.ATLAS_FLAG = 1;
    EXPECT_EQ(test::stop_code_of([this] { calc(); }), 186);
    maps.basic_z0 = map_of(two_valued, 100.0F, 10.0F);
    EXPECT_EQ(test::stop_code_of([this] { calc(); }), 151);
}

// One case after the other in one directory, as the modes are meant to be used.
TEST_F(CalcRoughness1, RunsOfOneDirectoryTakeOverFromEachOther) {
    calc();
    const float normal = upwind.z_up;

    maps.basic_z0 = uniform_map(1.3F);
    settings.ATLAS_FLAG = 1;
    settings.run_prefix = "atlas-";
    calc();
    EXPECT_EQ(upwind.z_up, normal) << "atlas, whatever its own map says";
    EXPECT_EQ(z0(1, 1), normal);
    EXPECT_NEAR(z0(6, 5), 1.3F, 3.0e-6F);

    settings.ATLAS_FLAG = 0;
    settings.TERRAIN_MODE = "flat2";
    settings.run_prefix = "flat2-";
    calc();
    EXPECT_EQ(upwind.z_up, normal) << "flat2";

    // The atlas run is repeated with a roughness of its own, which a meso run then takes.
    settings.TERRAIN_MODE = "normal";
    settings.ATLAS_FLAG = 1;
    settings.run_prefix = "atlas-";
    settings.MESO_DWS_MODE = true;
    calc();
    EXPECT_NEAR(upwind.z_up, 1.3F, 4.0e-6F);
    const float atlas = upwind.z_up;
    settings.ATLAS_FLAG = 0;
    settings.run_prefix = "";
    maps.basic_z0 = uniform_map(0.01F);
    calc();
    EXPECT_EQ(upwind.z_up, atlas) << "meso";
    EXPECT_NEAR(z0(6, 5), 0.01F, 3.0e-8F);
    EXPECT_EQ(std::stof(directory.read("log-upwind_roughness-270_0")), atlas);
}

TEST_F(CalcRoughness1, ConstantRoughnessInTheAdditionalZone) {
    calc();
    const Field2 usual = z0;
    settings.USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN = true;
    calc();
    for (int j = 2; j <= lines.ny; ++j) {
        for (int i = 2; i <= lines.nx; ++i) {
            EXPECT_EQ(z0(i, j), i <= 5 ? upwind.z_up : usual(i, j)) << i << ", " << j;
        }
    }
}

TEST_F(CalcRoughness1, ConstantRoughnessEverywhereReachesTheGhostsAndTheDownwindStrip) {
    settings.USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = true;
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            EXPECT_NEAR(z0(i, j) / upwind.z_up, 1.0F, 2.0e-6F) << i << ", " << j;
        }
    }
    // The downwind strip is a mean all the same: it shows where the stamp exceeds what means allow.
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    settings.EQUIVALENT_ROUGHNESS(1) = 20.0F;
    calc();
    EXPECT_EQ(z0(6, 5), 20.0F);
    EXPECT_NEAR(z0(11, 5), 9.999F, 2.0e-6F);
    EXPECT_NEAR(z0(12, 5), 9.999F, 2.0e-6F);
}

TEST_F(CalcRoughness1, VeryRoughMapCountsAsJustBelowTenMetres) {
    maps.basic_z0 = uniform_map(20.0F);
    calc();
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            EXPECT_NEAR(z0(i, j), 9.999F, 4.0e-6F);
        }
    }
}

TEST_F(CalcRoughness1, ZonesOfOneCellHaveNoStrips) {
    lines.n_blend_up = lines.n_up;
    lines.n_blend_down = lines.n_down;
    lines.n_blend_side = lines.n_side;
    calc();
    StripSum column;
    for (int j = 2; j <= 9; ++j) {
        column.add(two_valued(-850.0, static_cast<double>(grid.yc(2, j, 1))), dy(lines, j));
        for (int i = 2; i <= 11; ++i) {
            const double own = two_valued(static_cast<double>(grid.xc(i, j, 1)),
                                          static_cast<double>(grid.yc(i, j, 1)));
            EXPECT_NEAR(static_cast<double>(z0(i, j)) / own, 1.0, 2.0e-6);
        }
    }
    EXPECT_NEAR(static_cast<double>(upwind.z_up) / column.mean(1200.0), 1.0, 2.0e-6);
}

TEST_F(CalcRoughness1, PreviewGivesTheFieldWithoutAFileOrALogLine) {
    settings.USE_EQUIVALENT_ROUGHNESS = true;
    settings.ATLAS_FLAG = 1;
    applicable_alpha(0.2F);
    iwd = preview_direction;
    calc();
    expect_field(expected());
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_EQ(log.kept(), "");
}

TEST_F(CalcRoughness1, LastUpwindRoughnessAndExponentAreKept) {
    applicable_alpha(0.2F);
    calc();
    EXPECT_FLOAT_EQ(upwind.alpha, 0.2F);
    iwd = 2;
    settings.WIND_DIRECTION_ANGLE(2) = 270.0F;
    calc();
    EXPECT_NEAR(static_cast<double>(upwind.z_up) / expected().z_up, 1.0, 3.0e-6);
    EXPECT_FLOAT_EQ(upwind.alpha, 0.2F) << "direction 2 is not listed";
}

}  // namespace
}  // namespace torvex
