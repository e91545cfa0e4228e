// The sequence of a check, which is that of a run up to the first iteration of each direction.

#include <algorithm>
#include <string>
#include <utility>

#include "base/edit.hpp"
#include "base/text_file.hpp"
#include "maps/load_maps.hpp"
#include "mesh/map_cover.hpp"
#include "prep/case_check.hpp"
#include "run/read_mesh_etc.hpp"
#include "run/settle_case.hpp"

namespace torvex {

namespace {

// The case as if one of its maps were all that it samples.
CaseSettings terrain_alone(const CaseSettings& settings) {
    CaseSettings alone = settings;
    alone.canopy.canopy_mode = 1;  // no roughness from maps
    return alone;
}
CaseSettings roughness_alone(const CaseSettings& settings) {
    CaseSettings alone = settings;
    alone.TERRAIN_MODE = "flat2";  // roughness from maps, the ground level
    return alone;
}

MapCheck check_map(const CaseSettings& settings, const MeshLines& lines, const DirectionMaps& maps,
                   const TerrainMap& map, const char* name) {
    MapCheck found{
        .name = name, .cover_m = nearest_side(map), .largest_study_m = {}, .outside = {}};
    for (int iwd = 1; iwd <= settings.N_WIND_DIRECTION; ++iwd) {
        const float angle = settings.WIND_DIRECTION_ANGLE(iwd);
        if (!map_cover(settings, lines, maps, angle).whole()) {
            found.outside.push_back(angle);
        }
    }
    if (lines_from_study_area(settings)) {
        const float side = std::max(settings.WE_LENGTH, settings.NS_LENGTH);
        found.largest_study_m =
            found.outside.empty() ? side : side * largest_study_scale(settings, lines, maps);
    }
    return found;
}

// Behind slopes like these the wind sheds whirls, and the iteration swings with them.
void warn_of_steep_ground(const CaseCheck& check, RunLog& log) {
    const DirectionCheck* steepest = nullptr;
    for (const DirectionCheck& direction : check.directions) {
        if (steepest == nullptr || direction.slopes.steepest > steepest->slopes.steepest) {
            steepest = &direction;
        }
    }
    if (steepest == nullptr || !(steepest->slopes.steepest > GroundSlopes::limits.back())) {
        return;
    }
    const auto text = [](double value, int decimals) {
        return std::string(trimmed(edit::F(value, 40, decimals)));
    };
    log.warn("the ground is steeper than 40 degrees on " +
             text(100.0 * steepest->slopes.parts.back(), 2) + " % of the mesh (up to " +
             text(static_cast<double>(steepest->slopes.steepest), 1) +
             " degrees): behind such slopes the wind is not steady, and residuals may swing above "
             "the criteria for good. A coarser MIN_DXY smooths the ground.");
}

void check_directions(Run& run, CaseCheck& check) {
    for (int iwd = 1; iwd <= run.settings.N_WIND_DIRECTION; ++iwd) {
        DirectionCheck& direction = check.directions[static_cast<std::size_t>(iwd - 1)];
        if (has_saved_state(run, iwd)) {
            direction.state = DirectionState::saved;
            continue;
        }
        try {
            check_direction(run, iwd, check);
        } catch (const Stop& stop) {
            direction.state = DirectionState::stopped;
            direction.stop = stop.code();
            if (!check.stop) {
                check.stop = stop;
            }
        }
        run.canopy = {};
    }
}

void check_settled(Run& run, CaseCheck& check) {
    const CaseSettings& settings = run.settings;
    if (settings.TORVEX_MODE != 0) {
        read_user_counts(run);
    }
    check.sized = true;
    check.ni = run.lines.ni;
    check.nj = run.lines.nj;
    check.nk = run.lines.nk;
    for (int iwd = 1; iwd <= settings.N_WIND_DIRECTION; ++iwd) {
        check.directions.emplace_back().angle = settings.WIND_DIRECTION_ANGLE(iwd);
    }
    check.maps = check_maps(run);
    warn_of_small_maps(run);
    check.resources = check_resources(run);
    const auto lacking = resource_warnings(check.resources, settings.N_WIND_DIRECTION);
    for (const std::string& warning : lacking) {
        run.log.warn(warning);
    }
    const ResourceCheck& needs = check.resources;
    const std::int64_t memory =
        std::min(needs.memory_limit, needs.group_limit.value_or(needs.memory_limit));
    if (needs.memory > memory) {
        run.log.warn("the directions were not looked at, since their fields do not fit.");
        return;
    }
    check_directions(run, check);
    warn_of_steep_ground(check, run.log);
}

}  // namespace

std::vector<MapCheck> check_maps(const Run& run) {
    const CaseSettings& settings = run.settings;
    int datum = run.maps.datum;
    std::vector<MapCheck> found;
    const auto maps = settings.TORVEX_MODE != 0 ? std::nullopt : placed_by_headers(settings, datum);
    if (!maps) {
        return found;  // the directions tell what is wrong with a map
    }
    if (maps->basic_h.placed() && !settings.TERRAIN_MODE.starts_with("flat")) {
        found.push_back(
            check_map(terrain_alone(settings), run.lines, *maps, maps->basic_h, "terrain map"));
    }
    if (maps->basic_z0.placed() && settings.TERRAIN_MODE != "flat" && !settings.canopy_on()) {
        found.push_back(check_map(roughness_alone(settings), run.lines, *maps, maps->basic_z0,
                                  "roughness map"));
    }
    return found;
}

void check_case(const CaseText& file, CaseSettings& settings, Run& run, CaseCheck& check) {
    try {
        KeyLines lines;
        read_settings(file, settings, lines, run);
        check.keys = key_account(file, settings, lines);
        size_run(settings, run);
        check_settled(run, check);
    } catch (const Stop& stop) {
        if (!check.stop) {
            check.stop = stop;
        }
    }
}

}  // namespace torvex
