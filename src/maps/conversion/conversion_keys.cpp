#include "maps/conversion/conversion_keys.hpp"

#include <array>

#include "base/stop.hpp"
#include "case/as_target.hpp"
#include "case/case_keys.hpp"
#include "case/namelist.hpp"

namespace torvex {

namespace {

GroupKey file_key(std::string_view name, std::string& value) {
    return {name, as_target(value), CaseKey::file_name_length, true};
}

}  // namespace

ConversionSettings read_conversion_settings(const CaseText& file) {
    ConversionSettings settings;
    const std::array keys{
        file_key("DB_DR", settings.DB_DR),
        file_key("BASIC_H_FILE", settings.BASIC_H_FILE),
        file_key("BASIC_Z0_FILE", settings.BASIC_Z0_FILE),
        GroupKey{"BASIC_H_VISUALISE_TYPE", as_target(settings.BASIC_H_VISUALISE_TYPE)},
        file_key("BASIC_H_VISUALISE_FILE", settings.BASIC_H_VISUALISE_FILE),
        GroupKey{"BASIC_Z0_VISUALISE_TYPE", as_target(settings.BASIC_Z0_VISUALISE_TYPE)},
        file_key("BASIC_Z0_VISUALISE_FILE", settings.BASIC_Z0_VISUALISE_FILE),
        GroupKey{"MAX_DXY", as_target(settings.MAX_DXY)},
        GroupKey{"WE_LENGTH", as_target(settings.WE_LENGTH)},
        GroupKey{"NS_LENGTH", as_target(settings.NS_LENGTH)},
        GroupKey{"SIDE_BR", as_target(settings.SIDE_BR)},
        GroupKey{"UP_BR", as_target(settings.UP_BR)},
        GroupKey{"DOWN_BR", as_target(settings.DOWN_BR)},
        GroupKey{"ADD_R", as_target(settings.ADD_R)},
        GroupKey{"CENT_LON", as_target(settings.CENT_LON)},
        GroupKey{"CENT_LAT", as_target(settings.CENT_LAT)},
        GroupKey{"OUTPUT_TYPE", as_target(settings.OUTPUT_TYPE)},
        GroupKey{"TERRAIN_MODE", as_target(settings.TERRAIN_MODE)},
        GroupKey{"ROUGHNESS_MODE", as_target(settings.ROUGHNESS_MODE)},
        GroupKey{"SHP_MODE", as_target(settings.SHP_MODE)},
        GroupKey{"SHP_CS", as_target(settings.SHP_CS)},
        GroupKey{"IGNORE_ZERO_HEIGHT", as_target(settings.IGNORE_ZERO_HEIGHT)},
        GroupKey{"ONLY_Z0C", as_target(settings.ONLY_Z0C)},
        GroupKey{"COEF_FROM_TORVEX_BASIC", as_target(settings.COEF_FROM_TORVEX_BASIC)},
        GroupKey{"COEF_MAX_RAD", as_target(settings.COEF_MAX_RAD)},
        GroupKey{"D_LON", as_target(settings.D_LON)},
        GroupKey{"D_LAT", as_target(settings.D_LAT)},
        GroupKey{"Z0_DEFAULT", as_target(settings.Z0_DEFAULT)},
    };
    KeyLines lines;
    read_namelist_group(
        file, NamelistGroup{"TRDB2TVM", keys, "the settings of a conversion stand in this group"},
        lines);
    settings.SHP_CS_given = lines.given("SHP_CS");
    check_conversion_settings(settings, file.name);
    return settings;
}

}  // namespace torvex
