// The plane coordinate system against PROJ, over each zone and up to 130 km from its meridian.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "maps/plane_by_proj.hpp"
#include "maps/plane_rectangular.hpp"

namespace torvex {
namespace {

using test::PlaneReference;

constexpr double degree = std::numbers::pi / 180.0;
constexpr double metres_per_degree = 111.2e3;

PlaneSystem zone_system(int zone) {
    ::testing::internal::CaptureStdout();
    PlaneSystem system;
    set_coordinate_system(system, zone);
    ::testing::internal::GetCapturedStdout();
    return system;
}

TEST(PlaneByProj, StoredTableIsUpToDate) {
    const auto stored = test::read_plane_points(TORVEX_PLANE_POINTS);
    const auto fresh = test::plane_points_by_proj();
    ASSERT_EQ(stored.size(), fresh.size());
    for (std::size_t n = 0; n < fresh.size(); ++n) {
        EXPECT_EQ(stored[n].zone, fresh[n].zone);
        EXPECT_NEAR(stored[n].lon, fresh[n].lon, 1.0e-12);
        EXPECT_NEAR(stored[n].lat, fresh[n].lat, 1.0e-12);
        EXPECT_NEAR(stored[n].x, fresh[n].x, 1.0e-4);
        EXPECT_NEAR(stored[n].y, fresh[n].y, 1.0e-4);
        EXPECT_NEAR(stored[n].convergence, fresh[n].convergence, 1.0e-9);
        EXPECT_NEAR(stored[n].scale, fresh[n].scale, 1.0e-9);
    }
}

TEST(PlaneByProj, ForwardAgreesWithinAMillimetre) {
    double worst = 0;
    for (int zone = 1; zone <= 19; ++zone) {
        const PlaneSystem system = zone_system(zone);
        const test::ProjZone by_proj(zone);
        const test::ZoneOrigin origin = test::zone_origin(zone);
        for (int m = -5; m <= 5; ++m) {
            const double lat = origin.lat + 1.6 * m;
            const double reach = 130.0e3 / (metres_per_degree * std::cos(lat * degree));
            for (int n = -4; n <= 4; ++n) {
                const double lon = origin.lon + 0.25 * n * reach;
                const PlaneReference expected = by_proj.forward(lon, lat);
                PlanePoint point;
                point.lon = {lon, 0, 0};
                point.lat = {lat, 0, 0};
                geographic_to_plane(system, point);
                worst = std::max(worst, std::hypot(point.x - expected.x, point.y - expected.y));
                EXPECT_NEAR(point.convergence, expected.convergence, 1.0e-8);
                EXPECT_NEAR(point.scale, expected.scale, 1.0e-8);
            }
        }
    }
    EXPECT_LT(worst, 1.0e-3);
    RecordProperty("worst_m", std::to_string(worst));
}

TEST(PlaneByProj, InverseAgreesWithinAMillimetre) {
    double worst = 0;
    for (int zone = 1; zone <= 19; ++zone) {
        const PlaneSystem system = zone_system(zone);
        const test::ProjZone by_proj(zone);
        for (int m = -5; m <= 5; ++m) {
            for (int n = -4; n <= 4; ++n) {
                const double x = 160.0e3 * m;
                const double y = 32.5e3 * n;
                const PlaneReference expected = by_proj.inverse(x, y);
                PlanePoint point;
                point.x = x;
                point.y = y;
                plane_to_geographic(system, point);
                const double north =
                    (radians_of(point.lat) / degree - expected.lat) * metres_per_degree;
                const double east = (radians_of(point.lon) / degree - expected.lon) *
                                    metres_per_degree * std::cos(expected.lat * degree);
                worst = std::max(worst, std::hypot(north, east));
                EXPECT_NEAR(point.convergence, expected.convergence, 1.0e-8);
                EXPECT_NEAR(point.scale, expected.scale, 1.0e-8);
            }
        }
    }
    EXPECT_LT(worst, 1.0e-3);
    RecordProperty("worst_m", std::to_string(worst));
}

}  // namespace
}  // namespace torvex
