// Cells per second of XYZ2XYZC and GRID on a hill mesh.

#include <benchmark/benchmark.h>

#include <cstdint>

#include "mesh/cell_geometry.hpp"
#include "mesh/grid.hpp"
#include "mesh/test_meshes.hpp"

namespace {

using torvex::GridGeometry;

// The interior cells of a mesh, and the planes that hold them.
struct Size {
    int cells_i, cells_j, cells_k;
};

Size size_of(std::int64_t cells) {
    return cells < 1000000 ? Size{50, 50, 40} : Size{125, 100, 80};
}

GridGeometry mesh(const benchmark::State& state) {
    const Size n = size_of(state.range(0));
    return torvex::hill_mesh({n.cells_i + 1, n.cells_j + 1, n.cells_k + 1});
}

void cell_centres(benchmark::State& state) {
    GridGeometry g = mesh(state);
    for ([[maybe_unused]] auto _ : state) {
        torvex::XYZ2XYZC(g);
        benchmark::DoNotOptimize(g.zc.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void metric_and_factors(benchmark::State& state) {
    GridGeometry g = mesh(state);
    torvex::XYZ2XYZC(g);
    for ([[maybe_unused]] auto _ : state) {
        torvex::GRID(g);
        benchmark::DoNotOptimize(g.fz.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(cell_centres)->Name("XYZ2XYZC")->Arg(100000)->Arg(1000000)->UseRealTime();
BENCHMARK(metric_and_factors)->Name("GRID")->Arg(100000)->Arg(1000000)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
