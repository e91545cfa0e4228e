#include "mesh/tftb_height.hpp"

#include <cmath>

namespace torvex {

float mean_height_below_top(const TerrainMap& map, float radius, float MAX_Z) {
    double sum = 0.0;
    long count = 0;
    for (int j = 1; j <= map.rows; ++j) {
        const float Y = static_cast<float>(j - 1) * map.dY + map.Y0;
        for (int i = 1; i <= map.columns; ++i) {
            const float X = static_cast<float>(i - 1) * map.dX + map.X0;
            if (radius >= std::sqrt(X * X + Y * Y)) {
                sum += static_cast<double>(MAX_Z) - static_cast<double>((*map.values)(i, j));
                ++count;
            }
        }
    }
    return count > 0 ? static_cast<float>(sum / static_cast<double>(count)) : MAX_Z;
}

float tftb_height(const CaseSettings& settings, const MeshLines& lines, MapState& maps,
                  RunLog& log) {
    console("   - Reading terrain map to calculate TFTB height.");
    const TerrainMap map = read_basic_terrain(settings, maps, log);
    if (!settings.USE_DEFAULT_MAX_Z || !map.loaded()) {
        return lines.MAX_Z;
    }
    const float x = lines.x_line(1);
    const float y = lines.y_line(1);
    return mean_height_below_top(map, std::sqrt(x * x + y * y), lines.MAX_Z);
}

}  // namespace torvex
