// Metres per minute of arc and positions round the case centre.
//
//   W^2 = 1 - e^2 sin^2 phi
//   lon = cos(phi) a / W * (one minute)              prime vertical
//   lat = (one minute) * a (1 - e^2) / (W W^2)       meridian
//   x   = East cos r - North sin r,  y = East sin r + North cos r,  r = wind direction - 270 deg
//
// Single precision throughout, except that differences of angles are formed in double: a minute of
// arc in single precision would be good to metres only.

#include "maps/local_metric.hpp"

#include <cmath>

#include "maps/centre_rotation.hpp"

namespace torvex {

namespace {

constexpr float pi = 3.1415927F;
constexpr float minute_in_radians = 0.00029088822F;

struct Ellipsoid {
    float a;   // equatorial radius [m]
    float e2;  // eccentricity squared [-]
};

constexpr float e2_of(float inverse_flattening) {
    const float f = 1.0F / inverse_flattening;
    return 2.0F * f - f * f;
}

constexpr Ellipsoid ellipsoid(int datum) {
    switch (datum) {
        case 1:
            return {6377397.0F, e2_of(299.1528F)};
        case 2:
        case 3:
            return {6378137.0F, e2_of(298.25723F)};
        default:
            return {6378136.0F, 0.00669447F};
    }
}

}  // namespace

double minutes_of(const Triple& angle) {
    return static_cast<double>(angle(1)) * 60.0 + static_cast<double>(angle(2)) +
           static_cast<double>(angle(3)) / 60.0;
}

MetresPerMinute metres_per_minute(double lat_minutes, int datum) {
    const Ellipsoid body = ellipsoid(datum);
    const auto phi = static_cast<float>(lat_minutes / 60.0 * static_cast<double>(pi) / 180.0);
    const float sine = std::sin(phi);
    const float W2 = 1.0F - body.e2 * (sine * sine);
    const float W = std::sqrt(W2);
    return {.lon = std::cos(phi) * body.a / W * minute_in_radians,
            .lat = minute_in_radians * (body.a * (1.0F - body.e2)) / (W * W2)};
}

MeshPosition position_from_centre(double lon, double lat, double centre_lon, double centre_lat,
                                  int datum, float wind_direction) {
    const MetresPerMinute per_minute = metres_per_minute(centre_lat, datum);
    const auto east = static_cast<float>((lon - centre_lon) * static_cast<double>(per_minute.lon));
    const auto north = static_cast<float>((lat - centre_lat) * static_cast<double>(per_minute.lat));
    const auto [s, c] = centre_rotation(wind_direction);
    return {.x = east * c - north * s, .y = east * s + north * c};
}

}  // namespace torvex
