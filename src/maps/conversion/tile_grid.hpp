#pragma once

#include <string>

#include "maps/conversion/covered_area.hpp"

namespace torvex {

// The standard regional grid: squares of 40 minutes of latitude by 1 degree of longitude, numbered
// by two digits of latitude and two of longitude beyond 100 degrees, each divided into 8 by 8
// squares of 5 by 7.5 minutes. Such a square is a tile of the database: 100 by 100 samples, the
// first half a step inside its south-west corner.
namespace tile_grid {
inline constexpr double height = 5.0;  // [minutes of arc]
inline constexpr double width = 7.5;
inline constexpr int samples = 100;  // along each side
inline constexpr double d_lat = height / samples;
inline constexpr double d_lon = width / samples;
inline constexpr int last = 799;  // largest row and column that two digits can number
}  // namespace tile_grid

// Rows count from the equator, columns from 100 degrees east.
struct Tile {
    int row = 0;
    int column = 0;

    double base_lat() const { return row * tile_grid::height + tile_grid::d_lat / 2.0; }
    double base_lon() const { return column * tile_grid::width + 6000.0 + tile_grid::d_lon / 2.0; }
    std::string name() const;  // six digits
};

// All tiles from the south-west to the north-east one, both included.
struct TileRange {
    Tile first;
    Tile last;

    int rows() const { return last.row - first.row + 1; }
    int columns() const { return last.column - first.column + 1; }
};

// The tiles that an area touches. Stops with 1 where the grid does not reach.
TileRange tiles_of(const AreaLimits& area);

}  // namespace torvex
