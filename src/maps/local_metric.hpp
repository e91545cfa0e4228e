#pragma once

#include "base/fixed_array.hpp"

namespace torvex {

// Minutes of arc of a triple, d*60 + m + s/60, the members as they stand.
double minutes_of(const Triple& angle);

// What a minute of arc measures on the ground.
struct MetresPerMinute {
    float lon = 0;  // metres per minute of longitude
    float lat = 0;  // metres per minute of latitude
};

// Length of a minute of arc on the ellipsoid at a latitude given in minutes. Datum 0 is the default
// ellipsoid (e2 = 0.00669447 as such), 1 Tokyo, 2 JGD2000, 3 WGS84.
MetresPerMinute metres_per_minute(double lat_minutes, int datum);

// A point in the axes of the mesh, from its centre.
struct MeshPosition {
    float x = 0;  // downwind [m]
    float y = 0;  // to the left of the wind [m]
};

// Position of a point in the frame of a wind direction [deg], origin at the centre; all angles in
// minutes of arc. At 270 degrees x points east and y north.
MeshPosition position_from_centre(double lon, double lat, double centre_lon, double centre_lat,
                                  int datum, float wind_direction);

}  // namespace torvex
