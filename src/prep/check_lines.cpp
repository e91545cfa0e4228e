// The record of a check as lines for people.

#include <algorithm>

#include "base/edit.hpp"
#include "base/text_file.hpp"
#include "prep/case_check.hpp"

namespace torvex {

namespace {

using Lines = std::vector<std::string>;

std::string fixed(double value, int decimals) {
    std::string text(trimmed(edit::F(value, 48, decimals)));
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text;
}

std::string metres(float value) {
    return fixed(static_cast<double>(value), 0) + " m";
}

std::string megabytes(std::int64_t bytes) {
    constexpr double megabyte = 1e6;
    return fixed(static_cast<double>(bytes) / megabyte, 0) + " MB";
}

std::string duration(double seconds) {
    constexpr double minute = 60.0;
    constexpr double hour = 3600.0;
    if (seconds < 2 * minute) {
        return fixed(seconds, 0) + " s";
    }
    return seconds < 2 * hour ? fixed(seconds / minute, 0) + " min"
                              : fixed(seconds / hour, 1) + " h";
}

void add_domain(const Run& run, const CaseCheck& check, Lines& lines) {
    const MeshLines& mesh = run.lines;
    if (run.settings.TORVEX_MODE == 0) {
        lines.push_back("domain      study circle of radius " + metres(mesh.max_rad) + ", top at " +
                        metres(mesh.MAX_Z) + "; ground " + metres(mesh.elevation.Hmin) + " to " +
                        metres(mesh.elevation.Hmax) + ", mean " + metres(mesh.elevation.Havg));
        lines.push_back("            " + metres(mesh.x_line(mesh.nx) - mesh.x_line(1)) +
                        " along the wind, " + metres(mesh.y_line(mesh.ny) - mesh.y_line(1)) +
                        " across");
    }
    lines.push_back("mesh        " + std::to_string(check.ni) + " x " + std::to_string(check.nj) +
                    " x " + std::to_string(check.nk) + " = " + std::to_string(check.cells()) +
                    " cells in each direction");
}

void add_maps(const CaseCheck& check, Lines& lines) {
    for (const MapCheck& map : check.maps) {
        std::string line = edit::A("", 12) + map.name + ": nearest side " + metres(map.cover_m) +
                           " from the centre; covers " +
                           std::to_string(check.directions.size() - map.outside.size()) + " of " +
                           std::to_string(check.directions.size()) + " directions";
        if (!map.outside.empty() && map.largest_study_m) {
            line += *map.largest_study_m > 0.0F
                        ? ", all with a study area of " + metres(*map.largest_study_m)
                        : ", and no study area would fit";
        }
        lines.push_back((&map == &check.maps.front() ? "maps" : "    ") + line.substr(4));
    }
}

void add_resources(const ResourceCheck& needs, std::size_t directions, Lines& lines) {
    lines.push_back(
        "memory      " + megabytes(needs.memory) + (needs.memory_measured ? "" : ", an estimate") +
        "; this machine has " + megabytes(needs.memory_limit) +
        (needs.group_limit ? ", the control group allows " + megabytes(*needs.group_limit)
                           : ", no control group limits it"));
    lines.push_back(
        "disk        " + megabytes(needs.disk) + " a direction, " +
        megabytes(needs.disk * static_cast<std::int64_t>(directions)) + " in all" +
        (needs.disk_free ? "; free are " + megabytes(*needs.disk_free) : std::string()));
}

std::string state_of(const DirectionCheck& direction) {
    switch (direction.state) {
        case DirectionState::saved:
            return "goes on from its saved state, not looked at";
        case DirectionState::skipped:
            return "would be skipped, see the warning";
        case DirectionState::stopped:
            return "stop " + std::to_string(direction.stop);
        case DirectionState::not_looked_at:
            return "not looked at";
        case DirectionState::good:
            break;
    }
    std::string line = edit::F(direction.least_d_over_z0, 10, 1) +
                       edit::F(direction.slopes.steepest, 12, 1) + "  ";
    for (const double part : direction.slopes.parts) {
        line += edit::F(100.0 * part, 8, 2);
    }
    return line;
}

void add_directions(const CaseCheck& check, Lines& lines) {
    lines.emplace_back(
        "direction   first cell    steepest   part of the ground [%] by slope [deg]");
    lines.emplace_back(
        "[deg]       over z0 [-]   [deg]        0-10   10-20   20-30   30-40     >40");
    for (const DirectionCheck& direction : check.directions) {
        lines.push_back(edit::F(direction.angle, 5, 1) + "    " + state_of(direction));
    }
}

void add_sites(const CaseCheck& check, Lines& lines) {
    for (const SiteCheck& site : check.sites) {
        lines.push_back("site        " + printable(site.label) +
                        (site.ground
                             ? ": ground at " + fixed(static_cast<double>(*site.ground), 1) + " m"
                             : ":") +
                        (site.inside ? "" : " outside the mesh of some direction"));
    }
}

void add_keys(const std::string& head, const Lines& keys, Lines& lines) {
    constexpr std::size_t widest = 100;
    std::string line = head;
    for (const std::string& key : keys) {
        if (line.size() + key.size() > widest) {
            lines.push_back(line);
            line = "           ";
        }
        line += " " + key;
    }
    lines.push_back(keys.empty() ? line + " none" : line);
}

void add_time(const Run& run, const CaseCheck& check, Lines& lines) {
    if (!check.s_per_iteration) {
        return;
    }
    const double seconds = *check.s_per_iteration;
    const std::int32_t MAXIT = run.settings.MAXIT;
    lines.push_back("time        " + fixed(seconds, seconds < 1.0 ? 4 : 2) +
                    " s an iteration on this machine now; " + std::to_string(MAXIT) +
                    " of them (MAXIT) take " + duration(seconds * MAXIT) + " a direction, " +
                    duration(seconds * MAXIT * static_cast<double>(check.directions.size())) +
                    " in all");
    lines.emplace_back("            how many a direction needs to converge nobody can promise");
}

}  // namespace

std::vector<std::string> check_lines(const Run& run, const CaseCheck& check) {
    Lines lines;
    if (check.sized) {
        add_domain(run, check, lines);
        add_maps(check, lines);
        add_resources(check.resources, check.directions.size(), lines);
        add_time(run, check, lines);
        add_directions(check, lines);
        add_sites(check, lines);
    }
    add_keys("given      ", check.keys.given, lines);
    add_keys("defaulted  ", check.keys.defaulted, lines);
    add_keys("idle       ", check.keys.without_effect, lines);
    const std::size_t warnings = run.log.warnings().size();
    lines.push_back("warnings    " + std::to_string(warnings));
    return lines;
}

}  // namespace torvex
