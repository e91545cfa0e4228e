#include "maps/conversion/conversion_settings.hpp"

#include <cmath>
#include <initializer_list>
#include <string_view>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "maps/local_metric.hpp"

namespace torvex {

namespace {

struct Check {
    const std::string& where;

    [[noreturn]] void fail(const std::string& what, const std::string& fix) const {
        stop(1, "group &TRDB2TVM: " + what, where, fix);
    }
    void mode(std::string_view key, int value, int least, int most,
              const std::string& known) const {
        if (value < least || value > most) {
            fail("key " + std::string(key) + " is " + std::to_string(value), known);
        }
    }
    void above_zero(std::string_view key, float value) const {
        if (!(value > 0.0F && std::isfinite(value))) {
            fail("key " + std::string(key) + " is missing or not above 0", "give it in metres");
        }
    }
    void not_negative(std::string_view key, float value) const {
        if (!(value >= 0.0F && std::isfinite(value))) {
            fail("key " + std::string(key) + " is" + edit::E(value, 15, 7), "it must be 0 or more");
        }
    }
    void named(std::string_view key, const std::string& value, const std::string& fix) const {
        if (trimmed(value).empty()) {
            fail("key " + std::string(key) + " is missing or blank", fix);
        }
    }
};

void check_modes(const ConversionSettings& settings, const Check& check) {
    check.mode("OUTPUT_TYPE", settings.OUTPUT_TYPE, 1, 1, "1 is a lon-lat map, the only kind");
    check.mode("TERRAIN_MODE", settings.TERRAIN_MODE, 0, 2, "0 none, 1 tiles, 2 mosaic of maps");
    check.mode("ROUGHNESS_MODE", settings.ROUGHNESS_MODE, 0, 3,
               "0 none, 1 land-use tiles, 2 mosaic of roughness maps, 3 land-use shapefile alone");
    check.mode("SHP_MODE", settings.SHP_MODE, 0, 2,
               "0 off, 1 shapefile over the raster, 2 the same and a check shapefile");
    const std::string pictures = "0 none, 1 text grid, 2 PPM picture";
    check.mode("BASIC_H_VISUALISE_TYPE", settings.BASIC_H_VISUALISE_TYPE, 0, 2, pictures);
    check.mode("BASIC_Z0_VISUALISE_TYPE", settings.BASIC_Z0_VISUALISE_TYPE, 0, 2, pictures);
}

void check_sizes(const ConversionSettings& settings, const Check& check) {
    check.above_zero("WE_LENGTH", settings.WE_LENGTH);
    check.above_zero("NS_LENGTH", settings.NS_LENGTH);
    check.above_zero("MAX_DXY", settings.MAX_DXY);
    check.above_zero("Z0_DEFAULT", settings.Z0_DEFAULT);
    check.not_negative("SIDE_BR", settings.SIDE_BR);
    check.not_negative("UP_BR", settings.UP_BR);
    check.not_negative("DOWN_BR", settings.DOWN_BR);
    check.not_negative("ADD_R", settings.ADD_R);
    check.not_negative("COEF_FROM_TORVEX_BASIC", settings.COEF_FROM_TORVEX_BASIC);
    check.not_negative("COEF_MAX_RAD", settings.COEF_MAX_RAD);
    check.not_negative("D_LON", settings.D_LON);
    check.not_negative("D_LAT", settings.D_LAT);
    const double lat = minutes_of(settings.CENT_LAT);
    const double lon = minutes_of(settings.CENT_LON);
    if (!(std::abs(lat) < 90.0 * 60.0 && std::abs(lon) <= 360.0 * 60.0)) {
        check.fail("CENT_LON or CENT_LAT is no place on the earth",
                   "give degrees, minutes and seconds");
    }
    if (lat == 0.0 && lon == 0.0) {
        check.fail("CENT_LON and CENT_LAT are missing", "give degrees, minutes and seconds");
    }
}

void check_files(const ConversionSettings& settings, const Check& check) {
    if (settings.writes_terrain()) {
        check.named("BASIC_H_FILE", settings.BASIC_H_FILE, "name the terrain map to write");
        if (settings.BASIC_H_VISUALISE_TYPE != picture::none) {
            check.named("BASIC_H_VISUALISE_FILE", settings.BASIC_H_VISUALISE_FILE,
                        "name the picture, or set BASIC_H_VISUALISE_TYPE = 0");
        }
    }
    if (settings.writes_roughness()) {
        check.named("BASIC_Z0_FILE", settings.BASIC_Z0_FILE, "name the roughness map to write");
        if (settings.BASIC_Z0_VISUALISE_TYPE != picture::none) {
            check.named("BASIC_Z0_VISUALISE_FILE", settings.BASIC_Z0_VISUALISE_FILE,
                        "name the picture, or set BASIC_Z0_VISUALISE_TYPE = 0");
        }
    }
    const bool roughness_from_database =
        settings.writes_roughness() && settings.ROUGHNESS_MODE != roughness_source::shape;
    if (settings.writes_terrain() || roughness_from_database) {
        check.named("DB_DR", settings.DB_DR, "name the directory of the database");
    }
    if (settings.writes_terrain() && settings.writes_roughness() &&
        trimmed(settings.BASIC_H_FILE) == trimmed(settings.BASIC_Z0_FILE)) {
        check.fail("BASIC_H_FILE and BASIC_Z0_FILE name one file", "give each map its own name");
    }
}

}  // namespace

void check_conversion_settings(const ConversionSettings& settings, const std::string& where) {
    const Check check{where};
    check_modes(settings, check);
    check_sizes(settings, check);
    if (!settings.writes_terrain() && !settings.writes_roughness()) {
        check.fail("there is no map to write", "set TERRAIN_MODE or ROUGHNESS_MODE above 0");
    }
    if (settings.SHP_MODE == 0 && settings.ROUGHNESS_MODE == roughness_source::shape) {
        check.fail("ROUGHNESS_MODE 3 takes the roughness from a shapefile, but SHP_MODE is 0",
                   "set SHP_MODE = 1");
    }
    if (settings.SHP_MODE != 0 && !settings.writes_roughness()) {
        check.fail("SHP_MODE lays a shapefile over the roughness, but ROUGHNESS_MODE is 0",
                   "set ROUGHNESS_MODE, or SHP_MODE = 0");
    }
    check_files(settings, check);
}

}  // namespace torvex
