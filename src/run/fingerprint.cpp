#include "run/fingerprint.hpp"

#include <algorithm>
#include <span>
#include <string_view>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/hash.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/whole_file.hpp"
#include "canopy/canopy_file.hpp"
#include "maps/map_file.hpp"
#include "solver/inflow_profile.hpp"

namespace torvex {

namespace {

constexpr std::string_view title = "# What the saved state of this direction was made from.\n";

std::string text_of(double value) {
    return std::string(trimmed(edit::E(value, 24, 16)));
}
std::string text_of(float value) {
    return std::string(trimmed(edit::E(value, 18, 9)));
}
std::string text_of(std::int32_t value) {
    return std::to_string(value);
}
std::string text_of(bool value) {
    return value ? "T" : "F";
}

// Gathers the entries. A file that cannot be read leaves its name in `gone`.
class Gathering {
 public:
    Gathering(Run& run, const Direction& direction, MapsAre maps, std::string& gone)
        : run_(run), settings_(run.settings), direction_(direction), maps_(maps), gone_(gone) {}

    Fingerprint take() {
        note("WIND_DIRECTION_ANGLE", text_of(direction_.angle));
        if (settings_.TORVEX_MODE != 0) {
            user_domain();
        } else {
            terrain();
            inflow();
        }
        return std::move(fingerprint_);
    }

 private:
    void note(std::string key, std::string value) {
        fingerprint_.entries.emplace_back(std::move(key), std::move(value));
    }

    void file(const std::string& key, const std::string& path) {
        if (const auto hash = hash_of_file(path)) {
            note(key, *hash);
        } else {
            gone_ = path;
        }
    }

    // A map that is read only to be compared is not kept, but what it came to is: one read a run.
    void map(const MapRole& role, const std::string& path,
             const std::shared_ptr<const ParsedMap>& as_read) {
        if (trimmed(path).empty()) {
            return;
        }
        const std::string key(role.key);
        if (as_read && maps_ == MapsAre::as_read) {
            note(key, hash_of_map(*as_read));
            return;
        }
        const auto known = run_.map_hashes.find(key);
        if (known != run_.map_hashes.end()) {
            note(key, known->second);
            return;
        }
        try {
            note(key, hash_of_map(*read_map_file(path, role, as_read, run_.log)));
            run_.map_hashes[key] = fingerprint_.entries.back().second;
        } catch (const Stop&) {
            gone_ = path;
        }
    }

    static std::string hash_of_map(const ParsedMap& map) {
        const MapHeader& header = map.header;
        Hash hash;
        for (const float number :
             {header.base_longitude(1), header.base_longitude(2), header.base_latitude(1),
              header.base_latitude(2), header.spacing(1), header.spacing(2)}) {
            hash.add(std::span(&number, 1));
        }
        for (const int number : {header.columns, header.rows, header.datum}) {
            hash.add(static_cast<std::uint32_t>(number));
        }
        hash.add(std::span(map.values->data(), map.values->size()));
        return hash.text();
    }

    void terrain() {
        const CaseSettings& s = settings_;
        const MapState& maps = run_.maps;
        map(basic_h_role, s.BASIC_H_FILE, maps.basic_h);
        map(basic_z0_role, s.BASIC_Z0_FILE, maps.basic_z0);
        if (s.detailed_h_given) {
            map(detailed_h_role, s.DETAILED_H_FILE, maps.detailed_h);
        }
        if (s.detailed_z0_given) {
            map(detailed_z0_role, s.DETAILED_Z0_FILE, maps.detailed_z0);
        }
        note("CENT_LON", text_of(s.cent_lon_min));
        note("CENT_LAT", text_of(s.cent_lat_min));
        note("GS", text_of(s.GS));
        note("TERRAIN_MODE", s.TERRAIN_MODE);
        note("ATLAS_FLAG", text_of(s.ATLAS_FLAG));
        if (s.SPECIFY_ELEVATION_CORRECTION_FACTOR) {
            note("ELEVATION_CORRECTION_FACTOR",
                 text_of(s.ELEVATION_CORRECTION_FACTOR(direction_.iwd)));
        }
        if (s.canopy_on()) {
            const std::string path = direction_.restart_stem + std::string(canopy_file_name);
            file(path, path);
        }
        if (s.canopy.modify_terrain) {
            note("modify_circle_range", text_of(s.canopy.modify_circle_range));
        }
    }

    // Only keys that act: a value behind a switch that is off may change.
    void inflow() {
        const CaseSettings& s = settings_;
        note("BOUNDARY_HEIGHT_MODE", text_of(s.BOUNDARY_HEIGHT_MODE));
        if (s.SPECIFY_INFLOW_ELEVATION || s.BOUNDARY_HEIGHT_MODE != 0) {
            note("SPECIFY_INFLOW_ELEVATION", text_of(s.SPECIFY_INFLOW_ELEVATION));
            note("INFLOW_ELEVATION", text_of(s.INFLOW_ELEVATION));
        }
        if (s.TERRAIN_MODE == "flat") {
            note("FLAT_ROUGHNESS", text_of(s.FLAT_ROUGHNESS));
        }
        note("MESO_DWS_MODE", text_of(s.MESO_DWS_MODE));
        note("USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN",
             text_of(s.USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN));
        note("USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN",
             text_of(s.USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN));
        if (s.USE_EQUIVALENT_ROUGHNESS) {
            note("EQUIVALENT_ROUGHNESS", text_of(s.EQUIVALENT_ROUGHNESS(direction_.iwd)));
        }
        if (s.USE_DIRECTIONAL_ALPHA) {
            directional_alpha();
        }
        if (s.SPECIFY_INFLOW_PROFILE) {
            profile();
        }
        equilibrium();
    }

