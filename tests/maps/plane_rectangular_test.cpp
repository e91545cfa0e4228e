#include "maps/plane_rectangular.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "maps/map_texts.hpp"
#include "maps/plane_points.hpp"

namespace torvex {
namespace {

using test::stop_of;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

constexpr double pi = std::numbers::pi;
constexpr double degree = pi / 180.0;

PlaneSystem zone_system(int zone) {
    CaptureStdout();
    PlaneSystem system;
    set_coordinate_system(system, zone);
    GetCapturedStdout();
    return system;
}

PlanePoint at_degrees(double lon, double lat) {
    PlanePoint point;
    point.lon = {lon, 0, 0};
    point.lat = {lat, 0, 0};
    return point;
}

// Meridian arc by Simpson's rule on the radius of curvature.
double arc_by_quadrature(const PlaneSystem& s, double from, double to) {
    const int steps = 2000;
    const double h = (to - from) / steps;
    const auto radius = [&s](double phi) {
        return s.a * (1.0 - s.e2) / std::pow(1.0 - s.e2 * std::sin(phi) * std::sin(phi), 1.5);
    };
    double sum = radius(from) + radius(to);
    for (int n = 1; n < steps; ++n) {
        sum += radius(from + n * h) * (n % 2 == 1 ? 4.0 : 2.0);
    }
    return sum * h / 3.0;
}

TEST(PlaneSystem, DerivedValuesOfTheEllipsoid) {
    const PlaneSystem s = zone_system(9);
    EXPECT_DOUBLE_EQ(s.a, 6377397.155);
    EXPECT_DOUBLE_EQ(s.f, 1.0 / 299.152813);
    EXPECT_NEAR(s.b, 6356078.963, 1.0e-3);  // published polar radius
    EXPECT_NEAR(s.e2, 1.0 - s.b * s.b / (s.a * s.a), 1.0e-15);
    EXPECT_NEAR(s.et2, s.a * s.a / (s.b * s.b) - 1.0, 1.0e-15);
    EXPECT_DOUBLE_EQ(s.e * s.e, s.e2);
    EXPECT_DOUBLE_EQ(s.et * s.et, s.et2);
}

TEST(PlaneSystem, MeridianSeriesBeginsWithItsPublishedTerms) {
    const PlaneSystem s = zone_system(9);
    const double q = s.e2;
    const double k = s.a * (1.0 - q);
    EXPECT_NEAR(s.c(1) / k,
                1.0 + q * (3.0 / 4 + q * (45.0 / 64 + q * (175.0 / 256 + q * 11025.0 / 16384))),
                1.0e-11);
    EXPECT_NEAR(s.c(2) / k,
                -q * (3.0 / 4 + q * (15.0 / 16 + q * (525.0 / 512 + q * 2205.0 / 2048))) / 2,
                1.0e-11);
    EXPECT_NEAR(s.c(3) / k, q * q * (15.0 / 64 + q * (105.0 / 256 + q * 2205.0 / 4096)) / 4,
                1.0e-11);
    EXPECT_NEAR(s.c(4) / k, -q * q * q * (35.0 / 512 + q * 315.0 / 2048) / 6, 1.0e-12);
    EXPECT_NEAR(s.c(5) / k, std::pow(q, 4) * 315.0 / 16384 / 8, 1.0e-13);
    EXPECT_NEAR(s.c(6) / k, -std::pow(q, 5) * 693.0 / 131072 / 10, 1.0e-15);
}

TEST(PlaneSystem, MeridianArcAgreesWithQuadrature) {
    const PlaneSystem s = zone_system(9);
    for (const double to : {-80.0, -10.0, 20.0, 36.5, 45.0, 89.0}) {
        EXPECT_NEAR(meridian_arc(s, 36.0 * degree, to * degree),
                    arc_by_quadrature(s, 36.0 * degree, to * degree), 1.0e-6)
            << to;
    }
}

TEST(PlaneSystem, EachZoneHasItsOrigin) {
    for (int zone = 1; zone <= 19; ++zone) {
        const PlaneSystem s = zone_system(zone);
        EXPECT_EQ(s.system_id, zone);
        EXPECT_NEAR(s.origin_lat_rad, test::zone_origin(zone).lat * degree, 1.0e-14);
        EXPECT_NEAR(s.origin_lon_rad, test::zone_origin(zone).lon * degree, 1.0e-14);
        PlanePoint point;
        point.lon = s.origin_lon;
        point.lat = s.origin_lat;
        geographic_to_plane(s, point);
        EXPECT_NEAR(point.x, 0.0, 1.0e-9);
        EXPECT_NEAR(point.y, 0.0, 1.0e-9);
        EXPECT_NEAR(point.scale, 0.9999, 1.0e-15);
    }
}

TEST(PlaneSystem, TellsItsCentre) {
    CaptureStdout();
    PlaneSystem system;
    set_coordinate_system(system, 9);
    EXPECT_EQ(GetCapturedStdout(),
              "Center of coordinate system [9]\n"
              "Lon: 139 50  0.00000 E\n"
              "Lat:  36  0  0.00000 N\n");
}

TEST(PlaneSystem, AnotherZoneIsWarnedOfAndTaken) {
    PlaneSystem system = zone_system(9);
    CaptureStdout();
    set_coordinate_system(system, 12);
    EXPECT_EQ(GetCapturedStdout(),
              "Warning: Coordinate system ID is already set.\n"
              "Now changed from [9] to [12]\n"
              "Center of coordinate system [12]\n"
              "Lon: 142 15  0.00000 E\n"
              "Lat:  44  0  0.00000 N\n");
    PlanePoint here = at_degrees(142.25, 44.5);
    geographic_to_plane(system, here);
    EXPECT_NEAR(here.y, 0.0, 1.0e-9);
}

TEST(PlaneSystem, UnknownZonesAreRefused) {
    for (const int id : {0, -1, 20, std::numeric_limits<int>::max()}) {
        PlaneSystem system;
        EXPECT_EQ(stop_of([&] { set_coordinate_system(system, id); }).code(), 1) << id;
        EXPECT_EQ(system.system_id, 0);
    }
}

TEST(PlaneConversion, StopsBeforeAZoneIsSet) {
    const PlaneSystem system;
    PlanePoint point;
    for (const auto convert : {geographic_to_plane, plane_to_geographic}) {
        CaptureStdout();
        const Stop s = stop_of([&] { convert(system, point); });
        EXPECT_EQ(GetCapturedStdout(), "Please initialize module.\n");
        EXPECT_EQ(s.code(), 1);
        EXPECT_EQ(s.reason(), "Please initialize module.");
    }
}

TEST(PlaneConversion, CentralMeridianIsTheXAxis) {
    const PlaneSystem s = zone_system(9);
    for (const double lat : {24.0, 35.5, 36.0, 44.25}) {
        PlanePoint point = at_degrees(139.0, lat);
        point.lon = {139, 50, 0};
        geographic_to_plane(s, point);
        EXPECT_EQ(point.y, 0.0);
        EXPECT_EQ(point.convergence, 0.0);
        EXPECT_NEAR(point.x, 0.9999 * arc_by_quadrature(s, 36.0 * degree, lat * degree), 1.0e-6);
    }
}

TEST(PlaneConversion, EastIsPositiveAndTheMeridianItsMirror) {
    const PlaneSystem s = zone_system(6);
    PlanePoint east = at_degrees(137.0, 36.5);
    PlanePoint west = at_degrees(135.0, 36.5);
    geographic_to_plane(s, east);
    geographic_to_plane(s, west);
    EXPECT_GT(east.y, 80.0e3);
    EXPECT_GT(east.convergence, 0.0);
    EXPECT_NEAR(east.y, -west.y, 1.0e-7);
    EXPECT_NEAR(east.x, west.x, 1.0e-7);
    EXPECT_NEAR(east.convergence, -west.convergence, 1.0e-14);
}

TEST(PlaneConversion, ConvergenceAndScaleAreThoseOfTheMapItself) {
    const PlaneSystem s = zone_system(9);
    const double step = 1.0e-3;  // [deg]
    for (const double lon : {138.6, 139.5, 140.9}) {
        PlanePoint here = at_degrees(lon, 37.2);
        PlanePoint north = at_degrees(lon, 37.2 + step);
        PlanePoint south = at_degrees(lon, 37.2 - step);
        geographic_to_plane(s, here);
        geographic_to_plane(s, north);
        geographic_to_plane(s, south);
        // True north seen from the x axis lies turned back by the convergence.
        const double direction = std::atan2(north.y - south.y, north.x - south.x);
        EXPECT_NEAR(here.convergence, -direction, 1.0e-9);
        const double on_ground =
            arc_by_quadrature(s, (37.2 - step) * degree, (37.2 + step) * degree);
        const double in_plane = std::hypot(north.x - south.x, north.y - south.y);
        EXPECT_NEAR(here.scale, in_plane / on_ground, 1.0e-8);
    }
}

TEST(PlaneConversion, ThereAndBackAgain) {
    for (int zone = 1; zone <= 19; ++zone) {
        const PlaneSystem s = zone_system(zone);
        const test::ZoneOrigin origin = test::zone_origin(zone);
        for (int m = -5; m <= 5; ++m) {
            for (int n = -4; n <= 4; ++n) {
                PlanePoint there = at_degrees(origin.lon + 0.3 * m, origin.lat + 1.75 * n);
                geographic_to_plane(s, there);
                PlanePoint back;
                back.x = there.x;
                back.y = there.y;
                plane_to_geographic(s, back);
                EXPECT_NEAR(radians_of(back.lat), radians_of(there.lat), 2.0e-11);
                EXPECT_NEAR(radians_of(back.lon), radians_of(there.lon), 2.0e-11);
                EXPECT_NEAR(back.convergence, there.convergence, 1.0e-10);
                EXPECT_NEAR(back.scale, there.scale, 1.0e-12);
            }
        }
    }
}

TEST(PlaneConversion, AgreesWithTheStoredTableWithinAMillimetre) {
    const auto table = test::read_plane_points(TORVEX_PLANE_POINTS);
    ASSERT_GE(table.size(), 19U * 6U);
    PlaneSystem s;
    for (const test::PlaneReference& expected : table) {
        if (s.system_id != expected.zone) {
            s = zone_system(expected.zone);
        }
        PlanePoint point = at_degrees(expected.lon, expected.lat);
        geographic_to_plane(s, point);
        EXPECT_NEAR(point.x, expected.x, 1.0e-3);
        EXPECT_NEAR(point.y, expected.y, 1.0e-3);
        EXPECT_NEAR(point.convergence, expected.convergence, 1.0e-8);
        EXPECT_NEAR(point.scale, expected.scale, 1.0e-8);
        PlanePoint back;
        back.x = expected.x;
        back.y = expected.y;
        plane_to_geographic(s, back);
        const double millimetre = 1.0e-3 / 6.4e6;  // [rad]
        EXPECT_NEAR(radians_of(back.lat), expected.lat * degree, millimetre);
        EXPECT_NEAR(radians_of(back.lon), expected.lon * degree, millimetre);
    }
}

TEST(PlaneConversion, LongitudesMeetBehindTheDateLine) {
    const PlaneSystem s = zone_system(19);
    PlanePoint east = at_degrees(181.0, 26.0);
    PlanePoint west = at_degrees(-179.0, 26.0);
    geographic_to_plane(s, east);
    geographic_to_plane(s, west);
    EXPECT_NEAR(east.x, west.x, 1.0e-6);
    EXPECT_NEAR(east.y, west.y, 1.0e-6);
}

TEST(PlaneConversion, PointsBeyondAPoleAreRefused) {
    const PlaneSystem s = zone_system(9);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double bad : {1.0e7, -2.0e7, 1.0e300, nan}) {
        PlanePoint point;
        point.x = bad;
        EXPECT_EQ(stop_of([&] { plane_to_geographic(s, point); }).code(), 1) << bad;
    }
    PlanePoint point;
    point.y = nan;
    EXPECT_EQ(stop_of([&] { plane_to_geographic(s, point); }).code(), 1);
}

TEST(AngleTriple, RadiansAndBack) {
    EXPECT_NEAR(radians_of({139, 50, 30}), (139.0 + 50.0 / 60 + 30.0 / 3600) * degree, 1.0e-15);
    EXPECT_NEAR(radians_of({-113, -1, -30}), -113.025 * degree, 1.0e-15);
    const AngleTriple negative = triple_of(-0.508333333333333 * degree);
    EXPECT_EQ(negative(1), 0.0);
    EXPECT_EQ(negative(2), -30.0);
    EXPECT_NEAR(negative(3), -30.0, 1.0e-8);
}

TEST(AngleTriple, NegativeZeroKeepsItsSide) {
    EXPECT_LT(radians_of({-0.0, 0, 0}), 0.0);
    EXPECT_GT(radians_of({-0.0, 0, 0}), -1.0e-12);
    EXPECT_EQ(radians_of({0, 0, 0}), 0.0);
    EXPECT_GT(radians_of({-0.0, 30, 0}), 0.0);
}

TEST(PlaneDumps, TellAllValues) {
    CaptureStdout();
    dump_ellipsoid(PlaneSystem{});
    const std::string ellipsoid = GetCapturedStdout();
    EXPECT_NE(ellipsoid.find("a  :   0.6377397155000000E+07 m\n"), std::string::npos) << ellipsoid;
    PlanePoint point;
    point.lon = {-0.0, -30, -1.5};
    point.lat = {-35, -14, -59.999999};
    point.x = -1234.5;
    point.y = 66.25;
    point.convergence = degree / 2.0;
    point.scale = 0.9999;
    CaptureStdout();
    dump_point(point);
    EXPECT_EQ(GetCapturedStdout(),
              "Lon:   0 30  1.50000 W\n"
              "Lat:  35 15  0.00000 S\n"
              "x  :      -1234.5000 m\n"
              "y  :         66.2500 m\n"
              "convergence:   0.500000000 deg\n"
              "scale:   0.999900000\n");
}

// On a sphere the projection has a closed form (Lambert 1772; Snyder 1987, section 8). What the
// series leave out of it grows with the power of their first missing term; a wrong term would leave
// the power of its own.
PlaneSystem sphere() {
    PlaneSystem s;
    s.m0 = 1.0;
    s.c = {};
    s.c(1) = s.a;
    s.system_id = 1;
    return s;
}

double order_of(double error, double error_twice_as_far) {
    return std::log2(std::abs(error_twice_as_far / error));
}

PlanePoint plane_error_on_sphere(double lat, double lon) {
    const PlaneSystem s = sphere();
    PlanePoint point = at_degrees(lon, lat);
    geographic_to_plane(s, point);
    const double phi = lat * degree;
    const double lambda = lon * degree;
    const double east = std::cos(phi) * std::sin(lambda);
    point.x -= s.a * std::atan2(std::tan(phi), std::cos(lambda));
    point.y -= s.a * std::atanh(east);
    point.convergence -= std::atan(std::sin(phi) * std::tan(lambda));
    point.scale -= 1.0 / std::sqrt(1.0 - east * east);
    return point;
}

TEST(PlaneConversion, SeriesToThePlaneHaveTheirOrderOnASphere) {
    for (const double lat : {30.0, 50.0, 65.0}) {
        const PlanePoint near = plane_error_on_sphere(lat, 8.0);
        const PlanePoint far = plane_error_on_sphere(lat, 16.0);
        EXPECT_NEAR(order_of(near.x, far.x), 10.0, 0.3) << lat;
        EXPECT_NEAR(order_of(near.y, far.y), 9.0, 0.3) << lat;
        EXPECT_NEAR(order_of(near.convergence, far.convergence), 9.0, 0.3) << lat;
        EXPECT_NEAR(order_of(near.scale, far.scale), 8.0, 0.3) << lat;
    }
}

struct AngleErrors {
    double lat;  // [rad]
    double lon;
};

AngleErrors geographic_error_on_sphere(double foot_lat, double y_over_radius) {
    const PlaneSystem s = sphere();
    PlanePoint point;
    point.x = s.a * foot_lat * degree;
    point.y = s.a * y_over_radius;
    plane_to_geographic(s, point);
    const double foot = foot_lat * degree;
    return {radians_of(point.lat) - std::asin(std::sin(foot) / std::cosh(y_over_radius)),
            radians_of(point.lon) - std::atan2(std::sinh(y_over_radius), std::cos(foot))};
}

TEST(PlaneConversion, SeriesFromThePlaneHaveTheirOrderOnASphere) {
    for (const double lat : {30.0, 50.0, 65.0}) {
        const AngleErrors near = geographic_error_on_sphere(lat, 0.1);
        const AngleErrors far = geographic_error_on_sphere(lat, 0.2);
        EXPECT_NEAR(order_of(near.lat, far.lat), 10.0, 0.3) << lat;
        EXPECT_NEAR(order_of(near.lon, far.lon), 9.0, 0.3) << lat;
    }
}

}  // namespace
}  // namespace torvex
