#include "canopy/grid_parameters.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "canopy/canopy_roughness.hpp"
#include "canopy/cmCombGPs.hpp"
#include "canopy/shape/canopy_shapes.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::block;
using test::even_line;

constexpr float root_half = 0.70710678F;

const Line1 lines = even_line(9, -40, 10);  // 8 x 8 cells of 10 m; 5 and 6 meet at the origin
const Line1 z_line = even_line(7, 0, 5);    // 6 layers of 5 m

ColumnLists clip(const std::vector<CanopyEntity>& entities) {
    return clip_entities_to_cells(entities, lines, lines, false);
}

GridParameters lu(const std::vector<CanopyEntity>& entities) {
    return cmCalcGP_LU(clip(entities), LayerLevels(z_line));
}

struct Zen {
    FrontalAreas front;
    GridParameters gp;
};

Zen zen(const std::vector<CanopyEntity>& entities, float wind, float direction) {
    const ColumnLists columns = clip(entities);
    const LayerLevels levels(z_line);
    Zen z;
    z.front = cmCalcFA_ZEN(columns, levels, frontal_extents(entities, wind, {direction}));
    z.gp =
        cmCalcGP_ZEN(columns, levels, entities, column_areas(lines, lines), &z.front.gp_frontal[0]);
    return z;
}

// Sum of gp_density S dz [m3] and of gp_density S dz/gp_length [m2].
double filled_volume(const GridParameters& gp) {
    double sum = 0;
    for (int k = 1; k <= 6; ++k) {
        for (int j = 2; j <= 9; ++j) {
            for (int i = 2; i <= 9; ++i) {
                sum += static_cast<double>(gp.gp_density(i, j, k)) * 500.0;
            }
        }
    }
    return sum;
}

double shown_front(const GridParameters& gp) {
    double sum = 0;
    for (int k = 1; k <= 6; ++k) {
        for (int j = 2; j <= 9; ++j) {
            for (int i = 2; i <= 9; ++i) {
                const float length = gp.gp_length(i, j, k);
                sum +=
                    length > 0 ? static_cast<double>(gp.gp_density(i, j, k) / length) * 500.0 : 0;
            }
        }
    }
    return sum;
}

CanopyEntity wood(float height, float pd, float rls) {
    CanopyEntity entity = block(-10, -10, 20, height);
    entity.attributes.pd = pd;
    entity.attributes.rls = rls;
    entity.attributes.cf = 0.4F;
    entity.attributes.method = CanopyMethod::LU;
    return entity;
}

TEST(GridParametersLU, BlockFillsTheLayersBelowItsTop) {
    const GridParameters gp = lu({block(-10, -10, 20, 10)});
    for (const int k : {1, 2}) {
        for (const int i : {5, 6}) {
            for (const int j : {5, 6}) {
                EXPECT_EQ(gp.gp_density(i, j, k), 1.0F);
                EXPECT_FLOAT_EQ(gp.gp_length(i, j, k), 20.0F);
                EXPECT_EQ(gp.gp_cf(i, j, k), 1.0F);
                EXPECT_EQ(gp.gp_height(i, j, k), 10.0F);
                EXPECT_EQ(gp.gp_fill(i, j, k), 5.0F);
            }
        }
        EXPECT_EQ(gp.gp_density(4, 5, k), 0.0F);
    }
    EXPECT_EQ(gp.gp_density(5, 5, 3), 0.0F);
    EXPECT_EQ(gp.gp_length(5, 5, 3), 0.0F);
    EXPECT_DOUBLE_EQ(filled_volume(gp), 4000.0);
}

TEST(GridParametersLU, TopLayerIsFilledInPart) {
    const GridParameters gp = lu({block(-10, -10, 20, 7.5F)});
    EXPECT_EQ(gp.gp_density(5, 5, 1), 1.0F);
    EXPECT_EQ(gp.gp_density(5, 5, 2), 0.5F);
    EXPECT_EQ(gp.gp_density(5, 5, 3), 0.0F);
    EXPECT_EQ(gp.gp_fill(5, 5, 2), 2.5F);
    EXPECT_FLOAT_EQ(gp.gp_length(5, 5, 2), 20.0F);
}

