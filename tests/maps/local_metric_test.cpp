#include "maps/local_metric.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace torvex {
namespace {

struct Reference {
    double lon;
    double lat;
};

// The same two radii of curvature in double precision, the eccentricity given.
Reference in_double(double lat_degrees, double a, double e2) {
    const double phi = lat_degrees * std::numbers::pi / 180.0;
    const double W2 = 1.0 - e2 * std::pow(std::sin(phi), 2);
    const double minute = std::numbers::pi / 10800.0;
    return {a * std::cos(phi) / std::sqrt(W2) * minute,
            a * (1.0 - e2) / std::pow(W2, 1.5) * minute};
}

double flattened(double inverse) {
    return (2.0 - 1.0 / inverse) / inverse;
}

void expect_close(MetresPerMinute value, Reference reference) {
    EXPECT_NEAR(static_cast<double>(value.lon), reference.lon, 1.0e-3);
    EXPECT_NEAR(static_cast<double>(value.lat), reference.lat, 1.0e-3);
}

TEST(MinutesOf, AddsMembersAsTheyStand) {
    EXPECT_DOUBLE_EQ(minutes_of({139.0F, 45.0F, 30.0F}), 8385.5);
    EXPECT_DOUBLE_EQ(minutes_of({-113.0F, -1.0F, -30.0F}), -6781.5);
    EXPECT_DOUBLE_EQ(minutes_of({-113.0F, 1.0F, 30.0F}), -6778.5);
    EXPECT_DOUBLE_EQ(minutes_of({0.0F, -30.0F, 0.0F}), -30.0);
    EXPECT_DOUBLE_EQ(minutes_of(Triple{}), 0.0);
}

TEST(MetresPerMinute, WorkedValues) {
    expect_close(metres_per_minute(35.0 * 60.0, 0), {1521.469, 1849.009});
    expect_close(metres_per_minute(35.0 * 60.0, 1), {1521.288, 1848.814});
    expect_close(metres_per_minute(0.0, 0), {1855.325, 1842.904});
}

TEST(MetresPerMinute, EachDatumHasItsOwnEllipsoid) {
    for (const double lat : {-78.0, -43.4, -0.5, 0.0, 12.25, 35.0, 43.4, 57.189, 80.0}) {
        expect_close(metres_per_minute(lat * 60.0, 0), in_double(lat, 6378136.0, 0.00669447));
        expect_close(metres_per_minute(lat * 60.0, 1),
                     in_double(lat, 6377397.0, flattened(299.1528)));
        expect_close(metres_per_minute(lat * 60.0, 2),
                     in_double(lat, 6378137.0, flattened(298.25723)));
    }
    EXPECT_EQ(metres_per_minute(2100.0, 2).lon, metres_per_minute(2100.0, 3).lon);
    EXPECT_EQ(metres_per_minute(2100.0, 2).lat, metres_per_minute(2100.0, 3).lat);
}

TEST(MetresPerMinute, EquatorIsRadiusTimesMinuteExactly) {
    EXPECT_EQ(metres_per_minute(0.0, 0).lon, 6378136.0F * 0.00029088822F);
    EXPECT_EQ(metres_per_minute(0.0, 1).lon, 6377397.0F * 0.00029088822F);
}

TEST(MetresPerMinute, DefaultEccentricityIsNotOneOfAFlattening) {
    // At the equator the meridian radius is a (1 - e2): e2 shows itself to seven digits.
    const MetresPerMinute m = metres_per_minute(0.0, 0);
    EXPECT_NEAR(1.0 - static_cast<double>(m.lat) / static_cast<double>(m.lon), 0.00669447, 3.0e-7);
}

// A point 2 minutes east and 3 minutes north of a centre at 35 N 139 E.
class PositionFromCentre : public ::testing::Test {
 protected:
    static MeshPosition at(float wind_direction) {
        return position_from_centre(139.0 * 60.0 + 2.0, 35.0 * 60.0 + 3.0, 139.0 * 60.0,
                                    35.0 * 60.0, 0, wind_direction);
    }
    const double east = 2.0 * 1521.469;
    const double north = 3.0 * 1849.009;
};

TEST_F(PositionFromCentre, WestWindSeesEastAheadAndNorthLeft) {
    EXPECT_NEAR(static_cast<double>(at(270.0F).x), east, 5.0e-3);
    EXPECT_NEAR(static_cast<double>(at(270.0F).y), north, 5.0e-3);
}

TEST_F(PositionFromCentre, NorthWindSeesSouthAheadAndEastLeft) {
    EXPECT_NEAR(static_cast<double>(at(0.0F).x), -north, 5.0e-3);
    EXPECT_NEAR(static_cast<double>(at(0.0F).y), east, 5.0e-3);
}

TEST_F(PositionFromCentre, AnyWindIsARotation) {
    for (int n = 0; n <= 16; ++n) {
        const float wind = 22.5F * static_cast<float>(n);
        // Unit vectors: downwind is where the wind blows to, left is a quarter turn from it.
        const double from = static_cast<double>(wind) * std::numbers::pi / 180.0;
        const double down_east = -std::sin(from);
        const double down_north = -std::cos(from);
        EXPECT_NEAR(static_cast<double>(at(wind).x), east * down_east + north * down_north, 1.0e-2)
            << wind;
        EXPECT_NEAR(static_cast<double>(at(wind).y), -east * down_north + north * down_east, 1.0e-2)
            << wind;
    }
}

TEST_F(PositionFromCentre, OnlyThreeHundredSixtyDegreesIsCleanedOfTheCosine) {
    // A point due east: x is East times the cosine alone.
    const auto x_due_east = [](float wind) {
        return position_from_centre(60.0 * 100.0, 0.0, 0.0, 0.0, 0, wind).x;
    };
    EXPECT_EQ(x_due_east(360.0F), 0.0F);
    EXPECT_NE(x_due_east(0.0F), 0.0F);
    EXPECT_NE(x_due_east(180.0F), 0.0F);
    EXPECT_NEAR(x_due_east(0.0F), 0.0F, 1.0F);
    EXPECT_NEAR(x_due_east(180.0F), 0.0F, 1.0F);
}

TEST_F(PositionFromCentre, SmallOffsetsKeepMillimetres) {
    // 0.06 seconds of arc of longitude: the difference must be formed in double.
    const MeshPosition p = position_from_centre(8340.0 + 0.001, 2100.0, 8340.0, 2100.0, 0, 270.0F);
    EXPECT_NEAR(static_cast<double>(p.x), 1.521469, 1.0e-5);
    EXPECT_EQ(p.y, 0.0F);
}

}  // namespace
}  // namespace torvex
