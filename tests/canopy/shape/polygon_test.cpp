#include "canopy/shape/polygon.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "canopy/shape/grid_line_cross.hpp"
#include "canopy/shape/polygon_clip.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

Polygon ring(const std::vector<PlanPoint>& points) {
    Polygon polygon;
    polygon_init(polygon);
    for (const PlanPoint& p : points) {
        polygon_append(polygon, p.x, p.y);
    }
    return polygon;
}

double clipped_area(const Polygon& polygon, PlanPoint low, PlanPoint high) {
    return std::abs(polygon_area(polygon_clip(polygon, low, high)));
}

TEST(PolygonArea, SignTellsTheTurn) {
    EXPECT_EQ(polygon_area(ring({{0, 0}, {0, 2}, {3, 2}, {3, 0}})), 6.0);
    EXPECT_EQ(polygon_area(ring({{0, 0}, {3, 0}, {3, 2}, {0, 2}})), -6.0);
}

TEST(PolygonArea, OfNothingAPointAndALine) {
    EXPECT_EQ(polygon_area(ring({})), 0.0);
    EXPECT_EQ(polygon_area(ring({{5, 7}})), 0.0);
    EXPECT_EQ(polygon_area(ring({{5, 7}, {8, 9}})), 0.0);
}

TEST(PolygonArea, KeepsItsDigitsFarFromTheOrigin) {
    const double far = 67108864.0;  // 2^26: products have no room left for a millimetre
    EXPECT_EQ(polygon_area(ring({{far, far}, {far, far + 0.25}, {far + 0.25, far}})), 0.03125);
}

TEST(PolygonList, FreeGivesAnEmptyRing) {
    Polygon polygon = ring({{0, 0}, {1, 1}});
    EXPECT_FALSE(polygon.empty());
    polygon_free(polygon);
    EXPECT_TRUE(polygon.empty());
}

TEST(PolygonOfRing, LeavesOutTheRepeatedPoint) {
    const std::vector<double> x{9, 0, 0, 3, 0, 9};
    const std::vector<double> y{9, 0, 2, 2, 0, 9};
    const Polygon triangle = polygon_of_ring(x, y, 1, 5);
    EXPECT_EQ(triangle.points.size(), 3U);
    EXPECT_EQ(polygon_area(triangle), 3.0);
    EXPECT_EQ(polygon_of_ring(x, y, 0, 1).points.size(), 1U);
}

TEST(RingTurn, IsTwiceTheArea) {
    EXPECT_EQ(ring_turn(ring({{0, 0}, {0, 2}, {3, 2}, {3, 0}})), 12.0);
    EXPECT_EQ(ring_turn(ring({{0, 0}, {3, 0}, {3, 2}, {0, 2}})), -12.0);
    EXPECT_EQ(ring_turn(ring({{1, 1}, {2, 3}, {4, 1}})), 6.0);
    EXPECT_EQ(ring_turn(ring({})), 0.0);
}

TEST(PolygonClip, PolygonInsideReturnsUnchanged) {
    const Polygon triangle = ring({{1, 1}, {2, 3}, {4, 1}});
    const Polygon piece = polygon_clip(triangle, {0, 0}, {5, 5});
    ASSERT_EQ(piece.points.size(), 3U);
    for (std::size_t n = 0; n < 3; ++n) {
        EXPECT_EQ(piece.points[n].x, triangle.points[n].x);
        EXPECT_EQ(piece.points[n].y, triangle.points[n].y);
        EXPECT_FALSE(piece.points[n].cut);
    }
}

TEST(PolygonClip, TouchingAlongASideHasNoArea) {
    const Polygon square = ring({{0, 0}, {0, 1}, {1, 1}, {1, 0}});
    EXPECT_EQ(clipped_area(square, {1, 0}, {2, 1}), 0.0);
    EXPECT_EQ(clipped_area(square, {1, 1}, {2, 2}), 0.0);  // in one point
}

TEST(PolygonClip, MissingTheRectangleIsEmpty) {
    const Polygon square = ring({{0, 0}, {0, 1}, {1, 1}, {1, 0}});
    EXPECT_TRUE(polygon_clip(square, {2, 0}, {3, 1}).empty());
    EXPECT_TRUE(polygon_clip(ring({}), {2, 0}, {3, 1}).empty());
}

TEST(PolygonClip, CutsOffCorners) {
    // A square on its tip, half diagonal 2: 8 m2, of which each corner beyond 1 m is 1 m2.
    const Polygon tip = ring({{-2, 0}, {0, 2}, {2, 0}, {0, -2}});
    EXPECT_DOUBLE_EQ(clipped_area(tip, {-1, -1}, {1, 1}), 4.0);
    EXPECT_DOUBLE_EQ(clipped_area(tip, {-1, -5}, {1, 5}), 6.0);
    EXPECT_DOUBLE_EQ(clipped_area(tip, {0, 0}, {5, 5}), 2.0);
}

