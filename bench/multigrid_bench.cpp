// The multigrid solution of a pressure correction by its faces: microseconds per cell of loading
// the system and its meshes alone (cycles 0) and of one to three cycles with it, on flat cells.
//
// Compulsory bytes of a solution, every array that a pass must read or write counted once: faces
// and source read and written in slabs, pivots, the mean, the coarse meshes (a third of the
// finest), pp; per cycle the downward half (faces, pivots, r, z), the upward half (z twice, q and
// w) and the step.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "solver/multigrid.hpp"
#include "solver/multigrid_systems.hpp"

namespace {

struct Size {
    int i, j, k;
};
Size size_of(std::int64_t cells) {
    if (cells < 100000) {
        return {60, 48, 20};
    }
    return cells < 1000000 ? Size{120, 84, 30} : Size{200, 139, 40};
}

void multigrid(benchmark::State& state) {
    omp_set_num_threads(static_cast<int>(state.range(1)));
    const auto cycles = static_cast<int>(state.range(2));
    const Size n = size_of(state.range(0));
    const torvex::FaceCase c = torvex::random_faces(n.i, n.j, n.k, {1, 1, 30}, 3, 1U);
    torvex::Field3 pp(n.i + 2, n.j + 2, n.k + 2);
    torvex::Multigrid solver;
    // No sum of residuals is below a ratio of 0.
    const torvex::MultigridLimits limits{.stop_ratio = 0, .cycles = cycles};
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(solver.solve(c.system(), pp, limits));
        benchmark::ClobberMemory();
    }
    const std::int64_t cells = std::int64_t{n.i} * n.j * n.k;
    constexpr std::int64_t setup = 12 + 12 + 4 + 4 + 4 + 8 + 16 + 8;
    constexpr std::int64_t of_cycle = 24 + 32 + 44 + 16;
    state.SetItemsProcessed(state.iterations() * cells);
    state.SetBytesProcessed(state.iterations() * cells * (setup + of_cycle * cycles));
    state.counters["us_per_cell"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * static_cast<double>(cells) * 1e-6,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void sizes(benchmark::internal::Benchmark* b) {
    b->ArgNames({"cells", "threads", "cycles"})->UseRealTime()->Unit(benchmark::kMillisecond);
    b->ComputeStatistics("min", [](const std::vector<double>& v) { return std::ranges::min(v); });
    b->Repetitions(10)->ReportAggregatesOnly();
    for (const std::int64_t cells : {57600, 302400, 1112000}) {
        for (const std::int64_t threads : {1, 2}) {
            for (const std::int64_t cycles : {0, 1, 2, 3}) {
                b->Args({cells, threads, cycles});
            }
        }
    }
}

BENCHMARK(multigrid)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