TEST(GridParametersLU, PartOfAColumnCountsInItsDensityAlone) {
    CanopyEntity half = wood(10, 0.2F, 0.5F);
    half.x.clear();
    half.y.clear();
    half.part_start.clear();
    test::add_box(half, 0, 0, 5, 10);
    const GridParameters gp = lu({half});
    EXPECT_FLOAT_EQ(gp.gp_density(6, 6, 1), 0.1F);
    EXPECT_FLOAT_EQ(gp.gp_length(6, 6, 1), 0.5F);
    EXPECT_FLOAT_EQ(gp.gp_cover(6, 6), 0.5F);
}

TEST(GridParametersLU, HeightOfNothingDividesNothing) {
    CanopyEntity clearing = wood(0, 0.2F, 0.5F);
    clearing.attributes.z0 = 0.2F;
    const GridParameters gp = lu({clearing});
    EXPECT_EQ(gp.gp_density(5, 5, 1), 0.0F);
    EXPECT_EQ(gp.gp_length(5, 5, 1), 0.0F);
    EXPECT_EQ(gp.gp_cover(5, 5), 1.0F);
    EXPECT_EQ(gp.gp_z0(5, 5), 0.2F);
}

TEST(GridParametersLU, TallerThanTheMeshFillsAllLayers) {
    const GridParameters gp = lu({wood(1000, 0.05F, 0.2F)});
    for (int k = 1; k <= 6; ++k) {
        EXPECT_FLOAT_EQ(gp.gp_density(5, 5, k), 0.05F);
    }
}

TEST(GridParametersLU, DensityIsHeldAtOneBeforeItDividesTheLength) {
    // Two solid blocks on one another: density 2, length sum 2 x 20/10 per height, times 10.
    const GridParameters gp = lu({block(-10, -10, 20, 10), block(-10, -10, 20, 10)});
    EXPECT_EQ(gp.gp_density(5, 5, 1), 1.0F);
    EXPECT_FLOAT_EQ(gp.gp_length(5, 5, 1), 40.0F);
    EXPECT_EQ(gp.gp_cover(5, 5), 2.0F);
}

TEST(GridParametersLU, DragCoefficientIsTheMeanOfWhatIsFilled) {
    CanopyEntity low = wood(5, 0.1F, 0.5F);
    CanopyEntity high = wood(10, 0.3F, 0.5F);
    high.attributes.cf = 0.8F;
    const GridParameters gp = lu({low, high});
    EXPECT_FLOAT_EQ(gp.gp_cf(5, 5, 1), (0.1F * 0.4F + 0.3F * 0.8F) / 0.4F);
    EXPECT_FLOAT_EQ(gp.gp_cf(5, 5, 2), 0.8F);
}

TEST(GridParametersLU, LastPieceDecidesTheAttributesOfTheColumn) {
    CanopyEntity first = wood(5, 0.1F, 0.5F);
    CanopyEntity last = wood(3, 0.1F, 0.5F);
    last.attributes.z0 = 0.4F;
    last.attributes.z0org = 0.6F;
    last.attributes.luid = 5;
    const GridParameters gp = lu({first, last});
    EXPECT_EQ(gp.gp_z0(5, 5), 0.4F);
    EXPECT_EQ(gp.gp_z0org(5, 5), 0.6F);
    EXPECT_EQ(gp.gp_luid(5, 5), 5);
    EXPECT_EQ(gp.gp_height(5, 5, 1), 5.0F);
}

