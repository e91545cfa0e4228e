#include "nest/parent_column.hpp"

#include <algorithm>

namespace torvex {

HeightMap height_map(float CONSTANT_DZ_HEIGHT, float Hp, float Hchild) {
    const float Hc = std::min({CONSTANT_DZ_HEIGHT, 0.5F * Hp, 0.5F * Hchild});
    return {.Hc = Hc, .stretch = (Hp - Hc) / (Hchild - Hc)};
}

ColumnLevel level_at(const GridGeometry& g, int i, int j, float h) {
    const float ground = g.zc(i, j, 1);
    const auto height = [&](int k) { return g.zc(i, j, k) - ground; };
    const float h_first = height(2);
    if (h < h_first) {
        return {.k = 2, .w = 0.0F, .h = h, .h_first = h_first};
    }
    // Bisection; the interval [low, high] holds h, or lies at the top.
    int low = 2;
    int high = g.nk;
    while (high - low > 1) {
        const int middle = low + (high - low) / 2;
        (height(middle) <= h ? low : high) = middle;
    }
    const float w = (h - height(low)) / (height(low + 1) - height(low));
    return {.k = low, .w = std::min(w, 1.0F), .h = h, .h_first = h_first};
}

}  // namespace torvex
