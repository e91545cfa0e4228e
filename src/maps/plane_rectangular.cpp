// Set-up of a zone of the plane rectangular coordinate system, and what both conversions share.
//
// Meridian arc on the eccentricity squared e2, to its eighth power:
//
//   dS/dphi = a (1 - e2) (1 - e2 sin^2 phi)^(-3/2)
//   (1 - e2 sin^2 phi)^(-3/2) = sum over n of w(n) sin^2n phi,  w(n) = (2n+1)!! / (2n)!! e2^n
//   sin^2n phi = 4^-n (C(2n, n) + 2 sum over m of (-1)^m C(2n, n-m) cos 2m phi)
//
// so that the leading coefficient is 1 + 3/4 e2 + 45/64 e2^2 + 175/256 e2^3 + 11025/16384 e2^4 ...

#include "maps/plane_rectangular.hpp"

#include <array>
#include <cmath>
#include <numbers>
#include <string>

#include "base/edit.hpp"
#include "base/run_log.hpp"
#include "base/stop.hpp"

namespace torvex {

namespace {

struct Origin {
    double lat_degrees;
    double lon_degrees;
    double lon_minutes;
};

constexpr std::array<Origin, 19> origins{{
    {33, 129, 30}, {33, 131, 0},  {36, 132, 10}, {33, 133, 30}, {36, 134, 20},
    {36, 136, 0},  {36, 137, 10}, {36, 138, 30}, {36, 139, 50}, {40, 140, 50},
    {44, 140, 15}, {44, 142, 15}, {44, 144, 15}, {26, 142, 0},  {26, 127, 30},
    {26, 124, 0},  {26, 131, 0},  {20, 136, 0},  {26, 154, 0},
}};

FixedArray<double, 9> meridian_coefficients(double a, double e2) {
    constexpr int highest = 8;
    FixedArray<double, 9> c;
    double w = 1.0;
    for (int n = 0; n <= highest; ++n) {
        if (n > 0) {
            w *= (2.0 * n + 1.0) / (2.0 * n) * e2;
        }
        // Binomials C(2n, n-m) 4^-n, from m = n down to 0.
        double binomial = std::pow(0.25, n);
        for (int m = n; m >= 0; --m) {
            const double sign = m % 2 == 0 ? 1.0 : -1.0;
            c(m + 1) += w * binomial * (m == 0 ? 1.0 : 2.0 * sign);
            const int chosen = n - m;
            binomial *= static_cast<double>(2 * n - chosen) / (chosen + 1);
        }
    }
    c(1) *= a * (1.0 - e2);
    for (int m = 1; m <= highest; ++m) {
        c(m + 1) *= a * (1.0 - e2) / (2.0 * m);
    }
    return c;
}

double minutes_of(const AngleTriple& angle) {
    return angle(1) * 60.0 + angle(2) + angle(3) / 60.0;
}

std::string angle_line(std::string_view label, const AngleTriple& angle, std::string_view letters) {
    // Counted in the last digit shown, so that 59.999999 seconds carry over.
    constexpr long long per_second = 100000;
    const double radians = radians_of(angle);
    const long long ticks =
        std::llround(std::abs(radians) * 648000.0 / std::numbers::pi * per_second);
    const long long seconds = ticks / per_second;
    return std::string(label) + edit::I(seconds / 3600, 4) + edit::I(seconds / 60 % 60, 3) +
           edit::F(static_cast<double>(ticks % (60 * per_second)) / per_second, 9, 5) + " " +
           (radians < 0.0 ? letters[1] : letters[0]);
}

std::string lon_line(const AngleTriple& lon) {
    return angle_line("Lon:", lon, "EW");
}

std::string lat_line(const AngleTriple& lat) {
    return angle_line("Lat:", lat, "NS");
}

}  // namespace

double radians_of(const AngleTriple& angle) {
    const double t = minutes_of(angle);
    if (t == 0.0 && (std::signbit(angle(1)) || std::signbit(angle(2)) || std::signbit(angle(3)))) {
        constexpr double tiny = 1.0e-15;
        return -tiny;
    }
    return 2.0 * t * std::numbers::pi / 21600.0;
}

AngleTriple triple_of(double radians) {
    const double degrees = radians * 180.0 / std::numbers::pi;
    const double minutes = (degrees - std::trunc(degrees)) * 60.0;
    return {std::trunc(degrees), std::trunc(minutes), (minutes - std::trunc(minutes)) * 60.0};
}

double meridian_arc(const PlaneSystem& system, double from, double to) {
    double arc = system.c(1) * (to - from);
    for (int n = 1; n <= 8; ++n) {
        arc += system.c(n + 1) * (std::sin(2.0 * n * to) - std::sin(2.0 * n * from));
    }
    return arc;
}

void prepare_system(PlaneSystem& system, int system_id, const AngleTriple& lon,
                    const AngleTriple& lat) {
    system.f = 1.0 / system.F;
    system.b = (1.0 - system.f) * system.a;
    system.e2 = 2.0 * system.f - system.f * system.f;
    system.e = std::sqrt(system.e2);
    system.et2 = system.e2 / (1.0 - system.e2);
    system.et = std::sqrt(system.et2);
    system.c = meridian_coefficients(system.a, system.e2);
    system.system_id = system_id;
    system.origin_lon = lon;
    system.origin_lat = lat;
    system.origin_lon_rad = radians_of(lon);
    system.origin_lat_rad = radians_of(lat);
}

void set_coordinate_system(PlaneSystem& system, int system_id) {
    const int zones = static_cast<int>(origins.size());
    if (system_id < 1 || system_id > zones) {
        stop(1, "Unknown coordinate system [" + std::to_string(system_id) + "]", {},
             "its zones are numbered from 1 to " + std::to_string(zones));
    }
    if (system.system_id != 0 && system.system_id != system_id) {
        console("Warning: Coordinate system ID is already set.");
        console("Now changed from [" + std::to_string(system.system_id) + "] to [" +
                std::to_string(system_id) + "]");
    }
    const Origin& origin = origins[static_cast<std::size_t>(system_id - 1)];
    prepare_system(system, system_id, {origin.lon_degrees, origin.lon_minutes, 0.0},
                   {origin.lat_degrees, 0.0, 0.0});
    console("Center of coordinate system [" + std::to_string(system_id) + "]");
    console(lon_line(system.origin_lon));
    console(lat_line(system.origin_lat));
}

void dump_ellipsoid(const PlaneSystem& system) {
    const auto line = [](std::string_view label, double value, std::string_view unit) {
        console(std::string(label) + edit::E(value, 25, 16) + std::string(unit));
    };
    line("a  :", system.a, " m");
    line("b  :", system.b, " m");
    line("F  :", system.F, "");
    line("f  :", system.f, "");
    line("e  :", system.e, "");
    line("e2 :", system.e2, "");
    line("et :", system.et, "");
    line("et2:", system.et2, "");
    line("m0 :", system.m0, "");
}

void dump_point(const PlanePoint& point) {
    console(lon_line(point.lon));
    console(lat_line(point.lat));
    console("x  :" + edit::F(point.x, 16, 4) + " m");
    console("y  :" + edit::F(point.y, 16, 4) + " m");
    console("convergence:" + edit::F(point.convergence * 180.0 / std::numbers::pi, 14, 9) + " deg");
    console("scale:" + edit::F(point.scale, 14, 9));
}

}  // namespace torvex
