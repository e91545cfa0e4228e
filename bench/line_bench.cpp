// Line sweeps of one and of three unknowns beside a triad of the same machine.
//
// Bytes are the compulsory traffic: seven coefficients and the right sides read, the unknowns read
// and written, each once for the two sweeps of a call. On a shared machine read the columns "min"
// of time and "max" of throughput. The sizes are interior cells along i, j and k.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "solver/line_sweeps.hpp"
#include "solver/test_systems.hpp"

namespace {

using torvex::Field3;

constexpr int sweeps = 2;

struct Problem {
    explicit Problem(const benchmark::State& state)
        : ni(static_cast<int>(state.range(0)) + 2),
          nj(static_cast<int>(state.range(1)) + 2),
          nk(static_cast<int>(state.range(2)) + 2),
          eq(torvex::random_system(ni, nj, nk, 1.02F, 1)) {
        omp_set_num_threads(static_cast<int>(state.range(3)));
        for (std::uint32_t n = 0; n < 3; ++n) {
            su[n] = torvex::random_field(ni, nj, nk, 2 + n);
            phi[n] = torvex::random_field(ni, nj, nk, 5 + n);
        }
    }
    int ni, nj, nk;
    torvex::LinearSystem eq;
    std::array<Field3, 3> su, phi;
    torvex::LineWork work;
};

void count(benchmark::State& state, std::int64_t bytes_per_cell) {
    const std::int64_t cells = state.range(0) * state.range(1) * state.range(2);
    state.SetItemsProcessed(state.iterations() * cells);
    state.SetBytesProcessed(state.iterations() * cells * bytes_per_cell);
    state.counters["per cell"] = benchmark::Counter(
        static_cast<double>(cells),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void one(benchmark::State& state) {
    Problem p(state);
    for ([[maybe_unused]] auto _ : state) {
        torvex::line_sweeps<1>(p.eq, {{{p.su[0], p.phi[0]}}}, sweeps, p.work);
        benchmark::ClobberMemory();
    }
    count(state, (7 + 3) * 4);
}

void three(benchmark::State& state) {
    Problem p(state);
    for ([[maybe_unused]] auto _ : state) {
        torvex::line_sweeps<3>(p.eq,
                               {{{p.su[0], p.phi[0]}, {p.su[1], p.phi[1]}, {p.su[2], p.phi[2]}}},
                               sweeps, p.work);
        benchmark::ClobberMemory();
    }
    count(state, (7 + 9) * 4);
}

void triad(benchmark::State& state) {
    omp_set_num_threads(static_cast<int>(state.range(3)));
    const std::int64_t n = std::int64_t{1} << 24;
    std::vector<float> a(n), b(n, 1.0F), c(n, 2.0F);
    float* x = a.data();
    const float* y = b.data();
    const float* z = c.data();
    for ([[maybe_unused]] auto _ : state) {
#pragma omp parallel for simd schedule(static)
        for (std::int64_t m = 0; m < n; ++m) {
            x[m] = y[m] + 3.0F * z[m];
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * n * 12);
}

void sizes(benchmark::internal::Benchmark* b) {
    b->ArgNames({"i", "j", "k", "threads"})->UseRealTime()->Unit(benchmark::kMillisecond);
    b->ComputeStatistics("min", [](const std::vector<double>& v) { return std::ranges::min(v); });
    b->ComputeStatistics("max", [](const std::vector<double>& v) { return std::ranges::max(v); });
    b->Repetitions(10)->ReportAggregatesOnly();
    for (const std::int64_t threads : {1, 2}) {
        b->Args({66, 36, 24, threads});
        b->Args({120, 70, 36, threads});
        b->Args({190, 108, 54, threads});
    }
}

BENCHMARK(one)->Name("one unknown")->Apply(sizes);
BENCHMARK(three)->Name("three unknowns")->Apply(sizes);
BENCHMARK(triad)->Args({0, 0, 0, 1})->Args({0, 0, 0, 2})->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
