// Clipping of 100 000 polygons of 20 points on 200 x 200 columns, and the canopy parameters of 40
// layers from their pieces.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "canopy/clip_entities_to_cells.hpp"
#include "canopy/grid_parameters.hpp"

namespace torvex {
namespace {

constexpr int polygons = 100000;
constexpr int corners = 20;
constexpr int columns = 200;
constexpr float cell = 20;  // [m]

class Noise {
 public:
    // 0 .. 1
    double next() {
        state_ = state_ * 1664525U + 1013904223U;
        return (state_ >> 8U) * 0x1.0p-24;
    }

 private:
    std::uint32_t state_ = 1;
};

Line1 lines(int count, float step) {
    Line1 line(count);
    for (int n = 1; n <= count; ++n) {
        line(n) = static_cast<float>(n - 1) * step;
    }
    return line;
}

// Woods and houses of 5 to 50 m all over the mesh.
std::vector<CanopyEntity> entities() {
    std::vector<CanopyEntity> list(polygons);
    Noise noise;
    const double side = static_cast<double>(cell) * columns;
    for (CanopyEntity& entity : list) {
        const double x = side * noise.next();
        const double y = side * noise.next();
        const double r = 5 + 45 * noise.next();
        entity.part_start = {0};
        for (int n = 0; n < corners; ++n) {
            const double angle = -6.283185307 * n / corners;
            const double radius = r * (0.5 + 0.5 * noise.next());
            entity.x.push_back(x + radius * std::cos(angle));
            entity.y.push_back(y + radius * std::sin(angle));
        }
        entity.attributes.h = static_cast<float>(5 + 20 * noise.next());
        entity.attributes.pd = 0.05F;
        entity.attributes.rls = 0.17F;
        entity.attributes.cf = 0.4F;
        entity.outline_area = outline_area(entity.part_start, entity.x, entity.y);
    }
    return list;
}

void clip(benchmark::State& state) {
    const std::vector<CanopyEntity> list = entities();
    const Line1 line = lines(columns + 1, cell);
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(clip_entities_to_cells(list, line, line, false));
    }
    state.SetItemsProcessed(state.iterations() * polygons);
}
BENCHMARK(clip)->Unit(benchmark::kMillisecond);

void clip_and_spread(benchmark::State& state) {
    const std::vector<CanopyEntity> list = entities();
    const Line1 line = lines(columns + 1, cell);
    const Line1 z_line = lines(41, 5);
    while (state.KeepRunning()) {
        const ColumnLists pieces = clip_entities_to_cells(list, line, line, false);
        benchmark::DoNotOptimize(cmCalcGP_LU(pieces, LayerLevels(z_line)));
    }
    state.SetItemsProcessed(state.iterations() * polygons);
}
BENCHMARK(clip_and_spread)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace torvex

BENCHMARK_MAIN();
