#include "maps/conversion/trdb2tvm.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "case/case_keys.hpp"
#include "case/case_text.hpp"
#include "case/namelist.hpp"
#include "maps/conversion/covered_area.hpp"
#include "maps/conversion/land_use_overlay.hpp"
#include "maps/conversion/land_use_roughness.hpp"
#include "maps/conversion/map_picture.hpp"
#include "maps/conversion/mosaic.hpp"
#include "maps/conversion/read_tiles.hpp"
#include "maps/conversion/write_map.hpp"
#include "maps/local_metric.hpp"

namespace torvex {

namespace {

constexpr const char* case_name = "torvex.tin";
constexpr double shape_d_lon = 0.075;  // samples of a map from a shapefile alone [minutes of arc]
constexpr double shape_d_lat = 0.05;

void tell(const std::string& text, RunLog& log) {
    console("   - " + text);
    log.timed(" " + text);
}

// A mode whose buffer zones may reach farther than the ratios say. A case that cannot be read yet
// says nothing.
void warn_of_long_buffers(const ConversionSettings& settings, RunLog& log) {
    std::optional<std::string> text = read_text_file(case_name);
    if (!text || settings.COEF_FROM_TORVEX_BASIC > 0.0F) {
        return;
    }
    const CaseText file{case_name, std::move(*text)};
    CaseSettings planned;
    KeyLines lines;
    for (const CaseGroup& group : namelist_groups()) {
        if (group.name == "NML_ER") {
            try {
                read_namelist_group(file, group, planned, lines);
            } catch (const Stop&) {
                return;
            }
        }
    }
    if (planned.BOUNDARY_HEIGHT_MODE == 1) {
        log.warn(
            "BOUNDARY_HEIGHT_MODE is 1 in torvex.tin: its buffer zones can reach beyond the maps. "
            "Give the \"Coefficient of domain size\" of a run's log as COEF_FROM_TORVEX_BASIC.");
    }
}

void tell_tiles(const TileSet& set, const TileRaster& tiles, RunLog& log) {
    tell(set.description + ": " + std::to_string(tiles.tiles) + " tiles, " +
             std::to_string(tiles.missing) + " of them missing and taken as sea",
         log);
}

AreaLimits area_of_tiles(const TileSet& set, const ConversionSettings& settings, RunLog& log) {
    return covered_area(settings, datum_of_tiles(set, settings, log).value_or(0));
}

DegreeRaster elevation_of_tiles(const ConversionSettings& settings, RunLog& log) {
    const TileSet set{settings.DB_DR, "_h.map", "elevation"};
    TileRaster tiles = read_tiles(set, area_of_tiles(set, settings, log), 0.0F, log);
    tell_tiles(set, tiles, log);
    return std::move(tiles.raster);
}

DegreeRaster roughness_of_tiles(const ConversionSettings& settings, RunLog& log) {
    const LandUseTables tables = read_land_use_tables();
    const TileSet set{settings.DB_DR, "_lu.map", "land-use"};
    const AreaLimits area = area_of_tiles(set, settings, log);
    constexpr float to_be_sea = -1.0F;
    TileRaster tiles =
        read_tiles(set, area, tables.rows >= sea_class ? tables.sea_code() : to_be_sea, log);
    if (tiles.missing > 0) {
        tables.sea_code();  // stops where the table has no sea
    }
    tell_tiles(set, tiles, log);
    codes_to_roughness(tables, "the land-use tiles in " + settings.DB_DR, tiles.raster.values);
    return std::move(tiles.raster);
}

DegreeRaster from_mosaic(const ConversionSettings& settings, const std::string& index,
                         Quantity quantity, RunLog& log) {
    const MosaicSources sources = read_mosaic_sources(settings.DB_DR, index, quantity, log);
    tell(std::string(quantity == Quantity::roughness ? "roughness" : "elevation") + ": mosaic of " +
             std::to_string(sources.maps.size()) + " maps",
         log);
    return mosaic(sources, covered_area(settings, sources.datum),
                  static_cast<double>(settings.D_LON), static_cast<double>(settings.D_LAT),
                  quantity);
}

// Samples round the centre with the roughness that stands where a shapefile has no polygon.
DegreeRaster level_raster(const ConversionSettings& settings, int datum) {
    const AreaLimits area = covered_area(settings, datum);
    DegreeRaster map;
    map.datum = datum;
    map.d_lon = settings.D_LON > 0.0F ? static_cast<double>(settings.D_LON) : shape_d_lon;
    map.d_lat = settings.D_LAT > 0.0F ? static_cast<double>(settings.D_LAT) : shape_d_lat;
    const double lon = minutes_of(settings.CENT_LON);
    const double lat = minutes_of(settings.CENT_LAT);
    const double m = std::ceil((area.lon_max - lon) / map.d_lon);
    const double n = std::ceil((area.lat_max - lat) / map.d_lat);
    require_reasonable_size(2.0 * m + 1.0, 2.0 * n + 1.0, "the map of the shapefile");
    map.base_lon = lon - m * map.d_lon;
    map.base_lat = lat - n * map.d_lat;
    map.values.allocate(static_cast<int>(2.0 * m) + 1, static_cast<int>(2.0 * n) + 1,
                        settings.Z0_DEFAULT);
    return map;
}

DegreeRaster make_terrain(const ConversionSettings& settings, RunLog& log) {
    return settings.TERRAIN_MODE == terrain_source::tiles
               ? elevation_of_tiles(settings, log)
               : from_mosaic(settings, "index.txt", Quantity::elevation, log);
}

DegreeRaster make_roughness(const ConversionSettings& settings, int terrain_datum, RunLog& log) {
    switch (settings.ROUGHNESS_MODE) {
        case roughness_source::tiles:
            return roughness_of_tiles(settings, log);
        case roughness_source::mosaic:
            return from_mosaic(settings, "index_z0.txt", Quantity::roughness, log);
        default:
            return level_raster(settings, terrain_datum);
    }
}

void warn_of_datums(const DegreeRaster& terrain, const DegreeRaster& roughness, RunLog& log) {
    if (terrain.datum != 0 && roughness.datum != 0 && terrain.datum != roughness.datum) {
        log.warn("the terrain map has the datum " + std::string(datum_name(terrain.datum)) +
                 ", the roughness map " + std::string(datum_name(roughness.datum)) +
                 ": they do not lie on each other.");
    }
}

void write(const std::string& path, const DegreeRaster& map, Quantity quantity, int picture_type,
           const std::string& picture_path, RunLog& log) {
    write_map(path, map, quantity);
    tell("wrote " + path + ": " + std::to_string(map.values.ni()) + " x " +
             std::to_string(map.values.nj()) + " samples",
         log);
    if (picture_type != picture::none) {
        write_map_picture(picture_path, picture_type, map, quantity);
        tell("wrote " + picture_path, log);
    }
}

}  // namespace

void trdb2tvm(const ConversionSettings& settings, RunLog& log) {
    warn_of_long_buffers(settings, log);
    tell("the maps must reach" + edit::F(covered_half_size(settings), 10, 1) +
             " m from the centre to each side",
         log);
    DegreeRaster terrain;
    DegreeRaster roughness;
    if (settings.writes_terrain()) {
        terrain = make_terrain(settings, log);
    }
    std::optional<RoughnessCheck> check;
    if (settings.writes_roughness()) {
        roughness = make_roughness(settings, terrain.datum, log);
        if (settings.SHP_MODE != 0) {
            check = overlay_land_use(settings, case_name, log, roughness);
        }
    }
    warn_of_datums(terrain, roughness, log);

    if (settings.writes_terrain()) {
        write(settings.BASIC_H_FILE, terrain, Quantity::elevation, settings.BASIC_H_VISUALISE_TYPE,
              settings.BASIC_H_VISUALISE_FILE, log);
    }
    if (settings.writes_roughness()) {
        write(settings.BASIC_Z0_FILE, roughness, Quantity::roughness,
              settings.BASIC_Z0_VISUALISE_TYPE, settings.BASIC_Z0_VISUALISE_FILE, log);
    }
    if (check && settings.SHP_MODE == 2) {
        write_roughness_check(roughness, *check);
        tell(std::string("wrote ") + roughness_check_name, log);
    }
}

}  // namespace torvex
