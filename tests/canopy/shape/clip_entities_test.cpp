#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "canopy/clip_entities_to_cells.hpp"
#include "canopy/shape/canopy_shapes.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using test::add_box;
using test::add_ring;
using test::block;
using test::even_line;

// 8 x 8 cells of 10 m about the origin: cell (i,j) from -50 + 10 i - 10 to -50 + 10 i.
const Line1 lines = even_line(9, -40, 10);

double area_of_pieces(const ColumnLists& columns) {
    double sum = 0;
    for (int j = 2; j <= columns.ny; ++j) {
        for (int i = 2; i <= columns.nx; ++i) {
            for (std::size_t n = 0; n < columns.at(i, j).size(); ++n) {
                sum += columns.at(i, j)[n].area;
            }
        }
    }
    return sum;
}

TEST(ClipEntities, SquareOnTheLinesFillsItsCellsAlone) {
    const ColumnLists columns =
        clip_entities_to_cells({block(-10, -10, 20, 10)}, lines, lines, false);
    int filled = 0;
    for (int j = 2; j <= 9; ++j) {
        for (int i = 2; i <= 9; ++i) {
            const Ring<CanopyPiece>& list = columns.at(i, j);
            if (list.empty()) {
                EXPECT_EQ(columns.sums(i, j), 0.0);
                continue;
            }
            ++filled;
            ASSERT_EQ(list.size(), 1U);
            EXPECT_EQ(list[0].fraction, 1.0);
            EXPECT_EQ(list[0].area, 100.0);
            EXPECT_EQ(columns.sums(i, j), 100.0);
        }
    }
    EXPECT_EQ(filled, 4);
}

TEST(ClipEntities, PieceKnowsItsEntityAndItsAttributes) {
    CanopyEntity wood = block(1, 1, 5, 12);
    wood.attributes.number = 17;
    wood.attributes.luid = 312;
    const ColumnLists columns =
        clip_entities_to_cells({block(-39, -39, 5, 3), wood}, lines, lines, false);
    const Ring<CanopyPiece>& list = columns.at(6, 6);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].entity, 1);
    EXPECT_EQ(list[0].attributes.number, 17);
    EXPECT_EQ(list[0].attributes.luid, 312);
    EXPECT_EQ(list[0].attributes.h, 12.0F);
    EXPECT_DOUBLE_EQ(list[0].fraction, 0.25);
}

TEST(ClipEntities, HolePassedOverOnRequest) {
    CanopyEntity court;
    add_box(court, -20, -20, 40, 40);
    add_box(court, -10, -10, 20, 20, true);
    const auto area = [&court](bool exclude) {
        return area_of_pieces(clip_entities_to_cells({court}, lines, lines, exclude));
    };
    EXPECT_DOUBLE_EQ(area(true), 1600.0);
    EXPECT_DOUBLE_EQ(area(false), 1200.0);
}

TEST(ClipEntities, HoleInsideOneCellLeavesTheRest) {
    CanopyEntity court;
    add_box(court, -20, -20, 40, 40);
    add_box(court, -10, -10, 20, 20, true);
    const Line1 one_cell = even_line(2, -20, 40);
    const ColumnLists columns = clip_entities_to_cells({court}, one_cell, one_cell, false);
    ASSERT_EQ(columns.at(2, 2).size(), 1U);
    EXPECT_DOUBLE_EQ(columns.at(2, 2)[0].area, 1200.0);
    EXPECT_DOUBLE_EQ(columns.at(2, 2)[0].fraction, 0.75);
}

TEST(ClipEntities, HoleEmptiesTheListOfItsColumns) {
    CanopyEntity court;
    add_box(court, -40, -40, 80, 80);
    add_box(court, 0, 0, 5, 5, true);
    // The block was there first, in the cell that the hole reaches and in the one beside it.
    const ColumnLists columns =
        clip_entities_to_cells({block(0, 0, 20, 7), court}, lines, lines, false);
    ASSERT_EQ(columns.at(6, 6).size(), 1U);
    EXPECT_EQ(columns.at(6, 6)[0].entity, 1);
    EXPECT_DOUBLE_EQ(columns.at(6, 6)[0].area, 75.0);
    EXPECT_EQ(columns.at(7, 6).size(), 2U);
    // The sum of the column keeps all that it was given: block, outer ring, rest round the hole.
    EXPECT_DOUBLE_EQ(columns.sums(6, 6), 275.0);
}

