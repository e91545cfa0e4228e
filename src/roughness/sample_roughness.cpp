#include "roughness/sample_roughness.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "mesh/map_cover.hpp"
#include "mesh/rotation.hpp"
#include "roughness/roughness_mean.hpp"

namespace torvex {

namespace {

// Rounding may put a point a little outside its cell: no weight below 0, since R spans so many
// orders of magnitude that its extrapolation could turn negative.
double weight(float place) {
    return static_cast<double>(std::clamp(place, 0.0F, 1.0F));
}

float sampled_value(const TerrainMap& map, const MapCell& cell) {
    const Field2& h = *map.values;
    const double c1 = R(h(cell.p + 1, cell.q + 1));
    const double c2 = R(h(cell.p + 2, cell.q + 1));
    const double c3 = R(h(cell.p + 2, cell.q + 2));
    const double c4 = R(h(cell.p + 1, cell.q + 2));
    const double s = weight(cell.s);
    const double t = weight(cell.t);
    const double blended = (c3 * s + c4 * (1.0 - s)) * t + (1.0 - t) * (s * c2 + (1.0 - s) * c1);
    return std::max(0.0001F, std::min(10.0F, Z(blended)));
}

void fill_flat(const RoughnessPass& pass, Field2& z0) {
    const float value = pass.settings.FLAT_ROUGHNESS;
    if (!(value > 0.0F && std::isfinite(value))) {
        stop(1, "FLAT_ROUGHNESS is" + edit::E(value, 12, 4) + " m", "key FLAT_ROUGHNESS",
             "TERRAIN_MODE \"flat\" needs a roughness length above 0");
    }
    for (int j = 2; j <= pass.lines.ny; ++j) {
        for (int i = 2; i <= pass.lines.nx; ++i) {
            z0(i, j) = value;
        }
    }
}

}  // namespace

void sample_roughness(const RoughnessPass& pass, const DirectionMaps& maps,
                      const GridGeometry& grid, Field2& z0) {
    if (pass.settings.TERRAIN_MODE == "flat") {
        fill_flat(pass, z0);
        return;
    }
    const MeshRotation rotation = roughness_rotation(pass.settings.WIND_DIRECTION_ANGLE(pass.iwd));
    const int nx = pass.lines.nx;
    const int ny = pass.lines.ny;
    const bool detailed = maps.detailed_z0.loaded();
    std::vector<int> outside(static_cast<std::size_t>(ny) + 1);  // first i outside in row j, or 0
#pragma omp parallel for schedule(static)
    for (int j = 2; j <= ny; ++j) {
        for (int i = 2; i <= nx; ++i) {
            const MapPoint at = rotation.on_map(grid.xc(i, j, 1), grid.yc(i, j, 1));
            const TerrainMap* map = &maps.detailed_z0;
            std::optional<MapCell> cell;
            if (detailed) {
                cell = locate(maps.detailed_z0, at.X, at.Y);
            }
            if (!cell) {
                map = &maps.basic_z0;
                cell = locate(maps.basic_z0, at.X, at.Y);
            }
            if (!cell) {
                outside[static_cast<std::size_t>(j)] = i;
                break;
            }
            z0(i, j) = sampled_value(*map, *cell);
        }
    }
    for (int j = 2; j <= ny; ++j) {
        const int i = outside[static_cast<std::size_t>(j)];
        if (i > 0) {
            stop_outside_map(pass.settings, pass.lines, maps, true,
                             rotation.on_map(grid.xc(i, j, 1), grid.yc(i, j, 1)), pass.log);
        }
    }
}

}  // namespace torvex
