#include "maps/plane_by_proj.hpp"

#include <proj.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace torvex::test {

ProjZone::ProjZone(int zone) : zone_(zone), context_(proj_context_create()) {
    const ZoneOrigin origin = zone_origin(zone);
    std::array<char, 200> definition{};
    std::snprintf(definition.data(), definition.size(),
                  "+proj=tmerc +ellps=bessel +k=0.9999 +lat_0=%.15g +lon_0=%.15g", origin.lat,
                  origin.lon);
    projection_ = proj_create(context_, definition.data());
    if (projection_ == nullptr) {
        throw std::runtime_error("PROJ refuses " + std::string(definition.data()));
    }
}

ProjZone::~ProjZone() {
    proj_destroy(projection_);
    proj_context_destroy(context_);
}

PlaneReference ProjZone::with_factors(PlaneReference point) const {
    const PJ_FACTORS factors =
        proj_factors(projection_, proj_coord(proj_torad(point.lon), proj_torad(point.lat), 0, 0));
    point.convergence = factors.meridian_convergence;
    point.scale = factors.meridional_scale;
    return point;
}

PlaneReference ProjZone::forward(double lon, double lat) const {
    const PJ_COORD plane =
        proj_trans(projection_, PJ_FWD, proj_coord(proj_torad(lon), proj_torad(lat), 0, 0));
    return with_factors({zone_, lon, lat, plane.xy.y, plane.xy.x, 0, 0});
}

PlaneReference ProjZone::inverse(double x_north, double y_east) const {
    const PJ_COORD geographic = proj_trans(projection_, PJ_INV, proj_coord(y_east, x_north, 0, 0));
    return with_factors({zone_, proj_todeg(geographic.lp.lam), proj_todeg(geographic.lp.phi),
                         x_north, y_east, 0, 0});
}

std::vector<PlaneReference> plane_points_by_proj() {
    constexpr std::array<std::pair<double, double>, 6> offsets{
        {{0, 0}, {0, 2.75}, {1.4, -3.5}, {-1.4, 1.25}, {0.3125, 4.0}, {-0.03125, -0.75}}};
    std::vector<PlaneReference> points;
    for (int zone = 1; zone <= 19; ++zone) {
        const ProjZone by_proj(zone);
        const ZoneOrigin origin = zone_origin(zone);
        for (const auto& [lon, lat] : offsets) {
            points.push_back(by_proj.forward(origin.lon + lon, origin.lat + lat));
        }
    }
    return points;
}

}  // namespace torvex::test
