// The maps of one wind direction, and the elevation statistics that size the domain.
//
//   dX = d_lon mx,  dY = d_lat my,  X0 = (base longitude - centre longitude) mx,  Y0 alike
//
// with the metres per minute mx, my at the centre. They are taken before the header is read, so a
// map is placed with the datum of the map read before it in the run, the first with the default
// one. Existing results rest on that order: keep it.

#include "maps/load_maps.hpp"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "maps/local_metric.hpp"
#include "maps/map_file.hpp"

namespace torvex {

namespace {

float offset(const FixedArray<float, 2>& base, double centre_minutes, float metres_per_minute) {
    const double minutes = minutes_of({base(1), base(2), 0.0F});
    return static_cast<float>((minutes - centre_minutes) * static_cast<double>(metres_per_minute));
}

// One line on the log for each map that is parsed, and what is odd about it.
void tell_findings(const ParsedMap& parsed, const MapRole& role, const TerrainMap& map,
                   RunLog& log) {
    const MapLabel label{.name = role.name,
                         .path = trimmed(parsed.file.path),
                         .dX = map.dX,
                         .dY = map.dY,
                         .roughness = role.roughness};
    log.timed(" Read " + map_summary(label, parsed.header, parsed.findings) + ".");
    for (const Warning& warning : map_warnings(label, parsed.header, parsed.findings)) {
        log.warn(warning.text, warning.reminder);
    }
}

TerrainMap read_placed(const std::string& path, const MapRole& role,
                       std::shared_ptr<const ParsedMap>& slot, const CaseSettings& settings,
                       MapState& state, RunLog& log) {
    if (trimmed(path).empty()) {
        stop(role.code + 1, std::string(role.key) + " is blank", "the case file",
             "name the " + std::string(role.name));
    }
    const std::shared_ptr<const ParsedMap> last = slot;
    slot = read_map_file(path, role, last, log);
    TerrainMap map = placed_map(slot->header, settings, state.datum);
    map.values = slot->values;
    state.datum = slot->header.datum;
    const bool usable = map.dX > 0.0F && map.dY > 0.0F && std::isfinite(map.dX) &&
                        std::isfinite(map.dY) && std::isfinite(map.X0) && std::isfinite(map.Y0);
    if (!usable) {
        stop(role.code + 3, std::string(role.name) + ": it cannot be placed round the case centre",
             path, "check d_lon, d_lat and the base in its header, and CENT_LON and CENT_LAT");
    }
    if (slot != last) {
        tell_findings(*slot, role, map, log);
    }
    return map;
}

TerrainMap read_terrain(const std::string& path, const MapRole& role,
                        std::shared_ptr<const ParsedMap>& slot, const CaseSettings& settings,
                        MapState& state, RunLog& log) {
    TerrainMap map = read_placed(path, role, slot, settings, state, log);
    console(edit::list("  - Read terrain map from ", trimmed(path)));
    return map;
}

TerrainMap read_roughness(const std::string& path, const MapRole& role,
                          std::shared_ptr<const ParsedMap>& slot, const CaseSettings& settings,
                          MapState& state, RunLog& log) {
    TerrainMap map = read_placed(path, role, slot, settings, state, log);
    console(edit::list("  - Read roughness map from ", trimmed(path)));
    return map;
}

bool without_terrain(const CaseSettings& settings) {
    return settings.TERRAIN_MODE.starts_with("flat") && trimmed(settings.BASIC_H_FILE).empty();
}

bool without_roughness(const CaseSettings& settings) {
    return settings.TERRAIN_MODE == "flat" && trimmed(settings.BASIC_Z0_FILE).empty();
}

// The values are shared with later reads of the file, so a copy is scaled.
void scale(TerrainMap& map, float factor) {
    if (!map.loaded()) {
        return;
    }
    auto scaled = std::make_shared<Field2>(*map.values);
    std::transform(scaled->data(), scaled->data() + scaled->size(), scaled->data(),
                   [factor](float h) { return h * factor; });
    map.values = std::move(scaled);
}

ElevationRange statistics(const TerrainMap& map, float radius) {
    if (!map.loaded()) {
        return {};
    }
    // A map below sea level keeps the Hmax of 0.
    ElevationRange range{.Hmax = 0.0F, .Hmin = 1000000.0F, .Havg = 0.0F};
    double sum = 0.0;
    long count = 0;
    const Field2& h = *map.values;
    for (int j = 1; j <= map.rows; ++j) {
        const float Y = static_cast<float>(j - 1) * map.dY + map.Y0;
        for (int i = 1; i <= map.columns; ++i) {
            const float X = static_cast<float>(i - 1) * map.dX + map.X0;
            if (radius >= std::sqrt(X * X + Y * Y)) {
                range.Hmax = std::max(range.Hmax, h(i, j));
                range.Hmin = std::min(range.Hmin, h(i, j));
                sum += static_cast<double>(h(i, j));
                ++count;
            }
        }
    }
    range.Havg = static_cast<float>(count > 0 ? sum / static_cast<double>(count) : sum);
    return range;
}

std::string report(std::string_view which, float value) {
    return " " + std::string(which) + " elevation in the domain is " + edit::F(value, 10, 1) + "m.";
}

}  // namespace

TerrainMap placed_map(const MapHeader& header, const CaseSettings& settings, int datum) {
    const MetresPerMinute m = metres_per_minute(settings.cent_lat_min, datum);
    TerrainMap map;
    map.columns = header.columns;
    map.rows = header.rows;
    map.dX = header.spacing(1) * m.lon;
    map.dY = header.spacing(2) * m.lat;
    map.X0 = offset(header.base_longitude, settings.cent_lon_min, m.lon);
    map.Y0 = offset(header.base_latitude, settings.cent_lat_min, m.lat);
    map.degrees = degree_extent(header);
    return map;
}

std::optional<DirectionMaps> placed_by_headers(const CaseSettings& settings, int& datum) {
    DirectionMaps maps;
    bool good = true;
    const auto locate = [&](bool named, const std::string& path, TerrainMap& map) {
        if (!named || !good) {
            return;
        }
        const MapHeader header = read_map_header_of(path);
        good = header.error == 0;
        if (good) {
            map = placed_map(header, settings, datum);
            datum = header.datum;
        }
    };
    locate(!without_terrain(settings), settings.BASIC_H_FILE, maps.basic_h);
    locate(settings.detailed_h_given, settings.DETAILED_H_FILE, maps.detailed_h);
    locate(!without_roughness(settings), settings.BASIC_Z0_FILE, maps.basic_z0);
    locate(settings.detailed_z0_given, settings.DETAILED_Z0_FILE, maps.detailed_z0);
    return good ? std::optional(maps) : std::nullopt;
}

DirectionMaps load_maps(const CaseSettings& settings, int iwd, MapState& state, RunLog& log) {
    DirectionMaps maps;
    if (!without_terrain(settings)) {
        maps.basic_h =
            read_terrain(settings.BASIC_H_FILE, basic_h_role, state.basic_h, settings, state, log);
    }
    if (settings.detailed_h_given) {
        maps.detailed_h = read_terrain(settings.DETAILED_H_FILE, detailed_h_role, state.detailed_h,
                                       settings, state, log);
    }
    if (settings.SPECIFY_ELEVATION_CORRECTION_FACTOR) {
        const float factor = settings.ELEVATION_CORRECTION_FACTOR(iwd);
        if (!std::isfinite(factor)) {
            stop(1, "ELEVATION_CORRECTION_FACTOR(" + std::to_string(iwd) + ") is not finite",
                 "the case file", "give a number for each direction");
        }
        scale(maps.basic_h, factor);
        scale(maps.detailed_h, factor);
    }
    if (!without_roughness(settings)) {
        maps.basic_z0 = read_roughness(settings.BASIC_Z0_FILE, basic_z0_role, state.basic_z0,
                                       settings, state, log);
    }
    if (settings.detailed_z0_given) {
        maps.detailed_z0 = read_roughness(settings.DETAILED_Z0_FILE, detailed_z0_role,
                                          state.detailed_z0, settings, state, log);
    }
    return maps;
}

ElevationRange elevation_in_radius(const CaseSettings& settings, float radius, MapState& state,
                                   RunLog& log) {
    console("   - Reading terrain map to find max, min and average elevation.");
    const ElevationRange range = statistics(read_basic_terrain(settings, state, log), radius);
    console("   -" + report("Maximum", range.Hmax));
    console("   -" + report("Minimum", range.Hmin));
    console("   -" + report("Average", range.Havg));
    return range;
}

ElevationRange elevation_in_domain(const CaseSettings& settings, float x1, float y1,
                                   MapState& state, RunLog& log) {
    const ElevationRange range =
        elevation_in_radius(settings, std::sqrt(x1 * x1 + y1 * y1), state, log);
    log.timed(report("Maximum", range.Hmax));
    log.timed(report("Minimum", range.Hmin));
    log.timed(report("Average", range.Havg));
    return range;
}

TerrainMap read_basic_terrain(const CaseSettings& settings, MapState& state, RunLog& log) {
    if (without_terrain(settings)) {
        return {};
    }
    return read_placed(settings.BASIC_H_FILE, basic_h_role, state.basic_h, settings, state, log);
}

}  // namespace torvex
