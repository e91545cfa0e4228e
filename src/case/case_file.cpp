#include "case/case_file.hpp"

#include <cmath>
#include <optional>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "case/alpha_table.hpp"
#include "case/case_keys.hpp"
#include "case/model_report.hpp"
#include "case/namelist.hpp"
#include "maps/local_metric.hpp"

namespace torvex {

namespace {

// Untimed lines stand behind the columns of the date stamp.
const std::string message_indent(21, ' ');

void read_groups(const CaseText& file, CaseSettings& settings, KeyLines& lines, RunLog& log) {
    for (const CaseGroup& group : namelist_groups()) {
        read_namelist_group(file, group, settings, lines);
        if (!group.message.empty()) {
            log.line(message_indent + std::string(group.message));
        }
    }
}

void report_modes(const CaseSettings& settings, RunLog& log) {
    log.line("  atlas_mode    = " + edit::L(settings.ATLAS_FLAG == 1, 1));
    log.line("  terrain_flat  = " + settings.TERRAIN_MODE);
    log.line("  meso_dws_mode = " + edit::L(settings.MESO_DWS_MODE, 1));
    log.line(edit::list(settings.USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN));
}

void set_run_prefix(CaseSettings& settings) {
    settings.run_prefix = settings.ATLAS_FLAG == 1 ? "atlas-" : "";
    if (settings.TERRAIN_MODE == "flat") {
        settings.run_prefix = "flat-";
        settings.N_WIND_DIRECTION = 1;
        settings.WIND_DIRECTION_ANGLE(1) = 0.0F;
    } else if (settings.TERRAIN_MODE == "flat2") {
        settings.run_prefix = "flat2-";
    }
}

// A name that begins with a blank is none, so that one can be switched off without being lost.
bool is_given(const std::string& name) {
    return !name.empty() && name.front() != ' ';
}

void set_positions(CaseSettings& settings) {
    if (settings.MONITOR_POSITION == 0) {
        settings.MONITOR_LON = settings.CENT_LON;
        settings.MONITOR_LAT = settings.CENT_LAT;
        settings.MONITOR_HEIGHT = 30.0F;
    }
    settings.cent_lat_min = minutes_of(settings.CENT_LAT);
    settings.cent_lon_min = minutes_of(settings.CENT_LON);
    settings.monitor_lat_min = minutes_of(settings.MONITOR_LAT);
    settings.monitor_lon_min = minutes_of(settings.MONITOR_LON);
}

void check_monitor(const CaseText& file, const CaseSettings& settings, const KeyLines& lines) {
    // At 270 degrees the frame of the wind is the map's own: x east, y north.
    constexpr float unrotated = 270.0F;
    const MeshPosition offset =
        position_from_centre(settings.monitor_lon_min, settings.monitor_lat_min,
                             settings.cent_lon_min, settings.cent_lat_min, settings.GS, unrotated);
    // Written so that a position beyond all numbers, where the offset is NaN, is outside too.
    if (!(std::abs(offset.x) <= settings.WE_LENGTH / 2.0F &&
          std::abs(offset.y) <= settings.NS_LENGTH / 2.0F)) {
        stop(161,
             "the monitor point lies" + edit::F(offset.x, 12, 1) + " m east and" +
                 edit::F(offset.y, 12, 1) +
                 " m north of the case centre, outside the study area of WE_LENGTH by NS_LENGTH",
             lines.where(file, "MONITOR_LON"));
    }
    if (settings.MONITOR_HEIGHT > settings.CONSTANT_DZ_HEIGHT) {
        stop(162,
             "MONITOR_HEIGHT," + edit::F(settings.MONITOR_HEIGHT, 10, 2) +
                 " m, is above CONSTANT_DZ_HEIGHT," + edit::F(settings.CONSTANT_DZ_HEIGHT, 10, 2) +
                 " m",
             lines.where(file, "MONITOR_HEIGHT"),
             settings.MONITOR_POSITION == 0 ? "with MONITOR_POSITION = 0 the height is 30 m" : "");
    }
    if (settings.MONITOR_HEIGHT <= 0.0F) {
        stop(163, "MONITOR_HEIGHT is not above 0", lines.where(file, "MONITOR_HEIGHT"));
    }
}

}  // namespace

CaseText load_case_text(const std::string& case_file) {
    std::optional<std::string> text = read_text_file(case_file);
    if (!text) {
        const std::string message = "tin file missing.";
        console(message);
        stop(1, message, case_file, "name an existing case file: torvex /f CASE_FILE");
    }
    return {case_file, std::move(*text)};
}

void read_case_file(const CaseText& file, CaseSettings& settings, KeyLines& lines, RunLog& log) {
    log.timed(" Input file is set to [" + file.name + "]");
    set_defaults(settings);
    read_groups(file, settings, lines, log);
    report_modes(settings, log);

    if (settings.ATLAS_FLAG == 1 && settings.TERRAIN_MODE.starts_with("flat")) {
        stop(191, "ATLAS_FLAG is 1, but TERRAIN_MODE is \"" + settings.TERRAIN_MODE + "\"",
             lines.where(file, "TERRAIN_MODE"), "an atlas run needs real terrain");
    }
    set_run_prefix(settings);
    settings.detailed_h_given = is_given(settings.DETAILED_H_FILE);
    settings.detailed_z0_given = is_given(settings.DETAILED_Z0_FILE);

    if (settings.GS < 0 || settings.GS > 3) {
        stop(1, "key GS is " + std::to_string(settings.GS) + ", expected 0 to 3",
             lines.where(file, "GS"), "0 default, 1 Tokyo, 2 JGD2000, 3 WGS84");
    }
    set_positions(settings);
    check_monitor(file, settings, lines);

    select_turbulence_constants(file, settings, lines);
    report_turbulence_model(settings, log);
    if (settings.TERRAIN_MODE == "flat") {
        settings.DOUBLE_CORRECTION = false;
    }
    if (settings.USE_DIRECTIONAL_ALPHA) {
        read_alpha_table(settings);
    }
}

}  // namespace torvex