    void equilibrium() {
        if (settings_.equilibrium_inflow()) {
            note("EQUILIBRIUM_INFLOW", text_of(true));
        }
    }

    void directional_alpha() {
        const CaseSettings& s = settings_;
        Hash table;
        table.add(std::span<const float>(s.alpha_direction));
        table.add(std::span<const float>(s.alpha_value));
        note("DIRECTIONAL_ALPHA_FILE_NAME", table.text());
        Hash list;
        for (const std::int32_t iwd : s.DIRECTIONAL_ALPHA_APPLICABLE_WDS.span()) {
            list.add(static_cast<std::uint32_t>(iwd));
        }
        note("DIRECTIONAL_ALPHA_APPLICABLE_WDS", list.text());
        note("DIRECTIONAL_ALPHA_Z0_MIN", text_of(s.DIRECTIONAL_ALPHA_Z0_MIN));
        note("DIRECTIONAL_ALPHA_Z0_MAX", text_of(s.DIRECTIONAL_ALPHA_Z0_MAX));
        note("DIRECTIONAL_ALPHA_BS_EPS", text_of(s.DIRECTIONAL_ALPHA_BS_EPS));
        note("DIRECTIONAL_ALPHA_BS_MAXIT", text_of(s.DIRECTIONAL_ALPHA_BS_MAXIT));
    }

    void profile() {
        try {
            const InflowProfile profile = read_inflow_profile(settings_);
            Hash hash;
            hash.add(std::span<const float>(profile.height));
            hash.add(std::span<const float>(profile.u));
            hash.add(std::span<const float>(profile.tke));
            note("INFLOW_PROFILE_FILE", hash.text());
        } catch (const Stop&) {
            gone_ = settings_.INFLOW_PROFILE_FILE;
        }
    }

    void user_domain() {
        const UserDomain& user = settings_.user;
        file("xyz_file", user.xyz_file);
        file("roughness_file", user.roughness_file);
        if (!user.ccd_file.empty()) {
            file("ccd_file", user.ccd_file);
        }
        note("inlet", text_of(user.inlet));
        if (user.inlet == 1) {
            file("inflow_profile_file", user.inflow_profile_file);
            note("specify_turbulence", text_of(user.specify_turbulence));
        } else if (user.inlet == 0 && settings_.SPECIFY_INFLOW_PROFILE) {
            profile();
        }
        equilibrium();
    }

    Run& run_;
    const CaseSettings& settings_;
    const Direction& direction_;
    MapsAre maps_;
    std::string& gone_;
    Fingerprint fingerprint_;
};

const std::string* value_of(const Fingerprint& fingerprint, std::string_view key) {
    const auto found =
        std::ranges::find(fingerprint.entries, key, &std::pair<std::string, std::string>::first);
    return found == fingerprint.entries.end() ? nullptr : &found->second;
}

}  // namespace

std::string fingerprint_path(const std::string& restart_stem) {
    return restart_stem + std::string(file_names::fingerprint);
}

std::optional<Fingerprint> fingerprint_of(Run& run, const Direction& direction, MapsAre maps,
                                          std::string& gone) {
    gone.clear();
    Fingerprint fingerprint = Gathering(run, direction, maps, gone).take();
    if (!gone.empty()) {
        return std::nullopt;
    }
    return fingerprint;
}

void write_fingerprint(const std::string& path, const Fingerprint& fingerprint) {
    std::string text(title);
    for (const auto& [key, value] : fingerprint.entries) {
        text.append(key).append(" = ").append(value).append("\n");
    }
    write_text_file_whole(path, text);
}

std::optional<Fingerprint> read_fingerprint(const std::string& path) {
    const std::optional<std::string> text = read_text_file(path);
    if (!text) {
        return std::nullopt;
    }
    constexpr std::string_view equals = " = ";
    Fingerprint fingerprint;
    for (const std::string_view line : split_lines(*text)) {
        const std::size_t at = line.find(equals);
        if (at != std::string_view::npos) {
            fingerprint.entries.emplace_back(line.substr(0, at), line.substr(at + equals.size()));
        }
    }
    if (fingerprint.entries.empty()) {
        return std::nullopt;
    }
    return fingerprint;
}

std::string difference(const Fingerprint& saved, const Fingerprint& at_hand) {
    std::string keys;
    const auto name = [&keys](const std::string& key) { keys += (keys.empty() ? "" : ", ") + key; };
    for (const auto& [key, value] : at_hand.entries) {
        const std::string* before = value_of(saved, key);
        if (before == nullptr || *before != value) {
            name(key);
        }
    }
    for (const auto& [key, value] : saved.entries) {
        if (value_of(at_hand, key) == nullptr) {
            name(printable(key));
        }
    }
    return keys;
}

}  // namespace torvex
