#include "maps/conversion/lay_over.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "canopy/clip_entities_to_cells.hpp"

namespace torvex {
namespace {

// Four samples by three, 100 m apart, the second of the second row at the centre.
DegreeRaster raster(float z0) {
    DegreeRaster map;
    map.d_lon = 0.1;
    map.d_lat = 0.05;
    map.base_lon = 600 - 0.1;
    map.base_lat = 300 - 0.05;
    map.values.allocate(4, 3, z0);
    return map;
}
constexpr MetresPerMinute metres{1000.0F, 2000.0F};

CanopyEntity box(double x0, double y0, double x1, double y1, float z0) {
    CanopyEntity entity;
    entity.attributes.z0 = z0;
    entity.attributes.luid = 7;
    entity.attributes.h = 4;
    entity.part_start = {0};
    entity.x = {x0, x0, x1, x1, x0};
    entity.y = {y0, y1, y1, y0, y0};
    return entity;
}

ColumnLists clipped(const std::vector<CanopyEntity>& entities, const DegreeRaster& map) {
    const SampleLines lines = sample_lines(map, 600, 300, metres);
    return clip_entities_to_cells(entities, lines.x, lines.y, false);
}

TEST(LayOver, LinesStandHalfWayBetweenTheSamples) {
    const SampleLines lines = sample_lines(raster(0.03F), 600, 300, metres);
    ASSERT_EQ(lines.x.size(), 5);
    ASSERT_EQ(lines.y.size(), 4);
    EXPECT_NEAR(double{lines.x(1)}, -150, 1e-3);
    EXPECT_NEAR(double{lines.x(5)}, 250, 1e-3);
    EXPECT_NEAR(double{lines.y(1)}, -150, 1e-3);
    EXPECT_NEAR(double{lines.y(4)}, 150, 1e-3);
}

// The edge of a wood goes through the sample at the centre: half of its rectangle is covered.
// R(0.03) = 0.029618, R(0.5) = 0.111428; their mean is that of 0.23158 m.
TEST(LayOver, AnEdgeThroughASampleGivesTheMeanOfTheDrag) {
    DegreeRaster map = raster(0.03F);
    lay_over(clipped({box(0, -1000, 1000, 1000, 0.5F)}, map), map);
    EXPECT_EQ(map.values(1, 2), 0.03F);
    EXPECT_NEAR(double{map.values(2, 2)}, 0.23158, 1e-5);
    EXPECT_NEAR(double{map.values(3, 2)}, 0.5, 1e-6);
    EXPECT_NEAR(double{map.values(4, 3)}, 0.5, 1e-6);
}

TEST(LayOver, SharesAboveOneAreScaled) {
    DegreeRaster map = raster(1.0F);
    const CanopyEntity all = box(-1000, -1000, 1000, 1000, 0.1F);
    const CanopyEntity other = box(-1000, -1000, 1000, 1000, 0.4F);
    lay_over(clipped({all, other, all}, map), map);
    const auto R = [](double z0) { return 1.0 / std::pow(std::log(10.0 / z0), 2); };
    const double mean = (2 * R(0.1) + R(0.4)) / 3;
    EXPECT_NEAR(double{map.values(2, 2)}, 10.0 / std::exp(1.0 / std::sqrt(mean)), 1e-6);
}

// What a hole leaves of a sample's rectangle stays with the polygon round it.
TEST(LayOver, AHoleShowsTheRaster) {
    DegreeRaster map = raster(0.03F);
    CanopyEntity donut = box(-1000, -1000, 1000, 1000, 0.5F);
    donut.part_start.push_back(5);
    // Anticlockwise: the rectangle of the sample at the centre, and half of its eastern neighbour.
    for (const auto& [x, y] : {std::pair{-50, -50}, {100, -50}, {100, 50}, {-50, 50}, {-50, -50}}) {
        donut.x.push_back(x);
        donut.y.push_back(y);
    }
    lay_over(clipped({donut}, map), map);
    EXPECT_NEAR(double{map.values(2, 2)}, 0.03, 1e-4);
    EXPECT_NEAR(double{map.values(3, 2)}, 0.23158, 1e-4);
    EXPECT_NEAR(double{map.values(1, 2)}, 0.5, 1e-6);
}

TEST(LayOver, LandUseAndHeightOfTheSamples) {
    const DegreeRaster map = raster(0.03F);
    CanopyEntity tall = box(-1000, -1000, 0, 1000, 0.5F);
    tall.attributes.h = 20;
    tall.attributes.luid = 5;
    const ColumnLists pieces = clipped({tall, box(-60, -1000, 60, 1000, 0.5F)}, map);
    const Array2<std::int32_t> luid = land_use_of(pieces, map);
    EXPECT_EQ(luid(1, 1), 7);  // the last of two
    EXPECT_EQ(luid(4, 1), 0);
    Field2 height(4, 3);
    raise_heights(pieces, height);
    EXPECT_EQ(height(1, 1), 20.0F);
    EXPECT_EQ(height(3, 1), 4.0F);
    EXPECT_EQ(height(4, 1), 0.0F);
}

}  // namespace
}  // namespace torvex
