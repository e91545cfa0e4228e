// Memory throughput of the linear solvers beside a triad of the same machine.
//
// Bytes are the compulsory traffic: every array that a sweep must read or write once counts once,
// su in double precision. sweep_phi: ae..ab, ap, su, phi read; phi, res written. SIP: ae..ab, ap,
// rhs, seven factors read; phi and w read and written. The triad's own traffic is counted the same
// way, without the lines that a store fetches first. Sweeps follow each other as they do in a run,
// so that a part of a million cells is still in the last cache. On a shared machine read the
// columns "min" of time and "max" of throughput.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "solver/rcm.hpp"
#include "solver/residual_sum.hpp"
#include "solver/sip.hpp"
#include "solver/sweep_phi.hpp"
#include "solver/test_systems.hpp"

namespace {

using torvex::CellRange;
using torvex::Field3;
using torvex::LinearSystem;
using torvex::RcmWork;

// Interior cells of a mesh along each axis, a million or a hundred thousand in all.
struct Size {
    int i, j, k;
};
Size size_of(std::int64_t cells) {
    return cells < 1000000 ? Size{50, 50, 40} : Size{100, 100, 100};
}

struct Problem {
    explicit Problem(std::int64_t cells) {
        const auto [i, j, k] = size_of(cells);
        eq = torvex::random_system(i + 2, j + 2, k + 2, 1.02F, 1);
        phi = torvex::random_field(i + 2, j + 2, k + 2, 2);
        range = torvex::interior(i + 2, j + 2, k + 2);
    }
    LinearSystem eq;
    Field3 phi;
    CellRange range;
};

struct Triad {
    explicit Triad(std::size_t n) : a(n, 0.0F), b(n, 1.0F), c(n, 2.0F) {}
    void run() {
        const auto n = static_cast<std::int64_t>(a.size());
        float* x = a.data();
        const float* y = b.data();
        const float* z = c.data();
#pragma omp parallel for simd schedule(static)
        for (std::int64_t m = 0; m < n; ++m) {
            x[m] = y[m] + 3.0F * z[m];
        }
        benchmark::ClobberMemory();
    }
    std::vector<float> a, b, c;
};

void set_threads(const benchmark::State& state) {
    omp_set_num_threads(static_cast<int>(state.range(1)));
}

void count(benchmark::State& state, std::int64_t bytes_per_cell) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * state.range(0) * bytes_per_cell);
}

// Three arrays of 64 bytes per cell each: 192 MB for a million cells.
void triad(benchmark::State& state) {
    set_threads(state);
    Triad t(static_cast<std::size_t>(state.range(0)) * 16);
    for ([[maybe_unused]] auto _ : state) {
        t.run();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 16 * 12);
}

void sweep(benchmark::State& state) {
    set_threads(state);
    Problem p(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        torvex::sweep_phi(p.range, p.eq, p.phi, 1.0F);
        benchmark::ClobberMemory();
    }
    count(state, 7 * 4 + 8 + 2 * 4 + 4);
}

RcmWork work_for(const Problem& p) {
    RcmWork work;
    work.allocate(p.phi.ni(), p.phi.nj(), p.phi.nk());
    work.rhs = p.phi;
    return work;
}

void sip_factors(benchmark::State& state) {
    set_threads(state);
    Problem p(state.range(0));
    RcmWork work = work_for(p);
    for ([[maybe_unused]] auto _ : state) {
        torvex::SIP(p.range, p.phi, 0, 0.9F, 1, work, p.eq);
        benchmark::ClobberMemory();
    }
    count(state, 14 * 4);
}

// Calls of 21 sweeps, of which the first needs no coefficients and is counted all the same.
void sip_sweeps(benchmark::State& state) {
    set_threads(state);
    constexpr int sweeps = 21;
    Problem p(state.range(0));
    RcmWork work = work_for(p);
    torvex::SIP(p.range, p.phi, 0, 0.9F, 1, work, p.eq);
    for ([[maybe_unused]] auto _ : state) {
        torvex::SIP(p.range, p.phi, sweeps, 0.9F, 2, work, p.eq);
        benchmark::ClobberMemory();
    }
    count(state, sweeps * (8 * 4 + 7 * 4 + 4 * 4));
}

void rcm_cycle(benchmark::State& state) {
    set_threads(state);
    Problem p(state.range(0));
    RcmWork work = work_for(p);
    for ([[maybe_unused]] auto _ : state) {
        torvex::RCM(p.range, p.phi, 4, 4, 0.0F, work, p.eq);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * 4);
}

void sum(benchmark::State& state) {
    set_threads(state);
    Problem p(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(torvex::residual_sum(p.range, p.eq, p.phi, torvex::Pinned::skip));
    }
    count(state, 7 * 4 + 2 * 8 + 4);
}

void sums(benchmark::State& state) {
    set_threads(state);
    Problem p(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(torvex::equation_sums(p.range, p.eq, p.phi));
    }
    count(state, 7 * 4 + 2 * 8 + 4);
}

void sizes(benchmark::internal::Benchmark* b) {
    b->ArgNames({"cells", "threads"})->UseRealTime()->Unit(benchmark::kMillisecond);
    b->ComputeStatistics("min", [](const std::vector<double>& v) { return std::ranges::min(v); });
    b->ComputeStatistics("max", [](const std::vector<double>& v) { return std::ranges::max(v); });
    b->Repetitions(20)->ReportAggregatesOnly();
    for (const std::int64_t cells : {100000, 1000000}) {
        for (const std::int64_t threads : {1, 2}) {
            b->Args({cells, threads});
        }
    }
}

BENCHMARK(triad)->Apply(sizes);
BENCHMARK(sweep)->Name("sweep_phi")->Apply(sizes);
BENCHMARK(sip_factors)->Name("SIP_factors")->Apply(sizes);
BENCHMARK(sip_sweeps)->Name("SIP_21_sweeps")->Apply(sizes);
BENCHMARK(rcm_cycle)->Name("RCM_4_cycles")->Apply(sizes);
BENCHMARK(sum)->Name("residual_sum")->Apply(sizes);
BENCHMARK(sums)->Name("equation_sums")->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
