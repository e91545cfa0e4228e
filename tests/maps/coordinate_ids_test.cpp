#include "maps/coordinate_ids.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "support/failures.hpp"

namespace torvex {
namespace {

CoordinateFrame frame_of(int id) {
    testing::internal::CaptureStdout();
    const CoordinateFrame frame = coordinate_frame(id, "test");
    testing::internal::GetCapturedStdout();
    return frame;
}

TEST(CoordinateIds, DegreesBecomeMinutes) {
    const MinutesOfArc at = minutes_of_arc(frame_of(0), -70.5, 33.25);
    EXPECT_EQ(at.lon, -4230.0);
    EXPECT_EQ(at.lat, 1995.0);
}

// X and Y by PROJ (gdaltransform) for EPSG:32654, 32719, 32631 and 6677.
TEST(CoordinateIds, ProjectedSystemsAgreeWithProj) {
    const struct {
        int id;
        double lon, lat, X, Y;
    } cases[] = {{154, 138.3, 36.2, 257243.9417, 4009511.3494},
                 {219, -70.5, -33.4, 360505.6199, 6303362.2881},
                 {131, 2.7, 89.0, 499415.4386, 9886317.2858},
                 {1009, 139.2, 35.5, -57456.5861, -55287.2302}};
    for (const auto& c : cases) {
        const CoordinateFrame frame = frame_of(c.id);
        const FramePoint forth = frame_point(frame, {60 * c.lon, 60 * c.lat});
        EXPECT_NEAR(forth.X, c.X, 1e-3) << c.id;
        EXPECT_NEAR(forth.Y, c.Y, 1e-3) << c.id;
        const MinutesOfArc back = minutes_of_arc(frame, c.X, c.Y);
        const double metre = 1 / 1852.0;  // in minutes of latitude
        EXPECT_NEAR(back.lat, 60 * c.lat, 0.002 * metre) << c.id;
        EXPECT_NEAR((back.lon - 60 * c.lon) * std::cos(c.lat / 57.29578), 0, 0.002 * metre) << c.id;
    }
}

TEST(CoordinateIds, BesselZonesAreThoseOfThePlaneModule) {
    const CoordinateFrame frame = frame_of(9);
    PlanePoint point;
    point.lon = {139, 12, 0};
    point.lat = {35, 30, 0};
    geographic_to_plane(frame.system, point);
    // Easting is the module's y, northing its x.
    const MinutesOfArc at = minutes_of_arc(frame, point.y, point.x);
    EXPECT_NEAR(at.lon, 139.2 * 60, 1e-8);
    EXPECT_NEAR(at.lat, 35.5 * 60, 1e-8);
}

TEST(CoordinateIds, UnknownNumbersAreRefused) {
    for (const int id : {-2, 20, 100, 161, 200, 261, 1000, 1020}) {
        EXPECT_EQ(test::stop_code_of([id] { coordinate_frame(id, "shp_def_cs"); }), 1) << id;
    }
    for (const int id : {-1, 0, 1, 19, 101, 160, 201, 260, 1001, 1019}) {
        EXPECT_EQ(test::stop_code_of([id] { frame_of(id); }), 0) << id;
    }
}

TEST(CoordinateIds, PointBeyondAPoleStops) {
    EXPECT_EQ(test::stop_code_of([] { minutes_of_arc(frame_of(131), 500000, 2.0e7); }), 1);
}

}  // namespace
}  // namespace torvex
