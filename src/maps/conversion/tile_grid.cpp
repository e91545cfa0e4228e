#include "maps/conversion/tile_grid.hpp"

#include <cmath>

#include "base/edit.hpp"
#include "base/stop.hpp"

namespace torvex {

namespace {

bool on_grid(double index) {
    return index >= 0.0 && index <= tile_grid::last;
}

}  // namespace

// The squares of 8 by 8 are numbered first, then the row and the column inside one.
std::string Tile::name() const {
    return edit::I(row / 8, 2, 2) + edit::I(column / 8, 2, 2) + edit::I(row % 8, 1) +
           edit::I(column % 8, 1);
}

TileRange tiles_of(const AreaLimits& area) {
    const double south = std::floor(area.lat_min / tile_grid::height);
    const double north = std::floor(area.lat_max / tile_grid::height);
    const double west = std::floor((area.lon_min - 6000.0) / tile_grid::width);
    const double east = std::floor((area.lon_max - 6000.0) / tile_grid::width);
    if (!on_grid(south) || !on_grid(north) || !on_grid(west) || !on_grid(east)) {
        const auto degrees = [](double minutes) { return edit::F(minutes / 60.0, 10, 4); };
        stop(1,
             "the area from" + degrees(area.lon_min) + " to" + degrees(area.lon_max) +
                 " degrees east and" + degrees(area.lat_min) + " to" + degrees(area.lat_max) +
                 " degrees north lies outside the grid of the tiles",
             "keys CENT_LON, CENT_LAT",
             "elsewhere take a mosaic of maps: TERRAIN_MODE = 2, ROUGHNESS_MODE = 2");
    }
    return {.first = {static_cast<int>(south), static_cast<int>(west)},
            .last = {static_cast<int>(north), static_cast<int>(east)}};
}

}  // namespace torvex
