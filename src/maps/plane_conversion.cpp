// Geographic coordinates to plane ones and back: Gauss-Krueger projection with the scale m0 on the
// central meridian, x north, y east.
//
//   t = tan phi,  eta^2 = et2 cos^2 phi,  N = a / sqrt(1 - e2 sin^2 phi),  A = (lon - lon0) cos phi
//
//   x/m0 = S + N t (A^2/2 + A^4/24 (5 - t^2 + 9 eta^2 + 4 eta^4)
//            + A^6/720 (61 - 58 t^2 + t^4 + 270 eta^2 - 330 t^2 eta^2)
//            + A^8/40320 (1385 - 3111 t^2 + 543 t^4 - t^6))
//   y/m0 = N (A + A^3/6 (1 - t^2 + eta^2)
//            + A^5/120 (5 - 18 t^2 + t^4 + 14 eta^2 - 58 t^2 eta^2)
//            + A^7/5040 (61 - 479 t^2 + 179 t^4 - t^6))
//
// S is the meridian arc from the zone's origin. The inverse expands about the foot point, the
// latitude phi1 whose arc is x/m0. Good to a millimetre within some 200 km of the meridian.
// Series: Snyder (1987), "Map projections: a working manual", and the zone system's own tables.

#include <cmath>
#include <numbers>

#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "maps/plane_rectangular.hpp"

