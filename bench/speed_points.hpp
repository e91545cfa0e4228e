#pragma once

#include <array>
#include <cmath>
#include <cstddef>

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

// The twelve points whose speeds are the answer of a case: the centre and three places at a radius
// upwind, downwind and aside, at 10, 30 and 80 m above ground.
namespace torvex::bench {

inline constexpr int points = 12;
using Speeds = std::array<float, points>;

int nearest(int n, float target, const auto& line) {
    int best = 2;
    for (int m = 2; m < n; ++m) {
        best = std::abs(line(m) - target) < std::abs(line(best) - target) ? m : best;
    }
    return best;
}

// Speed in the column nearest to (x,y), linear in height.
inline float speed_at(const GridGeometry& g, const FlowState& s, float x, float y, float height) {
    const int i = nearest(g.ni, x, [&](int m) { return g.xc(m, 2, 1); });
    const int j = nearest(g.nj, y, [&](int m) { return g.yc(2, m, 1); });
    const auto z = [&](int k) { return g.zc(i, j, k) - g.zc(i, j, 1); };
    const auto speed = [&](int k) { return std::hypot(s.u(i, j, k), s.v(i, j, k), s.w(i, j, k)); };
    int k = 2;
    while (k < g.nk - 1 && z(k) < height) {
        ++k;
    }
    const float t = (height - z(k - 1)) / (z(k) - z(k - 1));
    return t * speed(k) + (1.0F - t) * speed(k - 1);
}

inline Speeds speeds(const GridGeometry& g, const FlowState& s, float radius) {
    Speeds all{};
    std::size_t n = 0;
    const std::array<std::array<float, 2>, 4> places{
        {{0, 0}, {-radius, 0}, {radius, 0}, {0, radius}}};
    for (const auto& [x, y] : places) {
        for (const float height : {10.0F, 30.0F, 80.0F}) {
            all.at(n++) = speed_at(g, s, x, y, height);
        }
    }
    return all;
}

}  // namespace torvex::bench