TEST(PolygonClip, TheTurnOfTheRingDoesNotMatter) {
    const Polygon one = ring({{-2, 0}, {0, 2}, {2, 0}, {0, -2}});
    const Polygon other = ring({{-2, 0}, {0, -2}, {2, 0}, {0, 2}});
    EXPECT_DOUBLE_EQ(polygon_area(polygon_clip(one, {0, -1}, {3, 3})),
                     -polygon_area(polygon_clip(other, {0, -1}, {3, 3})));
}

TEST(PolygonClip, ConcavePolygonInTwoPiecesHasTheSumOfTheirAreas) {
    // A U whose legs, 1 m wide, reach into the rectangle, its bar does not.
    const Polygon u = ring({{0, 0}, {0, 5}, {1, 5}, {1, 1}, {4, 1}, {4, 5}, {5, 5}, {5, 0}});
    EXPECT_DOUBLE_EQ(clipped_area(u, {0, 2}, {5, 4}), 4.0);
}

TEST(PolygonClip, CutPointsCarryTheirSide) {
    const Polygon piece = polygon_clip(ring({{0, 0}, {0, 1}, {4, 1}, {4, 0}}), {1, -1}, {3, 2});
    ASSERT_EQ(piece.points.size(), 4U);
    for (const PolygonPoint& p : piece.points) {
        EXPECT_TRUE(p.cut);
        EXPECT_EQ(p.line, p.x == 1.0 ? low_x_side : high_x_side);
    }
}

TEST(PolygonClip, CellsShareOutTheWholeArea) {
    const Polygon star =
        ring({{0.1, 0.2}, {1.3, 4.9}, {2.2, 1.7}, {4.8, 2.4}, {2.9, 0.9}, {3.3, 0}});
    double sum = 0;
    for (int i = 0; i < 5; ++i) {
        for (int j = 0; j < 5; ++j) {
            sum += polygon_area(polygon_clip(star, {1.0 * i, 1.0 * j}, {i + 1.0, j + 1.0}));
        }
    }
    EXPECT_NEAR(sum, polygon_area(star), 1e-13);
}

class GridLineCrossing : public testing::Test {
 protected:
    GridLineCrossing() { set_grid_lines(lines, {0, 10, 20}, {0, 5, 10}); }
    GridLines lines;
};

TEST_F(GridLineCrossing, SolvedCrossing) {
    const GridLineCross cross = grid_line_cross(lines, {10, 0}, {10, 10}, {8, 4}, {14, 7});
    EXPECT_DOUBLE_EQ(cross.point.x, 10.0);
    EXPECT_DOUBLE_EQ(cross.point.y, 5.0);
    EXPECT_EQ(cross.code, 4);
    EXPECT_EQ(cross.i, 2);
    EXPECT_EQ(cross.j, 2);
}

TEST_F(GridLineCrossing, SkewLinesMeetWhereBothEquationsHold) {
    // y = x - 2 from (3, 1), and y = 13 - 2 x from (4, 5): both at (5, 3).
    const GridLineCross cross = grid_line_cross(lines, {3, 1}, {9, 7}, {4, 5}, {6, 1});
    EXPECT_DOUBLE_EQ(cross.point.x, 5.0);
    EXPECT_DOUBLE_EQ(cross.point.y, 3.0);
}

TEST_F(GridLineCrossing, ParallelsFallBackToTheSearch) {
    const struct {
        PlanPoint at;
        int code, i, j;
    } cases[] = {{{3, 2}, 0, 1, 1},
                 {{3, 5}, 1, 1, 2},
                 {{10, 2}, 2, 2, 1},
                 {{20, 10}, 3, 3, 3},
                 {{-1, -1}, 0, 0, 0}};
    for (const auto& c : cases) {
        CaptureStdout();
        const GridLineCross cross =
            grid_line_cross(lines, {10, 0}, {10, 10}, c.at, {c.at.x, c.at.y + 1});
        EXPECT_EQ(GetCapturedStdout(), "Error[212]: ZERO DIVISION.\n");
        EXPECT_EQ(cross.code, c.code);
        EXPECT_EQ(cross.i, c.i);
        EXPECT_EQ(cross.j, c.j);
        EXPECT_EQ(cross.point.x, c.at.x);
    }
}

TEST_F(GridLineCrossing, LinesWithoutLengthStop) {
    CaptureStdout();
    EXPECT_EQ(test::stop_code_of([&] {
                  grid_line_cross(lines, {1, 1}, {1, 1}, {0, 0}, {1, 0});
              }),
              210);
    EXPECT_EQ(GetCapturedStdout(), "Error[210]: Length of input grid line is ZERO.\n");
    CaptureStdout();
    EXPECT_EQ(test::stop_code_of([&] {
                  grid_line_cross(lines, {0, 0}, {1, 1}, {2, 2}, {2, 2});
              }),
              211);
    EXPECT_EQ(GetCapturedStdout(), "Error[211]: Length of input polygon segment is ZERO.\n");
}

}  // namespace
}  // namespace torvex