TEST(GridParametersLU, HeightsThatAreNoNumbersStop) {
    const auto run = [](auto calc) {
        testing::internal::CaptureStdout();
        const int code = test::stop_code_of(calc);
        return std::to_string(code) + " " + testing::internal::GetCapturedStdout();
    };
    const std::vector<CanopyEntity> bad{
        block(-10, -10, 20, std::numeric_limits<float>::quiet_NaN())};
    const ColumnLists columns = clip(bad);
    const LayerLevels levels(z_line);
    EXPECT_EQ(run([&] { cmCalcGP_LU(columns, levels); }), "1 ERR in cmCalcGP_LU\n");
    EXPECT_EQ(run([&] { cmCalcGP_ZEN(columns, levels, bad, column_areas(lines, lines)); }),
              "1 ERR in cmCalcGP_ZEN\n");
    EXPECT_EQ(run([&] { cmCalcFA_ZEN(columns, levels, frontal_extents(bad, 270, {270})); }),
              "1 ERR in cmCalcFA_ZEN\n");
}

TEST(GridParametersZEN, WithoutFrontalAreasIsAsLU) {
    const std::vector<CanopyEntity> blocks{block(-10, -10, 20, 7.5F), block(5, 5, 13, 4)};
    const GridParameters a = cmCalcGP_LU(clip(blocks), LayerLevels(z_line));
    const GridParameters b =
        cmCalcGP_ZEN(clip(blocks), LayerLevels(z_line), blocks, column_areas(lines, lines));
    for (std::size_t n = 0; n < a.gp_length.size(); ++n) {
        EXPECT_EQ(a.gp_length.data()[n], b.gp_length.data()[n]);
        EXPECT_EQ(a.gp_density.data()[n], b.gp_density.data()[n]);
    }
}

TEST(GridParametersZEN, FrontOfABlockIsSharedOutByItsColumns) {
    // 20 m wide, layers of 5 m: a front of 100 m2 in each; a column has a quarter of the block, so
    // its length is 1 x 500/(100 x 0.25) = 20.
    const Zen z = zen({block(-10, -10, 20, 10)}, 270, 270);
    for (const int k : {1, 2}) {
        EXPECT_FLOAT_EQ(z.front.gp_frontal[0](5, 5, k), 100.0F);
        EXPECT_FLOAT_EQ(z.gp.gp_length(6, 5, k), 20.0F);
    }
    EXPECT_EQ(z.front.gp_frontal[0](5, 5, 3), 0.0F);
    EXPECT_EQ(z.front.gp_frontal[0](4, 5, 1), 0.0F);
    EXPECT_NEAR(shown_front(z.gp), 200.0, 1e-4);  // 20 m x 10 m
}

TEST(GridParametersZEN, FrontsActUpToTheEdgesOfTheMesh) {
    // Blocks of 20 m in the corners of the mesh, seen over their own corners: fronts of 20 sqrt(2)
    // by 5 m, shared by four columns of 500 m3 a layer.
    for (const double x : {-40.0, 20.0}) {
        for (const double y : {-40.0, 20.0}) {
            const Zen z = zen({block(x, y, 20, 10)}, 270, 225);
            EXPECT_NEAR(z.gp.gp_length(x < 0 ? 2 : 9, y < 0 ? 2 : 9, 1), 20 * root_half, 1e-5F)
                << x << ' ' << y;
        }
    }
}

TEST(GridParametersZEN, FrontOfALongHouseDependsOnTheDirection) {
    CanopyEntity house = block(0, 0, 1, 5);
    house.x.clear();
    house.y.clear();
    house.part_start.clear();
    test::add_box(house, -15, -5, 30, 10);
    EXPECT_NEAR(shown_front(zen({house}, 270, 270).gp), 10 * 5, 1e-4);
    EXPECT_NEAR(shown_front(zen({house}, 270, 180).gp), 30 * 5, 1e-4);
    EXPECT_NEAR(shown_front(zen({house}, 270, 90).gp), 10 * 5, 1e-4);
    EXPECT_NEAR(shown_front(zen({house}, 270, 225).gp), (30 + 10) * 5 * 0.70710678, 1e-3);
    // The crosswind extent in the frame of the mesh is that of the block as it stands there.
    EXPECT_NEAR(shown_front(zen({house}, 30, 30).gp), 10 * 5, 1e-4);
}

