#include "maps/conversion/read_tiles.hpp"

#include <cmath>
#include <filesystem>
#include <memory>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "maps/conversion/tile_grid.hpp"
#include "maps/map_file.hpp"

namespace torvex {

namespace {

constexpr double tolerance = 0.0005;  // of a header against the grid [minutes of arc]

std::string path_of(const TileSet& set, const Tile& tile) {
    return (std::filesystem::path(set.directory) / (tile.name() + set.suffix)).string();
}

std::shared_ptr<const ParsedMap> read_tile(const TileSet& set, const Tile& tile, RunLog& log) {
    const std::string path = path_of(set, tile);
    if (!std::filesystem::exists(path)) {
        return nullptr;
    }
    const std::string name = set.description + " tile";
    return read_map_file(path, MapRole{name, "DB_DR", 110, false}, nullptr, log);
}

void check_header(const DegreeRaster& header, int columns, int rows, const Tile& tile,
                  const std::string& path) {
    if (columns != tile_grid::samples || rows != tile_grid::samples) {
        stop(1,
             "the tile has " + std::to_string(columns) + " by " + std::to_string(rows) + " samples",
             path, "a tile has 100 by 100");
    }
    const bool fits = std::abs(header.d_lon - tile_grid::d_lon) <= tolerance / tile_grid::samples &&
                      std::abs(header.d_lat - tile_grid::d_lat) <= tolerance / tile_grid::samples &&
                      std::abs(header.base_lon - tile.base_lon()) <= tolerance &&
                      std::abs(header.base_lat - tile.base_lat()) <= tolerance;
    if (!fits) {
        stop(1,
             "the header of the tile does not belong to its name: base at" +
                 edit::F(header.base_lon, 12, 4) + " and" + edit::F(header.base_lat, 12, 4) +
                 " minutes",
             path,
             "its base is" + edit::F(tile.base_lon(), 12, 4) + " minutes of longitude and" +
                 edit::F(tile.base_lat(), 12, 4) + " of latitude, its steps 0.075 and 0.05");
    }
}

// Calls visit(tile) from the south-west on, eastwards first, until it returns false.
template <class Visit>
void for_each_tile(const TileRange& range, Visit visit) {
    for (int row = range.first.row; row <= range.last.row; ++row) {
        for (int column = range.first.column; column <= range.last.column; ++column) {
            if (!visit(Tile{row, column})) {
                return;
            }
        }
    }
}

// Collects tiles and sees to it that they have one datum.
class Collector {
 public:
    Collector(const TileSet& set, const TileRange& range, float sea) : set_(set), range_(range) {
        const int n = tile_grid::samples;
        require_reasonable_size(static_cast<double>(range.columns()) * n,
                                static_cast<double>(range.rows()) * n, "the map of the tiles");
        DegreeRaster& raster = result_.raster;
        raster.base_lon = range.first.base_lon();
        raster.base_lat = range.first.base_lat();
        raster.d_lon = tile_grid::d_lon;
        raster.d_lat = tile_grid::d_lat;
        raster.values.allocate(range.columns() * n, range.rows() * n, sea);
    }

    void take(const Tile& tile, RunLog& log) {
        ++result_.tiles;
        const std::shared_ptr<const ParsedMap> map = read_tile(set_, tile, log);
        if (map == nullptr) {
            ++result_.missing;
            return;
        }
        const std::string path = path_of(set_, tile);
        const DegreeRaster header = raster_of(map->header);
        check_header(header, map->header.columns, map->header.rows, tile, path);
        check_datum(header.datum, path);
        copy(*map->values, tile);
    }

    TileRaster result() && {
        if (result_.missing == result_.tiles) {
            stop(1,
                 "none of the " + std::to_string(result_.tiles) + " " + set_.description +
                     " tiles is there, " + range_.first.name() + set_.suffix + " to " +
                     range_.last.name() + set_.suffix,
                 set_.directory, "check DB_DR, CENT_LON and CENT_LAT");
        }
        return std::move(result_);
    }

 private:
    void check_datum(int datum, const std::string& path) {
        if (first_.empty()) {
            first_ = path;
            result_.raster.datum = datum;
        } else if (datum != result_.raster.datum) {
            stop(1, "the geodetic_system of the tile differs from that of " + first_, path,
                 "all tiles of a database have one datum");
        }
    }

    void copy(const Field2& values, const Tile& tile) {
        const int i0 = (tile.column - range_.first.column) * tile_grid::samples;
        const int j0 = (tile.row - range_.first.row) * tile_grid::samples;
        for (int j = 1; j <= tile_grid::samples; ++j) {
            for (int i = 1; i <= tile_grid::samples; ++i) {
                result_.raster.values(i0 + i, j0 + j) = values(i, j);
            }
        }
    }

    const TileSet& set_;
    const TileRange& range_;
    TileRaster result_;
    std::string first_;  // path of the first tile that is there
};

}  // namespace

std::optional<int> datum_of_tiles(const TileSet& set, const ConversionSettings& settings,
                                  RunLog& log) {
    std::optional<int> datum;
    constexpr int default_ellipsoid = 0;  // near enough to find a tile
    for_each_tile(tiles_of(covered_area(settings, default_ellipsoid)), [&](const Tile& tile) {
        if (const auto map = read_tile(set, tile, log)) {
            datum = map->header.datum;
        }
        return !datum.has_value();
    });
    return datum;
}

TileRaster read_tiles(const TileSet& set, const AreaLimits& area, float sea, RunLog& log) {
    const TileRange range = tiles_of(area);
    Collector collector(set, range, sea);
    for_each_tile(range, [&](const Tile& tile) {
        collector.take(tile, log);
        return true;
    });
    return std::move(collector).result();
}

}  // namespace torvex
