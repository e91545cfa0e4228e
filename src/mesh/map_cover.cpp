// Whether a map is large enough, told before it is too late.
//
// A point of the plan lies at X = c x + s y, Y = c y - s x. Each of these is monotone in x and in y
// for itself, and so is every rounding on the way to the indices of the map cell. Over a plan the
// indices are therefore extreme at its four corners: a map that holds these holds every node.
// A pair of maps of which either may hold a point has no such rule and is asked point by point.

#include "mesh/map_cover.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "maps/load_maps.hpp"
#include "mesh/lay_lines.hpp"

namespace torvex {

namespace {

// Coordinates of points of a plan, rising.
struct Plan {
    std::vector<float> x, y;
};

bool holds(const TerrainMap& map, MapPoint at) {
    return map.placed() && locate(map, at.X, at.Y).has_value();
}

bool holds_plan(const TerrainMap& map, const Plan& plan, const MeshRotation& rotation) {
    const std::array<MapPoint, 4> corners{rotation.on_map(plan.x.front(), plan.y.front()),
                                          rotation.on_map(plan.x.back(), plan.y.front()),
                                          rotation.on_map(plan.x.front(), plan.y.back()),
                                          rotation.on_map(plan.x.back(), plan.y.back())};
    return std::ranges::all_of(corners, [&map](MapPoint at) { return holds(map, at); });
}

bool either_holds_plan(const TerrainMap& a, const TerrainMap& b, const Plan& plan,
                       const MeshRotation& rotation) {
    if (holds_plan(a, plan, rotation) || holds_plan(b, plan, rotation)) {
        return true;
    }
    if (!a.placed() || !b.placed()) {
        return false;
    }
    return std::ranges::all_of(plan.y, [&](float y) {
        return std::ranges::all_of(plan.x, [&](float x) {
            const MapPoint at = rotation.on_map(x, y);
            return holds(a, at) || holds(b, at);
        });
    });
}

// Middles of the cells between the planes, with the rounding of the cell centres.
std::vector<float> middles(const std::vector<float>& planes) {
    std::vector<float> middle(planes.size() - 1);
    for (std::size_t n = 0; n + 1 < planes.size(); ++n) {
        middle[n] = 0.5F * (planes[n] + planes[n + 1]);
    }
    return middle;
}

bool covered_in_all_directions(const CaseSettings& settings, const MeshLines& lines,
                               const DirectionMaps& maps) {
    for (int iwd = 1; iwd <= settings.N_WIND_DIRECTION; ++iwd) {
        if (!map_cover(settings, lines, maps, settings.WIND_DIRECTION_ANGLE(iwd)).whole()) {
            return false;
        }
    }
    return true;
}

// The lines of a study area smaller by a factor. The highest terrain stays that of the whole mesh,
// which makes the zones of mode 1 too long rather than too short.
MeshLines scaled_lines(const CaseSettings& settings, float scale, float Hmax) {
    CaseSettings smaller = settings;
    smaller.WE_LENGTH = scale * settings.WE_LENGTH;
    smaller.NS_LENGTH = scale * settings.NS_LENGTH;
    DomainWidths widths = zone_widths(smaller);
    if (settings.BOUNDARY_HEIGHT_MODE == 1) {
        connect_to_boundary(Hmax, widths);
    }
    return lay_lines(smaller, widths);
}

std::string fixed(double value, int decimals) {
    std::string text(trimmed(edit::F(value, 48, decimals)));
    if (text.ends_with('.')) {
        text.pop_back();  // of a number without decimals
    }
    return text;
}

std::string metres(float value) {
    return fixed(static_cast<double>(value), 0) + " m";
}

std::string degrees(double value) {
    return fixed(value, 5);
}

std::string study_area(const CaseSettings& settings, float scale) {
    return "WE_LENGTH " + fixed(std::floor(static_cast<double>(scale * settings.WE_LENGTH)), 0) +
           " by NS_LENGTH " +
           fixed(std::floor(static_cast<double>(scale * settings.NS_LENGTH)), 0) + " m";
}

std::string study_limit(const CaseSettings& settings, const MeshLines& lines,
                        const DirectionMaps& maps, const TerrainMap& map, const std::string& name) {
    if (!holds(map, {0.0F, 0.0F})) {
        return "The centre lies outside the " + name +
               ": no study area fits, check CENT_LON and CENT_LAT.";
    }
    const float nearest = nearest_side(map);
    const float x = std::max(-lines.x_line(1), lines.x_line(lines.nx));
    const float y = std::max(-lines.y_line(1), lines.y_line(lines.ny));
    const std::string reach = "The mesh reaches " + metres(std::sqrt(x * x + y * y)) +
                              " from the centre, the nearest side of the " + name + " lies " +
                              metres(nearest) + " from it";
    if (!lines_from_study_area(settings)) {
        return reach + ".";
    }
    const float scale = largest_study_scale(settings, lines, maps);
    if (!(scale > 0.0F)) {
        return reach + ": no study area fits.";
    }
    return reach +
           ": the largest study area that the maps allow in the directions of the case is " +
           study_area(settings, scale) + ".";
}

std::string angles_text(const std::vector<float>& angles) {
    constexpr std::size_t most = 8;
    std::string text;
    for (std::size_t n = 0; n < std::min(most, angles.size()); ++n) {
        text += (n > 0 ? ", " : "") + fixed(static_cast<double>(angles[n]), 1);
    }
    return angles.size() > most ? text + ", ..." : text;
}

std::string sentences(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += " " + line;
    }
    return text;
}

}  // namespace