namespace torvex {

namespace {

// What the series need of a latitude.
struct Latitude {
    double sine;
    double cosine;
    double t;   // tangent
    double t2;  // and its square
    double n2;  // eta^2
    double N;   // radius of curvature in the prime vertical [m]
};

Latitude latitude(const PlaneSystem& system, double phi) {
    const double sine = std::sin(phi);
    const double cosine = std::cos(phi);
    const double t = sine / cosine;
    return {sine,
            cosine,
            t,
            t * t,
            system.et2 * cosine * cosine,
            system.a / std::sqrt(1.0 - system.e2 * sine * sine)};
}

void require_system(const PlaneSystem& system) {
    if (system.system_id == 0) {
        constexpr const char* text = "Please initialize module.";
        console(text);
        stop(1, text, {}, "choose a zone of the plane coordinate system first");
    }
}

void set_convergence_and_scale(const PlaneSystem& system, const Latitude& at, double difference,
                               PlanePoint& point) {
    const double A = difference * at.cosine;
    const double A2 = A * A;
    point.convergence =
        at.t * A *
        (1.0 + A2 * ((1.0 + 3.0 * at.n2 + 2.0 * at.n2 * at.n2) / 3.0 +
                     A2 * ((2.0 - at.t2) / 15.0 +
                           A2 * (17.0 - 26.0 * at.t2 + 2.0 * at.t2 * at.t2) / 315.0)));
    point.scale = system.m0 *
                  (1.0 + A2 * ((1.0 + at.n2) / 2.0 +
                               A2 * ((5.0 - 4.0 * at.t2 + 14.0 * at.n2 + 13.0 * at.n2 * at.n2 -
                                      28.0 * at.t2 * at.n2) /
                                         24.0 +
                                     A2 * (61.0 - 148.0 * at.t2 + 16.0 * at.t2 * at.t2) / 720.0)));
}

// The latitude whose meridian arc from the equator is M [m], by Newton's method.
double foot_point(const PlaneSystem& system, double M) {
    constexpr double tolerance = 1.0e-5;  // [m]
    constexpr int rounds = 20;            // four are enough anywhere between the poles
    double phi = M / system.c(1);
    for (int n = 0; n < rounds; ++n) {
        const double rest = M - meridian_arc(system, 0.0, phi);
        const double sine = std::sin(phi);
        const double radius =
            system.a * (1.0 - system.e2) / std::pow(1.0 - system.e2 * sine * sine, 1.5);
        phi += rest / radius;
        if (std::abs(rest) < tolerance) {
            break;
        }
    }
    return phi;
}

}  // namespace

void geographic_to_plane(const PlaneSystem& system, PlanePoint& point) {
    require_system(system);
    const double phi = radians_of(point.lat);
    const double difference =
        std::remainder(radians_of(point.lon) - system.origin_lon_rad, 2.0 * std::numbers::pi);
    const Latitude at = latitude(system, phi);
    const double t2 = at.t2;
    const double t4 = t2 * t2;
    const double t6 = t4 * t2;
    const double n2 = at.n2;
    const double A = difference * at.cosine;
    const double A2 = A * A;

    const double x2 = 1.0 / 2.0;
    const double x4 = (5.0 - t2 + 9.0 * n2 + 4.0 * n2 * n2) / 24.0;
    const double x6 = (61.0 - 58.0 * t2 + t4 + 270.0 * n2 - 330.0 * t2 * n2) / 720.0;
    const double x8 = (1385.0 - 3111.0 * t2 + 543.0 * t4 - t6) / 40320.0;
    const double y3 = (1.0 - t2 + n2) / 6.0;
    const double y5 = (5.0 - 18.0 * t2 + t4 + 14.0 * n2 - 58.0 * t2 * n2) / 120.0;
    const double y7 = (61.0 - 479.0 * t2 + 179.0 * t4 - t6) / 5040.0;

    const double S = meridian_arc(system, system.origin_lat_rad, phi);
    point.x = system.m0 * (S + at.N * at.t * A2 * (x2 + A2 * (x4 + A2 * (x6 + A2 * x8))));
    point.y = system.m0 * at.N * A * (1.0 + A2 * (y3 + A2 * (y5 + A2 * y7)));
    set_convergence_and_scale(system, at, difference, point);
}

void plane_to_geographic(const PlaneSystem& system, PlanePoint& point) {
    require_system(system);
    const double M = meridian_arc(system, 0.0, system.origin_lat_rad) + point.x / system.m0;
    const double pole = system.c(1) * std::numbers::pi / 2.0;
    if (!(std::abs(M) < pole) || !std::isfinite(point.y)) {
        stop(1, "A point of the plane coordinate system lies beyond a pole.", {},
             "check x and y of the point, metres north and east of the zone's origin");
    }
    const Latitude at = latitude(system, foot_point(system, M));
    const double t2 = at.t2;
    const double t4 = t2 * t2;
    const double t6 = t4 * t2;
    const double n2 = at.n2;
    const double D = point.y / (system.m0 * at.N);
    const double D2 = D * D;

    const double p2 = (1.0 + n2) / 2.0;
    const double p4 =
        (5.0 + 3.0 * t2 + 6.0 * n2 - 6.0 * t2 * n2 - 3.0 * n2 * n2 - 9.0 * t2 * n2 * n2) / 24.0;
    const double p6 =
        (61.0 + 90.0 * t2 + 45.0 * t4 + 107.0 * n2 - 162.0 * t2 * n2 - 45.0 * t4 * n2) / 720.0;
    const double p8 = (1385.0 + 3633.0 * t2 + 4095.0 * t4 + 1575.0 * t6) / 40320.0;
    const double l3 = (1.0 + 2.0 * t2 + n2) / 6.0;
    const double l5 = (5.0 + 28.0 * t2 + 24.0 * t4 + 6.0 * n2 + 8.0 * t2 * n2) / 120.0;
    const double l7 = (61.0 + 662.0 * t2 + 1320.0 * t4 + 720.0 * t6) / 5040.0;

    const double phi =
        std::atan2(at.sine, at.cosine) - at.t * D2 * (p2 - D2 * (p4 - D2 * (p6 - D2 * p8)));
    const double difference = D / at.cosine * (1.0 - D2 * (l3 - D2 * (l5 - D2 * l7)));
    point.lat = triple_of(phi);
    point.lon = triple_of(system.origin_lon_rad + difference);
    set_convergence_and_scale(system, latitude(system, phi), difference, point);
}

}  // namespace torvex
