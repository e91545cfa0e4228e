#pragma once

#include "maps/conversion/conversion_settings.hpp"

namespace torvex {

// A stretch of the earth in minutes of arc, east and north positive.
struct AreaLimits {
    double lon_min = 0, lon_max = 0;
    double lat_min = 0, lat_max = 0;
};

// Half the side of the area [m] that the maps of a case must cover for every wind direction, with
// r the radius of the circle round the study area:
//
//   across = r (2 SIDE_BR + 1)
//   along  = max(r (2 ADD_R + 1 + 2 UP_BR), r (2 DOWN_BR + 1))
//   R      = sqrt(along^2 + across^2) + MAX_DXY
//
// COEF_FROM_TORVEX_BASIC c, if above 0, gives R = sqrt(c) sqrt(WE_LENGTH^2 + NS_LENGTH^2) instead;
// COEF_MAX_RAD q, if above 0, holds R within q r.
double covered_half_size(const ConversionSettings& settings);

// The area round the centre, with the metres per minute of a datum (see local_metric.hpp).
AreaLimits covered_area(const ConversionSettings& settings, int datum);

}  // namespace torvex