MapCover map_cover(const CaseSettings& settings, const MeshLines& lines, const DirectionMaps& maps,
                   float angle) {
    MapCover cover;
    const Plan nodes{lines.x_line.values(), lines.y_line.values()};
    if (!settings.TERRAIN_MODE.starts_with("flat")) {
        // The detailed terrain counts only where the basic one is too.
        cover.terrain = holds_plan(maps.basic_h, nodes, mesh_rotation(angle));
    }
    if (settings.TERRAIN_MODE != "flat" && !settings.canopy_on()) {
        const Plan centres{middles(nodes.x), middles(nodes.y)};
        cover.roughness =
            either_holds_plan(maps.detailed_z0, maps.basic_z0, centres, roughness_rotation(angle));
    }
    return cover;
}

float nearest_side(const TerrainMap& map) {
    const float X1 = static_cast<float>(map.columns - 1) * map.dX + map.X0;
    const float Y1 = static_cast<float>(map.rows - 1) * map.dY + map.Y0;
    return std::min({-map.X0, X1, -map.Y0, Y1});
}

// A mesh that was made elsewhere needs no cell size either.
bool lines_from_study_area(const CaseSettings& settings) {
    return settings.MIN_DXY > 0.0F && trimmed(settings.XYCONF).empty() &&
           !settings.nested();
}

float largest_study_scale(const CaseSettings& settings, const MeshLines& lines,
                          const DirectionMaps& maps) {
    constexpr int steps = 1000;
    const auto fits = [&](int n) {
        const float scale = static_cast<float>(n) / static_cast<float>(steps);
        return covered_in_all_directions(settings,
                                         scaled_lines(settings, scale, lines.elevation.Hmax), maps);
    };
    // The node planes move outward with the study area, never back, so there is one limit.
    int good = 0;
    int bad = steps + 1;
    while (bad - good > 1) {
        const int middle = (good + bad) / 2;
        (fits(middle) ? good : bad) = middle;
    }
    return static_cast<float>(good) / static_cast<float>(steps);
}

std::vector<std::string> map_limits(const CaseSettings& settings, const MeshLines& lines,
                                    const DirectionMaps& maps, const TerrainMap& map,
                                    const std::string& name) {
    std::vector<std::string> told;
    told.push_back("The centre is longitude " + degrees(settings.cent_lon_min / 60.0) +
                   ", latitude " + degrees(settings.cent_lat_min / 60.0) + " degrees.");
    if (map.degrees) {
        told.push_back("The " + name + " reaches over longitude " + degrees(map.degrees->west) +
                       " to " + degrees(map.degrees->east) + ", latitude " +
                       degrees(map.degrees->south) + " to " + degrees(map.degrees->north) +
                       " degrees.");
    }
    told.push_back(study_limit(settings, lines, maps, map, name));
    return told;
}

std::vector<Warning> cover_warnings(const CaseSettings& settings, const MeshLines& lines, int datum,
                                    std::span<const int> iwds) {
    std::vector<float> outside_terrain;
    std::vector<float> outside_roughness;
    DirectionMaps maps;  // as a direction that fails finds them
    for (const int iwd : iwds) {
        const std::optional<DirectionMaps> placed = placed_by_headers(settings, datum);
        if (!placed) {
            return {};  // the run will tell what is wrong with that map
        }
        const float angle = settings.WIND_DIRECTION_ANGLE(iwd);
        const MapCover cover = map_cover(settings, lines, *placed, angle);
        if (!cover.whole()) {
            maps = *placed;
        }
        if (!cover.terrain) {
            outside_terrain.push_back(angle);
        }
        if (!cover.roughness) {
            outside_roughness.push_back(angle);
        }
    }
    std::vector<Warning> warnings;
    const auto warn = [&](const std::vector<float>& angles, const std::string& name,
                          const std::string& file, const TerrainMap& map) {
        if (angles.empty()) {
            return;
        }
        const std::string count =
            std::to_string(angles.size()) + " of " + std::to_string(iwds.size());
        warnings.push_back(
            {"the mesh reaches out of the " + name + " " + file + " in " + count +
                 " wind directions (" + angles_text(angles) +
                 " degrees): the first of them will end the run with stop 151." +
                 sentences(map_limits(settings, lines, maps, map, name)),
             std::string(trimmed(file)) + " is too small for " + count + " directions"});
    };
    warn(outside_terrain, "terrain map", settings.BASIC_H_FILE, maps.basic_h);
    warn(outside_roughness, "roughness map", settings.BASIC_Z0_FILE, maps.basic_z0);
    return warnings;
}

void stop_outside_map(const CaseSettings& settings, const MeshLines& lines,
                      const DirectionMaps& maps, bool roughness, MapPoint at, RunLog& log) {
    const TerrainMap& map = roughness ? maps.basic_z0 : maps.basic_h;
    log.timed(" [Stop 151]:Specified computational domain is out of map domain.");
    std::string fix = "give a larger map, a smaller study area or narrower buffer zones";
    for (const std::string& line :
         map_limits(settings, lines, maps, map, roughness ? "roughness map" : "terrain map")) {
        log.timed(" " + line);
        fix += "\n  " + line;
    }
    const auto km = [](float metres) { return edit::F(metres / 1000.0F, 9, 3); };
    const float X1 = static_cast<float>(map.columns - 1) * map.dX + map.X0;
    const float Y1 = static_cast<float>(map.rows - 1) * map.dY + map.Y0;
    const std::string point =
        km(at.X) + " km east and" + km(at.Y) + " km north of the centre, the ";
    const std::string extent =
        km(map.X0) + " .." + km(X1) + " km and" + km(map.Y0) + " .." + km(Y1) + " km";
    stop(151,
         roughness ? "the mesh has a cell" + point + "roughness map reaches over" + extent
                   : "the mesh reaches" + point + "terrain map" + extent,
         roughness ? settings.BASIC_Z0_FILE : settings.BASIC_H_FILE, fix);
}

}  // namespace torvex