TEST(GridParametersZEN, TurnedSquareKeepsItsVolume) {
    // The same square of 20 m as it lies in the mesh of wind 225.
    CanopyEntity tip = block(0, 0, 20, 10);
    const float r = 20 * root_half;
    tip.x.clear();
    tip.y.clear();
    tip.part_start.clear();
    test::add_ring(tip, {{-r, 0}, {0, r}, {r, 0}, {0, -r}});
    EXPECT_NEAR(filled_volume(lu({tip})), 4000.0, 4000 * 1e-6);
    EXPECT_NEAR(shown_front(zen({tip}, 225, 225).gp), 2 * 20 * 0.70710678 * 10, 1e-3);
}

TEST(FrontalAreas, WhatStandsBehindAnotherCountsOnce) {
    // Two blocks of 4 m in one cell, one behind the other; then beside each other.
    const LayerLevels levels(z_line);
    const auto front = [&levels](const std::vector<CanopyEntity>& blocks) {
        return cmCalcFA_ZEN(clip(blocks), levels, frontal_extents(blocks, 270, {270}))
            .gp_frontal[0](6, 6, 1);
    };
    EXPECT_FLOAT_EQ(front({block(0, 1, 4, 5), block(5, 1, 4, 5)}), 20.0F);
    EXPECT_FLOAT_EQ(front({block(1, 0, 4, 5), block(1, 5, 4, 5)}), 40.0F);
    // Half behind: 2 m of 3 m and 4 m of 5 m.
    EXPECT_FLOAT_EQ(front({block(0, 1, 4, 3), block(5, 3, 4, 5)}), 2 * 3 + 4 * 5.0F);
}

TEST(FrontalAreas, NearestDirectionIsTakenFromBothSides) {
    EXPECT_EQ(nearest_front({0, 90, 180, 270}, 269), 1U);  // 90 and 270 show the same, first wins
    EXPECT_EQ(nearest_front({10, 350}, 0), 0U);
    EXPECT_EQ(nearest_front({20, 170}, 359), 1U);
    EXPECT_EQ(nearest_front({45}, 135), 0U);
}

TEST(LayerLevelsOfAColumn, AreItsOwnAboveTheConstantLayers) {
    Field3 zn(2, 2, 4);
    const float ground[2][2] = {{100, 104}, {108, 112}};
    for (int j = 1; j <= 2; ++j) {
        for (int i = 1; i <= 2; ++i) {
            const float g = ground[j - 1][i - 1];
            const float top = 200;
            zn(i, j, 1) = g;
            zn(i, j, 2) = g + 10;
            zn(i, j, 3) = g + 20;
            zn(i, j, 4) = top;
        }
    }
    const Line1 z = even_line(4, 0, 10);
    const LayerLevels levels(z, 3, zn);
    EXPECT_EQ(levels.layers(), 3);
    EXPECT_EQ(levels.level(2, 2, 3), 20.0);
    EXPECT_EQ(levels.level(2, 2, 4), 94.0);  // 200 less the mean ground of 106
}

TEST(CombinedCells, DragIsTheSumOfBoth) {
    const CanopyCell a{0.4F, 0.1F, 0.2F};
    const CanopyCell b{1.0F, 0.3F, 15.0F};
    const CanopyCell both = combined(a, b);
    EXPECT_FLOAT_EQ(both.phi, 0.4F);
    EXPECT_FLOAT_EQ(both.cf, (0.04F + 0.3F) / 0.4F);
    EXPECT_NEAR(both.cf * both.phi / both.length, 0.04 / 0.2 + 0.3 / 15, 1e-6);
}

