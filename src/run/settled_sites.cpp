#include "run/settled_sites.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "maps/local_metric.hpp"
#include "results/bracket.hpp"

namespace torvex {

namespace {

// |velocity| at a height above ground; not a number above the mesh.
float speed_at(const GridGeometry& grid, const FlowState& flow, const ColumnPlace& place,
               float height) {
    const LinePlace z = place_on(height, above_ground(column(grid.zc, place)));
    if (!z.inside()) {
        return std::nanf("");
    }
    const auto value = [&](const Field3& q) {
        const Line1 values = column(q, place);
        return values(z.i) + z.w * (values(z.i + 1) - values(z.i));
    };
    const float u = value(flow.u);
    const float v = value(flow.v);
    const float w = value(flow.w);
    return std::sqrt(u * u + v * v + w * w);
}

}  // namespace

SettledSites::SettledSites(const CaseSettings& settings, const Direction& direction)
    : fraction_(settings.STOP_SITES), height_(settings.MONITOR_HEIGHT) {
    if (!(fraction_ > 0.0F)) {
        return;
    }
    const auto add = [&](double lon, double lat) {
        const ColumnPlace place =
            column_place(position_from_centre(lon, lat, settings.cent_lon_min,
                                              settings.cent_lat_min, settings.GS, direction.angle),
                         direction.grid);
        if (place.inside() &&
            std::isfinite(speed_at(direction.grid, direction.flow, place, height_))) {
            places_.push_back(place);
        }
    };
    for (int n = 1; n <= settings.N_SITE; ++n) {
        const Site& site = settings.SITE[static_cast<std::size_t>(n - 1)];
        add(minutes_of(site.LON), minutes_of(site.LAT));
    }
    sites_ = static_cast<int>(places_.size());
    if (sites_ > 0) {
        add(settings.monitor_lon_min, settings.monitor_lat_min);
    }
}

void SettledSites::record(const GridGeometry& grid, const FlowState& flow, int window,
                          Settling& kept) const {
    if (!on()) {
        return;
    }
    std::vector<float> speeds;
    for (const ColumnPlace& place : places_) {
        speeds.push_back(speed_at(grid, flow, place, height_));
    }
    // Behind a resume with other sites the old speeds say nothing.
    if (!kept.speeds.empty() && kept.speeds.back().size() != speeds.size()) {
        kept.speeds.clear();
    }
    kept.speeds.push_back(std::move(speeds));
    const auto most = static_cast<std::size_t>(window);
    if (kept.speeds.size() > most) {
        kept.speeds.erase(kept.speeds.begin(),
                          kept.speeds.end() - static_cast<std::ptrdiff_t>(most));
    }
}

bool SettledSites::settled(int window, const Settling& kept) const {
    if (!on() || kept.speeds.size() < static_cast<std::size_t>(window) ||
        kept.speeds.back().size() != places_.size()) {
        return false;
    }
    for (std::size_t n = 0; n < places_.size(); ++n) {
        const auto at = [n](const std::vector<float>& speeds) { return speeds[n]; };
        const auto [least, most] = std::ranges::minmax(kept.speeds, {}, at);
        const float range = at(most) - at(least);
        if (!(range < fraction_ * at(kept.speeds.back()))) {
            return false;
        }
    }
    return true;
}

int settling_window(const CaseSettings& settings, const AccelerationMemory& memory,
                    bool accelerated) {
    constexpr int with_fast_relaxation = 10;
    if (accelerated && memory.stage != Stage::plain) {
        return with_fast_relaxation;
    }
    const float U = settings.URFU;
    if (!(U > 0.0F && U < 1.0F)) {
        return with_fast_relaxation;
    }
    constexpr int most = 1000;
    const float slower = std::ceil(with_fast_relaxation * 9.0F * (1.0F - U) / U - 0.001F);
    return static_cast<int>(
        std::clamp(slower, static_cast<float>(with_fast_relaxation), static_cast<float>(most)));
}

}  // namespace torvex
