#include "maps/conversion/covered_area.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "maps/conversion/conversion_fixture.hpp"
#include "maps/local_metric.hpp"

namespace torvex {
namespace {

ConversionSettings two_kilometres() {
    ConversionSettings settings = test::small_area();
    settings.WE_LENGTH = 2000;
    settings.NS_LENGTH = 2000;
    settings.MAX_DXY = 200;
    return settings;
}

// r = 1414.214, across = 1.6 r = 2262.742, along = 3.6 r = 5091.169.
TEST(CoveredArea, HalfSizeOfAWorkedExample) {
    EXPECT_NEAR(covered_half_size(two_kilometres()), 5771.356, 0.001);
}

TEST(CoveredArea, ALongDownwindBufferCountsToo) {
    ConversionSettings settings = two_kilometres();
    settings.DOWN_BR = 2;  // 5 r along the wind
    const double r = std::sqrt(2.0) * 1000.0;
    EXPECT_NEAR(covered_half_size(settings), std::hypot(5 * r, 1.6 * r) + 200, 0.01);
}

TEST(CoveredArea, TheCoefficientOfARunTakesItsPlace) {
    ConversionSettings settings = two_kilometres();
    settings.COEF_FROM_TORVEX_BASIC = 4;
    EXPECT_NEAR(covered_half_size(settings), 2.0 * std::sqrt(2.0) * 2000.0, 0.01);
}

TEST(CoveredArea, ALargestRadiusHoldsItBack) {
    ConversionSettings settings = two_kilometres();
    settings.COEF_MAX_RAD = 2;
    EXPECT_NEAR(covered_half_size(settings), 2.0 * std::sqrt(2.0) * 1000.0, 0.01);
    settings.COEF_MAX_RAD = 100;
    EXPECT_NEAR(covered_half_size(settings), 5771.356, 0.001);
}

TEST(CoveredArea, LiesEvenlyRoundTheCentre) {
    const ConversionSettings settings = two_kilometres();
    const AreaLimits area = covered_area(settings, 2);
    const double lat = minutes_of(settings.CENT_LAT);
    const double lon = minutes_of(settings.CENT_LON);
    const MetresPerMinute m = metres_per_minute(lat, 2);
    EXPECT_NEAR((area.lat_max - lat) * static_cast<double>(m.lat), 5771.356, 0.01);
    EXPECT_NEAR((lon - area.lon_min) * static_cast<double>(m.lon), 5771.356, 0.01);
    EXPECT_NEAR(area.lat_max + area.lat_min, 2 * lat, 1e-9);
    EXPECT_NEAR(area.lon_max + area.lon_min, 2 * lon, 1e-9);
    // Another datum has minutes of another length.
    EXPECT_NE(covered_area(settings, 1).lat_max, area.lat_max);
}

}  // namespace
}  // namespace torvex