TEST(ClipEntities, HoleThatOnlyTouchesAColumnLeavesItAlone) {
    CanopyEntity court;
    add_box(court, -40, -40, 80, 80);
    add_box(court, 0, 0, 10, 10, true);
    const ColumnLists columns = clip_entities_to_cells({court}, lines, lines, false);
    EXPECT_TRUE(columns.at(6, 6).empty());
    ASSERT_EQ(columns.at(7, 6).size(), 1U);
    EXPECT_DOUBLE_EQ(columns.at(7, 6)[0].area, 100.0);
    EXPECT_EQ(columns.at(7, 6).size(), 1U);
}

TEST(ClipEntities, RingOfOneIsNoHoleWhateverItsTurn) {
    CanopyEntity entity;
    add_box(entity, 0, 0, 10, 10, true);
    EXPECT_DOUBLE_EQ(area_of_pieces(clip_entities_to_cells({entity}, lines, lines, true)), 100.0);
}

TEST(ClipEntities, TwoOuterRingsAreBothFilled) {
    CanopyEntity twins;
    add_box(twins, -30, -30, 5, 5);
    add_box(twins, 20, 20, 5, 5);
    EXPECT_DOUBLE_EQ(area_of_pieces(clip_entities_to_cells({twins}, lines, lines, false)), 50.0);
    EXPECT_DOUBLE_EQ(twins.outline_area, 50.0);
}

TEST(ClipEntities, WhatLiesOutsideTheMeshIsLeftOut) {
    const auto area = [](double x, double y, double side) {
        return area_of_pieces(clip_entities_to_cells({block(x, y, side, 5)}, lines, lines, false));
    };
    EXPECT_EQ(area(50, 0, 20), 0.0);
    EXPECT_EQ(area(-70, -70, 30), 0.0);         // meets the mesh in one corner
    EXPECT_DOUBLE_EQ(area(35, 35, 100), 25.0);  // reaches in by 5 m
    EXPECT_DOUBLE_EQ(area(-500, -500, 1000), 6400.0);
}

TEST(ClipEntities, UnevenCellsShareATurnedSquare) {
    const Line1 x_line = even_line(30, -50, 3.7F);
    const Line1 y_line = even_line(25, -40, 4.3F);
    CanopyEntity tip;
    add_ring(tip, {{-20, 0}, {0, 20}, {20, 0}, {0, -20}});
    EXPECT_NEAR(area_of_pieces(clip_entities_to_cells({tip}, x_line, y_line, false)), 800.0, 1e-9);
}

TEST(ClipEntities, RingsWithoutAreaLeaveNothing) {
    CanopyEntity entity;
    add_ring(entity, {{1, 1}});
    add_ring(entity, {{1, 1}, {30, 30}});
    add_ring(entity, {{5, 5}, {5, 5}, {5, 5}});
    EXPECT_EQ(area_of_pieces(clip_entities_to_cells({entity}, lines, lines, false)), 0.0);
}

TEST(OutlineArea, HolesAreIgnored) {
    CanopyEntity court;
    add_box(court, -20, -20, 40, 40);
    add_box(court, -10, -10, 20, 20, true);
    EXPECT_DOUBLE_EQ(court.outline_area, 1600.0);
}

TEST(DistanceToPolyline, LeastOverTheSegments) {
    const std::vector<double> x{0, 10, 10, 20};
    const std::vector<double> y{0, 0, 10, 10};
    EXPECT_NEAR(distance_to_polyline(5, 3, x, y), 3.0, 1e-12);
    EXPECT_NEAR(distance_to_polyline(-3, -4, x, y), 5.0, 1e-12);  // before the first end
    EXPECT_NEAR(distance_to_polyline(23, 14, x, y), 5.0, 1e-12);  // behind the last
    EXPECT_NEAR(distance_to_polyline(18, 11, x, y), 1.0, 1e-12);
    EXPECT_NEAR(distance_to_polyline(12, 5, x, y), 2.0, 1e-12);
    EXPECT_EQ(distance_to_polyline(0, 0, {}, {}), 1.0e20);
}

TEST(RingOfEntries, GrowsAndKeepsTheOrder) {
    Ring<int> ring(2);
    for (int n = 0; n < 3; ++n) {
        ring.push(n);
    }
    ring.pop();
    for (int n = 3; n < 9; ++n) {
        ring.push(n);
    }
    ASSERT_EQ(ring.size(), 8U);
    for (std::size_t n = 0; n < 8; ++n) {
        EXPECT_EQ(ring[n], static_cast<int>(n) + 1);
    }
    ring.clear();
    EXPECT_TRUE(ring.empty());
}

TEST(RingOfEntries, CapacityBelowOneStops) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(test::stop_code_of([] { Ring<int> ring(0); }), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[ring_mod] Buffer size or allocation error.\n");
}

}  // namespace
}  // namespace torvex
