#pragma once

#include <cstdint>
#include <string>

#include "base/fixed_array.hpp"

namespace torvex {

// Where the samples of a map come from. Any other number of a mode is refused.
namespace terrain_source {
inline constexpr int none = 0;
inline constexpr int tiles = 1;
inline constexpr int mosaic = 2;
}  // namespace terrain_source
namespace roughness_source {
inline constexpr int none = 0;
inline constexpr int tiles = 1;   // land-use tiles through the tables
inline constexpr int mosaic = 2;  // maps of roughness
inline constexpr int shape = 3;   // a land-use shapefile alone
}  // namespace roughness_source
namespace picture {
inline constexpr int none = 0;
inline constexpr int text_grid = 1;
inline constexpr int pixmap = 2;
}  // namespace picture

// Group TRDB2TVM of "trdb2tvm.tin": what the conversion of a database to the maps of a case is
// told.
struct ConversionSettings {
    std::string DB_DR;                         // directory of the database
    std::string BASIC_H_FILE = "terrain.map";  // maps to write
    std::string BASIC_Z0_FILE = "roughness.map";
    std::int32_t BASIC_H_VISUALISE_TYPE = 0;  // pictures of them
    std::string BASIC_H_VISUALISE_FILE;
    std::int32_t BASIC_Z0_VISUALISE_TYPE = 0;
    std::string BASIC_Z0_VISUALISE_FILE;
    float MAX_DXY = 0;    // coarsest horizontal spacing of the case [m]
    float WE_LENGTH = 0;  // study area of the case [m]
    float NS_LENGTH = 0;
    float SIDE_BR = 0.3F;  // buffer widths and additional zone of the case over the diameter [-]
    float UP_BR = 0.3F;
    float DOWN_BR = 0.3F;
    float ADD_R = 1.0F;
    Triple CENT_LON;  // centre: degrees, minutes, seconds
    Triple CENT_LAT;
    std::int32_t OUTPUT_TYPE = 1;     // 1: lon-lat map, the only one
    std::int32_t TERRAIN_MODE = 1;    // terrain_source
    std::int32_t ROUGHNESS_MODE = 1;  // roughness_source
    std::int32_t SHP_MODE = 0;        // 1: a shapefile over the raster, 2: and a check shapefile
    std::int32_t SHP_CS = 0;          // its coordinate system
    bool SHP_CS_given = false;
    bool IGNORE_ZERO_HEIGHT = false;   // leave out polygons of height 0 and below
    bool ONLY_Z0C = false;             // write no terrain
    float COEF_FROM_TORVEX_BASIC = 0;  // coefficient of domain size from the log of a run [-]
    float COEF_MAX_RAD = 0;            // largest half-size over the radius of the study circle [-]
    float D_LON = 0;                   // spacing of the samples [minutes of arc], 0: as the source
    float D_LAT = 0;
    float Z0_DEFAULT = 0.03F;  // roughness where a shapefile alone has no polygon [m]

    bool writes_terrain() const { return TERRAIN_MODE != terrain_source::none && !ONLY_Z0C; }
    bool writes_roughness() const { return ROUGHNESS_MODE != roughness_source::none; }
};

// Refuses values that are not known, keys that are missing and settings that contradict each other.
// `where` names the file. Stops with 1.
void check_conversion_settings(const ConversionSettings& settings, const std::string& where);

}  // namespace torvex
