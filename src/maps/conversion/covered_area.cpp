#include "maps/conversion/covered_area.hpp"

#include <algorithm>
#include <cmath>

#include "maps/local_metric.hpp"

namespace torvex {

double covered_half_size(const ConversionSettings& settings) {
    const auto WE = static_cast<double>(settings.WE_LENGTH);
    const auto NS = static_cast<double>(settings.NS_LENGTH);
    const double r = std::hypot(WE / 2.0, NS / 2.0);
    const auto side = static_cast<double>(settings.SIDE_BR);
    const auto up = static_cast<double>(settings.UP_BR);
    const auto down = static_cast<double>(settings.DOWN_BR);
    const auto add = static_cast<double>(settings.ADD_R);
    const double across = r * (2.0 * side + 1.0);
    const double along = std::max(r * (2.0 * add + 1.0 + 2.0 * up), r * (2.0 * down + 1.0));
    double R = std::hypot(along, across) + static_cast<double>(settings.MAX_DXY);
    if (settings.COEF_FROM_TORVEX_BASIC > 0.0F) {
        R = std::sqrt(static_cast<double>(settings.COEF_FROM_TORVEX_BASIC)) * std::hypot(WE, NS);
    }
    if (settings.COEF_MAX_RAD > 0.0F) {
        R = std::min(R, static_cast<double>(settings.COEF_MAX_RAD) * r);
    }
    return R;
}

AreaLimits covered_area(const ConversionSettings& settings, int datum) {
    const double R = covered_half_size(settings);
    const double lon = minutes_of(settings.CENT_LON);
    const double lat = minutes_of(settings.CENT_LAT);
    const MetresPerMinute m = metres_per_minute(lat, datum);
    const double d_lon = R / static_cast<double>(m.lon);
    const double d_lat = R / static_cast<double>(m.lat);
    return {lon - d_lon, lon + d_lon, lat - d_lat, lat + d_lat};
}

}  // namespace torvex
