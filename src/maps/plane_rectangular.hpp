#pragma once

#include "base/fixed_array.hpp"

namespace torvex {

// Degrees, minutes, seconds in double precision. The angle is the sum of the members as they stand.
using AngleTriple = FixedArray<double, 3>;

// One zone of the Japan Plane Rectangular Coordinate System on the Bessel ellipsoid of 1841,
// whatever the datum of the maps. For the preparation tools; a run does not use it.
struct PlaneSystem {
    double a = 6377397.155;   // equatorial radius [m]
    double F = 299.152813;    // inverse flattening [-]
    double f = 0;             // flattening [-]
    double b = 0;             // polar radius [m]
    double e = 0, e2 = 0;     // first eccentricity and its square [-]
    double et = 0, et2 = 0;   // second eccentricity and its square [-]
    double m0 = 0.9999;       // scale on the central meridian [-]
    FixedArray<double, 9> c;  // meridian arc: c(1) phi + sum of c(n+1) sin(2 n phi) [m]
    int system_id = 0;        // 1 to 19; 0: not set
    AngleTriple origin_lon;   // origin of the zone
    AngleTriple origin_lat;
    double origin_lon_rad = 0;
    double origin_lat_rad = 0;
};

// A point in both coordinates. The conversions fill the other pair, convergence and scale.
struct PlanePoint {
    AngleTriple lon;         // east positive
    AngleTriple lat;         // north positive
    double x = 0;            // north of the zone's origin [m]
    double y = 0;            // east of the zone's origin [m]
    double convergence = 0;  // from true north clockwise to the x axis [rad]: positive in the east
    double scale = 0;        // length in the plane over length on the ellipsoid [-]
};

// Prepares the module for a zone and tells its origin on the console. Another zone than before is
// warned of and taken.
void set_coordinate_system(PlaneSystem& system, int system_id);

// What follows from a, F and the origin, for zones of other systems with ellipsoid and scale of
// their own: writes the derived numbers, and nothing on the console.
void prepare_system(PlaneSystem& system, int system_id, const AngleTriple& lon,
                    const AngleTriple& lat);

// Both stop with "Please initialize module." if no zone has been set.
void geographic_to_plane(const PlaneSystem& system, PlanePoint& point);
void plane_to_geographic(const PlaneSystem& system, PlanePoint& point);

// Length of the meridian from one latitude to another [rad], north positive [m].
double meridian_arc(const PlaneSystem& system, double from, double to);

// t [minutes] as (2 t) pi / 21600. A zero with a negative sign becomes a tiny negative angle, so
// that its hemisphere is kept.
double radians_of(const AngleTriple& angle);

// The other way; all members carry the sign of the angle.
AngleTriple triple_of(double radians);

// Diagnostic lines on the console.
void dump_ellipsoid(const PlaneSystem& system);
void dump_point(const PlanePoint& point);

}  // namespace torvex
