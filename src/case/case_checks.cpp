#include "case/case_checks.hpp"

#include <set>
#include <string>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "case/wind_directions.hpp"

namespace torvex {

namespace {

// A test that fails names the key, what stands there, what was expected, and the line.
class Checks {
 public:
    Checks(const CaseText& file, const KeyLines& lines) : file_(file), lines_(lines) {}

    void integer(const char* key, std::int32_t value, bool good,
                 const std::string& expected) const {
        if (!good) {
            fail(key, std::to_string(value), expected);
        }
    }
    void above_zero(const char* key, float value) const {
        if (!(value > 0.0F)) {
            fail(key, edit::list(value), "a value above 0");
        }
    }
    [[noreturn]] void fail(const std::string& key, const std::string& value,
                           const std::string& expected) const {
        const std::string name = key.substr(0, key.find('('));
        stop(1, "key " + key + " is " + std::string(trimmed(value)) + ", expected " + expected,
             lines_.where(file_, name));
    }

 private:
    const CaseText& file_;
    const KeyLines& lines_;
};

// An iteration of more sweeps would never come to its end.
void check_sweeps(const Checks& check, const CaseSettings& settings) {
    constexpr std::int32_t most = 10000;
    const auto sweeps = [&](const char* key, std::int32_t value) {
        check.integer(key, value, value <= most, "at most " + std::to_string(most));
    };
    sweeps("NSWPU", settings.NSWPU);
    sweeps("NSWPV", settings.NSWPV);
    sweeps("NSWPW", settings.NSWPW);
    sweeps("NSWPP", settings.NSWPP);
    sweeps("NSWPK", settings.NSWPK);
    sweeps("NSWPE", settings.NSWPE);
}

void check_angles(const Checks& check, const CaseSettings& settings) {
    std::set<std::string> tags;
    for (int iwd = 1; iwd <= settings.N_WIND_DIRECTION; ++iwd) {
        const float angle = angle_of(settings, iwd);
        const std::string key = "WIND_DIRECTION_ANGLE(" + std::to_string(iwd) + ")";
        if (!(angle >= 0.0F && angle <= 360.0F)) {
            check.fail(key, edit::list(angle), "0 to 360 degrees");
        }
        if (!tags.insert(wd_tag_of(angle)).second) {
            check.fail(key, edit::list(angle),
                       "an angle of its own: another direction has the tag " + wd_tag_of(angle) +
                           " too, and their files would overwrite each other");
        }
    }
}

// Choices between few values, where a wrong number would pass for one of them.
void check_choices(const Checks& check, const CaseSettings& settings) {
    const auto among = [&](const char* key, std::int32_t value, std::int32_t most) {
        check.integer(key, value, value >= 0 && value <= most, "0 to " + std::to_string(most));
    };
    among("ACCEL", settings.ACCEL, 1);
    among("ACCEL_LEVELS", settings.ACCEL_LEVELS, 4);
    among("PRESSURE_SOLVER", settings.PRESSURE_SOLVER, 1);
    if (!(settings.STOP_SITES >= 0.0F && settings.STOP_SITES < 1.0F)) {
        check.fail("STOP_SITES", edit::list(settings.STOP_SITES), "a fraction, 0 to below 1");
    }
}

// The parent of a nested run is a plain case: its files carry no prefix.
void check_parent_kind(const Checks& check, const CaseSettings& settings) {
    check.integer("ATLAS_FLAG", settings.ATLAS_FLAG, settings.ATLAS_FLAG != 1,
                  "0 in a nested run: its parent is a plain case");
    if (settings.TERRAIN_MODE.starts_with("flat")) {
        check.fail("TERRAIN_MODE", "'" + settings.TERRAIN_MODE + "'",
                   "'normal' in a nested run: its parent is a plain case");
    }
}

}  // namespace

void check_limits(const CaseText& file, const CaseSettings& settings, const KeyLines& lines) {
    const Checks check(file, lines);
    const int directions = settings.N_WIND_DIRECTION;
    check.integer("N_WIND_DIRECTION", directions, directions >= 0 && directions <= max_directions,
                  "0 to " + std::to_string(max_directions));
    check.integer("N_SITE", settings.N_SITE, settings.N_SITE >= 0 && settings.N_SITE <= max_sites,
                  "0 to " + std::to_string(max_sites));
    check.integer("MONITOR_STEP", settings.MONITOR_STEP, settings.MONITOR_STEP >= 1,
                  "at least 1 (it has no default)");
    check_sweeps(check, settings);
    check_choices(check, settings);
    if (settings.wall_on_top()) {
        check.above_zero("WIND_TUNNEL_Z0", settings.WIND_TUNNEL_Z0);
    }
    if (settings.BOUNDARY_HEIGHT_MODE == 1) {
        check.above_zero("BUFFER_ZONE_SLOPE_GRADIENT", settings.BUFFER_ZONE_SLOPE_GRADIENT);
    }
    if (settings.nested()) {
        check_parent_kind(check, settings);
    }
    if (settings.TORVEX_MODE != 0) {
        if (settings.nested()) {
            check.integer("TORVEX_MODE", settings.TORVEX_MODE, false,
                          "0 in a nested run: a child takes its mesh from its parent");
        }
        return;  // mesh and directions come from the user's files
    }
    check.above_zero("MIN_DXY", settings.MIN_DXY);
    check.above_zero("MIN_DZ", settings.MIN_DZ);
    check.above_zero("MESH_VRATIO", settings.MESH_VRATIO);
    check_angles(check, settings);
}

}  // namespace torvex
