#include "mesh/ground_height.hpp"

namespace torvex {

std::optional<float> ground_height(const CanopyParameters& canopy, const DirectionMaps& maps,
                                   const MeshRotation& rotation, float x, float y) {
    const MapPoint at = rotation.on_map(x, y);
    std::optional<MapCell> cell = locate(maps.basic_h, at.X, at.Y);
    if (!cell) {
        return std::nullopt;
    }
    const TerrainMap* map = &maps.basic_h;
    if (maps.detailed_h.loaded()) {
        if (const std::optional<MapCell> fine = locate(maps.detailed_h, at.X, at.Y)) {
            map = &maps.detailed_h;
            cell = fine;
        }
    }
    const float range2 = canopy.modify_circle_range * canopy.modify_circle_range;
    const bool cut = canopy.modify_terrain && x * x + y * y > range2;
    return cut ? 0.0F : bilinear_value(*map, *cell);
}

}  // namespace torvex
