#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/edit.hpp"
#include "maps/conversion/conversion_settings.hpp"
#include "maps/conversion/tile_grid.hpp"
#include "run/working_directory.hpp"
#include "support/failures.hpp"

namespace torvex::test {

// A study area of 400 m round 35 40 51.6 N, 139 46 1.2 E, in the middle of tile 533946.
inline ConversionSettings small_area() {
    ConversionSettings settings;
    settings.DB_DR = "db";
    settings.CENT_LAT = {35, 42, 30};
    settings.CENT_LON = {139, 48, 45};
    settings.WE_LENGTH = 400;
    settings.NS_LENGTH = 400;
    settings.MAX_DXY = 50;
    return settings;
}

// The text of a tile whose value at (lon, lat) in minutes is given.
inline std::string tile_text(const Tile& tile, const std::function<double(double, double)>& value,
                             const std::string& extra = "geodetic_system = 'JGD'\n") {
    const auto degrees_minutes = [](double minutes) {
        const int degrees = static_cast<int>(minutes / 60.0);
        return std::to_string(degrees) + " " + std::to_string(minutes - degrees * 60.0);
    };
    std::string text =
        "<TORVEX_MAP lon-lat>\nn_lon = 100, n_lat = 100\nd_lon = 0.075, d_lat = 0.05\n";
    text += "base_longitude = " + degrees_minutes(tile.base_lon()) + "\n";
    text += "base_latitude = " + degrees_minutes(tile.base_lat()) + "\n" + extra + "--DATA--\n";
    for (int j = 0; j < 100; ++j) {
        for (int i = 0; i < 100; ++i) {
            text += edit::F(value(tile.base_lon() + 0.075 * i, tile.base_lat() + 0.05 * j), 12, 3);
        }
        text += '\n';
    }
    return text;
}

}  // namespace torvex::test