TEST(CombinedCells, DensityEndsAtOneAndTheDragStaysTheSum) {
    const CanopyCell both = combined({1.0F, 0.8F, 10.0F}, {1.0F, 0.8F, 20.0F});
    EXPECT_EQ(both.phi, 1.0F);
    EXPECT_FLOAT_EQ(both.cf, 1.0F);
    EXPECT_NEAR(both.cf * both.phi / both.length, 0.08 + 0.04, 1e-6);
}

TEST(CombinedCells, OfOneOrNone) {
    const CanopyCell a{0.4F, 0.1F, 0.2F};
    for (const CanopyCell& both : {combined(a, {}), combined({}, a)}) {
        EXPECT_EQ(both.cf, 0.4F);
        EXPECT_EQ(both.phi, 0.1F);
        EXPECT_EQ(both.length, 0.2F);
    }
    const CanopyCell none = combined({}, {});
    EXPECT_EQ(none.cf, 0.0F);
    EXPECT_EQ(none.phi, 0.0F);
    EXPECT_EQ(none.length, 0.0F);
}

TEST(CombinedCells, WithoutDragTheLengthIsTheMean) {
    const CanopyCell both = combined({0, 0.1F, 2.0F}, {0, 0.3F, 6.0F});
    EXPECT_EQ(both.cf, 0.0F);
    EXPECT_FLOAT_EQ(both.length, 5.0F);
}

TEST(CombinedSets, LayerOfASetIsTheCellAboveIt) {
    CanopyRecords records{Field3(10, 10, 8), Field3(10, 10, 8), Field3(10, 10, 8), {}};
    cmCombGPs(lu({block(-10, -10, 20, 10)}), records);
    cmCombGPs(lu({wood(20, 0.05F, 0.2F)}), records);
    EXPECT_EQ(records.gp_density(5, 5, 1), 0.0F);
    EXPECT_EQ(records.gp_density(5, 5, 2), 1.0F);
    EXPECT_EQ(records.gp_density(5, 5, 3), 1.0F);
    EXPECT_EQ(records.gp_density(5, 5, 4), 0.05F);
    EXPECT_EQ(records.gp_density(5, 5, 6), 0.0F);
    for (int k = 1; k <= 8; ++k) {
        EXPECT_EQ(records.gp_density(10, 5, k), 0.0F);
        EXPECT_EQ(records.gp_density(5, 1, k), 0.0F);
    }
}

TEST(CanopyRoughness, MeanOfTheDragAtTenMetres) {
    // Half a column of 0.5 m in 0.03 m: 1/ln^2 of 10/0.03 and 10/0.5 are 0.029618 and 0.111428.
    CanopyEntity half = wood(10, 0.05F, 0.2F);
    half.attributes.z0 = 0.5F;
    half.x.clear();
    half.y.clear();
    half.part_start.clear();
    test::add_box(half, 0, 0, 5, 10);
    const ColumnLists columns = clip({half});
    Field2 z0(10, 10, 0.03F);
    const ColumnLists* const sets[2] = {&columns, nullptr};
    canopy_roughness(sets, z0);
    EXPECT_NEAR(z0(6, 6), 0.23158, 1e-5);
    EXPECT_EQ(z0(5, 5), 0.03F);
}

TEST(CanopyRoughness, CoverAboveOneIsScaledAndGhostsRepeat) {
    CanopyEntity smooth = wood(10, 0.05F, 0.2F);
    smooth.attributes.z0 = 0.01F;
    smooth.x.clear();
    smooth.y.clear();
    smooth.part_start.clear();
    test::add_box(smooth, -40, -40, 80, 80);
    const ColumnLists columns = clip({smooth});
    Field2 z0(10, 10, 0.5F);
    const ColumnLists* const sets[2] = {&columns, &columns};
    canopy_roughness(sets, z0);
    for (int j = 1; j <= 10; ++j) {
        for (int i = 1; i <= 10; ++i) {
            EXPECT_NEAR(z0(i, j), 0.01, 1e-7);
        }
    }
}

}  // namespace
}  // namespace torvex
