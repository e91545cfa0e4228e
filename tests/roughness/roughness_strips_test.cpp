#include "roughness/roughness_strips.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "roughness/roughness_cases.hpp"

namespace torvex {
namespace {

using test::dy;
using test::StripSum;

// Values of every cell different from its neighbours', and ghosts that must not be read.
Field2 patchwork(const MeshLines& lines) {
    Field2 z0(lines.ni, lines.nj, 777.0F);
    for (int j = 2; j <= lines.ny; ++j) {
        for (int i = 2; i <= lines.nx; ++i) {
            z0(i, j) = 0.001F * std::pow(1.45F, static_cast<float>((7 * i + 5 * j) % 19));
        }
    }
    return z0;
}

double at(const Field2& z0, int i, int j) {
    return static_cast<double>(z0(i, j));
}

void expect_relative(float value, double expected, int i, int j) {
    EXPECT_NEAR(static_cast<double>(value) / expected, 1.0, 2.0e-6) << i << ", " << j;
}

bool same_bits(const Field2& a, const Field2& b) {
    for (int j = 1; j <= a.nj(); ++j) {
        for (int i = 1; i <= a.ni(); ++i) {
            if (a(i, j) != b(i, j)) {
                return false;
            }
        }
    }
    return true;
}

TEST(RoughnessStrips, SidesTakeTheMeanAcrossTheZoneAtEachPlace) {
    const MeshLines lines = test::uneven_lines();
    const Field2 before = patchwork(lines);
    Field2 z0 = before;
    smear_sides(lines, z0);
    for (int i = 2; i <= lines.nx; ++i) {
        // dx falls out: only the widths of the two rows weigh.
        StripSum south;
        StripSum north;
        for (const int j : {2, 3}) {
            south.add(at(before, i, j), dy(lines, j));
            north.add(at(before, i, j + 6), dy(lines, j + 6));
        }
        for (const int j : {2, 3}) {
            expect_relative(z0(i, j), south.mean(250.0 + 170.0), i, j);
            expect_relative(z0(i, j + 6), north.mean(170.0 + 250.0), i, j + 6);
        }
        for (int j = 4; j <= 7; ++j) {
            EXPECT_EQ(z0(i, j), before(i, j));
        }
    }
    for (int i = 1; i <= lines.ni; ++i) {
        EXPECT_EQ(z0(i, 1), 777.0F);
        EXPECT_EQ(z0(i, lines.nj), 777.0F);
    }
}

TEST(RoughnessStrips, SouthStripDividesByTheWidthOfTheNorthOne) {
    MeshLines lines = test::uneven_lines();
    lines.y_line(1) = -650.0F;  // the south strip is 470 m wide, the north one 420 m
    const Field2 before = patchwork(lines);
    Field2 z0 = before;
    smear_sides(lines, z0);
    for (int i = 2; i <= lines.nx; ++i) {
        StripSum south;
        south.add(at(before, i, 2), 300.0);
        south.add(at(before, i, 3), 170.0);
        expect_relative(z0(i, 2), south.mean(420.0), i, 2);
        EXPECT_EQ(z0(i, 2), z0(i, 3));
    }
}

TEST(RoughnessStrips, DownwindZoneTakesTheMeanAlongEachRow) {
    const MeshLines lines = test::uneven_lines();
    const Field2 before = patchwork(lines);
    Field2 z0 = before;
    smear_downwind(lines, z0);
    for (int j = 2; j <= lines.ny; ++j) {
        StripSum row;
        row.add(at(before, 10, j), 150.0);
        row.add(at(before, 11, j), 220.0);
        expect_relative(z0(10, j), row.mean(370.0), 10, j);
        expect_relative(z0(11, j), row.mean(370.0), 11, j);
        for (int i = 1; i <= 9; ++i) {
            EXPECT_EQ(z0(i, j), before(i, j));
        }
    }
}

TEST(RoughnessStrips, UpwindMeanWeighsCellsByTheirArea) {
    const MeshLines lines = test::uneven_lines();
    const Field2 z0 = patchwork(lines);
    StripSum zone;
    for (int j = 2; j <= lines.ny; ++j) {
        zone.add(at(z0, 2, j), 300.0 * dy(lines, j));
        zone.add(at(z0, 3, j), 250.0 * dy(lines, j));
    }
    const double expected = zone.mean(550.0 * 1200.0);
    EXPECT_NEAR(static_cast<double>(upwind_mean(lines, z0)) / expected, 1.0, 2.0e-6);
}

TEST(RoughnessStrips, GrassAndForestOnEqualAreas) {
    MeshLines lines = test::uneven_lines();
    lines.x_line(2) = -725.0F;  // cells 2 and 3 are both 275 m long
    Field2 z0(lines.ni, lines.nj, 0.03F);
    for (int j = 1; j <= lines.nj; ++j) {
        z0(3, j) = 0.5F;
    }
    EXPECT_NEAR(upwind_mean(lines, z0), 0.231582F, 1.0e-6F);
}

TEST(RoughnessStrips, UniformFieldIsLeftByEveryMean) {
    const MeshLines lines = test::uneven_lines();
    for (const float value : {0.0001F, 0.0002F, 0.03F, 0.5F, 2.0F, 9.5F}) {
        Field2 z0(lines.ni, lines.nj, value);
        smear_sides(lines, z0);
        smear_downwind(lines, z0);
        for (int j = 1; j <= lines.nj; ++j) {
            for (int i = 1; i <= lines.ni; ++i) {
                EXPECT_NEAR(z0(i, j) / value, 1.0F, 2.0e-6F);
            }
        }
        EXPECT_NEAR(upwind_mean(lines, z0) / value, 1.0F, 2.0e-6F);
    }
}

TEST(RoughnessStrips, VeryRoughGroundCountsAsJustBelowTenMetres) {
    const MeshLines lines = test::uneven_lines();
    Field2 z0(lines.ni, lines.nj, 20.0F);
    smear_sides(lines, z0);
    smear_downwind(lines, z0);
    EXPECT_NEAR(z0(6, 2), 9.999F, 2.0e-6F);
    EXPECT_NEAR(z0(10, 5), 9.999F, 2.0e-6F);
    EXPECT_EQ(z0(6, 5), 20.0F);
    EXPECT_NEAR(upwind_mean(lines, z0), 9.999F, 2.0e-6F);
    z0.fill(10.0F);
    EXPECT_NEAR(upwind_mean(lines, z0), 9.999F, 2.0e-6F);
}

TEST(RoughnessStrips, RoughnessOfZeroCountsAsNoDrag) {
    const MeshLines lines = test::uneven_lines();
    Field2 z0(lines.ni, lines.nj);
    EXPECT_EQ(upwind_mean(lines, z0), 0.0F);
    smear_sides(lines, z0);
    EXPECT_EQ(z0(5, 2), 0.0F);
    for (int i = 2; i <= lines.nx; ++i) {
        z0(i, 2) = 0.1F;
    }
    smear_sides(lines, z0);
    StripSum south;
    south.add(0.1, 250.0);
    expect_relative(z0(5, 3), south.mean(420.0), 5, 3);
}

TEST(RoughnessStrips, ZonesWithoutAFlatPartAreLeftAlone) {
    MeshLines lines = test::uneven_lines();
    lines.n_blend_side = lines.n_side;
    lines.n_blend_down = lines.n_down;
    const Field2 before = patchwork(lines);
    Field2 z0 = before;
    smear_sides(lines, z0);
    smear_downwind(lines, z0);
    EXPECT_TRUE(same_bits(z0, before));
}

TEST(RoughnessStrips, UpwindZoneWithoutAFlatPartTakesItsFirstCells) {
    MeshLines lines = test::uneven_lines();
    lines.n_blend_up = lines.n_up;
    const Field2 before = patchwork(lines);
    StripSum column;
    for (int j = 2; j <= lines.ny; ++j) {
        column.add(at(before, 2, j), dy(lines, j));
    }
    EXPECT_NEAR(static_cast<double>(upwind_mean(lines, before)) / column.mean(1200.0), 1.0, 2.0e-6);
    Field2 z0 = before;
    stamp_upwind(CaseSettings{}, lines, 0.123F, z0);
    EXPECT_TRUE(same_bits(z0, before));
}

TEST(RoughnessStrips, ZonesOfOneFlatCellAreTheirOwnMean) {
    MeshLines lines = test::uneven_lines();
    lines.n_blend_up = lines.n_up - 1;
    lines.n_blend_down = lines.n_down - 1;
    lines.n_blend_side = lines.n_side - 1;
    const Field2 before = patchwork(lines);
    Field2 z0 = before;
    smear_sides(lines, z0);
    smear_downwind(lines, z0);
    for (int j = 2; j <= lines.ny; ++j) {
        for (int i = 2; i <= lines.nx; ++i) {
            expect_relative(z0(i, j), at(before, i, j), i, j);
        }
    }
}

TEST(RoughnessStrips, GhostsRepeatTheirNeighboursAndCornersTheDiagonalOnes) {
    const MeshLines lines = test::uneven_lines();
    Field2 z0 = patchwork(lines);
    repeat_on_ghost_ring(z0);
    for (int j = 2; j <= 9; ++j) {
        EXPECT_EQ(z0(1, j), z0(2, j));
        EXPECT_EQ(z0(12, j), z0(11, j));
    }
    for (int i = 2; i <= 11; ++i) {
        EXPECT_EQ(z0(i, 1), z0(i, 2));
        EXPECT_EQ(z0(i, 10), z0(i, 9));
    }
    EXPECT_EQ(z0(1, 1), z0(2, 2));
    EXPECT_EQ(z0(12, 1), z0(11, 2));
    EXPECT_EQ(z0(1, 10), z0(2, 9));
    EXPECT_EQ(z0(12, 10), z0(11, 9));
}

// Which cells carry the stamp, by the last i that does.
void expect_stamp_up_to(const CaseSettings& settings, const MeshLines& lines, int last) {
    const Field2 before = patchwork(lines);
    Field2 z0 = before;
    stamp_upwind(settings, lines, 12.5F, z0);
    for (int j = 1; j <= lines.nj; ++j) {
        for (int i = 1; i <= lines.ni; ++i) {
            const bool stamped = j >= 2 && j <= lines.ny && i >= 2 && i <= last;
            EXPECT_EQ(z0(i, j), stamped ? 12.5F : before(i, j)) << i << ", " << j;
        }
    }
}

TEST(RoughnessStrips, StampCoversTheFlatPartAndIsNotLimited) {
    expect_stamp_up_to(CaseSettings{}, test::uneven_lines(), 3);
}

TEST(RoughnessStrips, StampReachesOverTheAdditionalZone) {
    CaseSettings settings;
    settings.USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN = true;
    expect_stamp_up_to(settings, test::uneven_lines(), 7 - 1 - 1);
    // A study circle that begins upwind of the flat part's end takes nothing back.
    MeshLines lines = test::uneven_lines();
    lines.n_inner = 4;
    expect_stamp_up_to(settings, lines, 3);
}

TEST(RoughnessStrips, StampReachesOverTheWholeMesh) {
    CaseSettings settings;
    settings.USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = true;
    expect_stamp_up_to(settings, test::uneven_lines(), 11);
    settings.USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN = true;
    expect_stamp_up_to(settings, test::uneven_lines(), 11);
}

}  // namespace
}  // namespace torvex
