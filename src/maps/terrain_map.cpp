// The value of a map at any point.
//
//   u = X - X0,  p = floor(u / dX),  s = (u - p dX) / dX;   v, q, t alike from Y
//
// Corners of the cell, counter-clockwise: 1 (p+1, q+1), 2 (p+2, q+1), 3 (p+2, q+2), 4 (p+1, q+2).

#include "maps/terrain_map.hpp"

#include <cmath>

#include "base/assertion.hpp"

namespace torvex {

std::optional<MapCell> locate(const TerrainMap& map, float X, float Y) {
    const float u = X - map.X0;
    const float v = Y - map.Y0;
    const float p = std::floor(u / map.dX);
    const float q = std::floor(v / map.dY);
    // Tested as reals, since a far point has no index that an integer could hold; written so that a
    // NaN fails too. Doubles hold the counts exactly.
    const bool inside = p >= 0.0F && static_cast<double>(p) <= map.columns - 2.0 && q >= 0.0F &&
                        static_cast<double>(q) <= map.rows - 2.0;
    if (!inside) {
        return std::nullopt;
    }
    return MapCell{.p = static_cast<int>(p),
                   .q = static_cast<int>(q),
                   .s = (u - p * map.dX) / map.dX,
                   .t = (v - q * map.dY) / map.dY};
}

float bilinear_value(const TerrainMap& map, const MapCell& cell) {
    require(map.loaded(), "value taken from a map that is not loaded");
    const Field2& h = *map.values;
    const float c1 = h(cell.p + 1, cell.q + 1);
    const float c2 = h(cell.p + 2, cell.q + 1);
    const float c3 = h(cell.p + 2, cell.q + 2);
    const float c4 = h(cell.p + 1, cell.q + 2);
    const float s = cell.s;
    const float t = cell.t;
    return (c3 * s + c4 * (1.0F - s)) * t + (1.0F - t) * (s * c2 + (1.0F - s) * c1);
}

}  // namespace torvex
