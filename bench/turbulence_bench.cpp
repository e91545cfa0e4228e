// Cells per second of the turbulence equations on a hill mesh. The number of sweeps is the second
// argument: 0 leaves assembly, boundary steps and under-relaxation.

#include <benchmark/benchmark.h>

#include <cstdint>

#include "mesh/test_meshes.hpp"
#include "solver/solver_context.hpp"
#include "solver/solver_work.hpp"
#include "solver/turbulence/turbulence.hpp"

namespace {

using torvex::CaseSettings;
using torvex::FlowState;
using torvex::GridGeometry;
using torvex::SolverContext;

GridGeometry mesh(std::int64_t cells) {
    const torvex::Planes n =
        cells < 1000000 ? torvex::Planes{51, 51, 41} : torvex::Planes{126, 101, 81};
    return torvex::with_metrics(torvex::hill_mesh(n));
}

// A sheared flow with the turbulence of the log law, model 4 so that every routine can run.
struct Case {
    explicit Case(const benchmark::State& state) : grid(mesh(state.range(0))) {
        settings.TURBULENCE_MODEL = 4;
        settings.VISCOS = 0.0015F;
        settings.CMU = 0.09F;
        settings.CE1 = 1.44F;
        settings.CE2 = 1.92F;
        settings.SIGK = 1.0F;
        settings.SIGE = 1.3F;
        settings.KL_CMU = 0.094F;
        settings.KL_SIGMA_K = 1.86F;
        settings.KL_ALPHA = 0.1F;
        settings.URFK = settings.URFE = settings.URFVIS = 0.5F;
        settings.NSWPK = settings.NSWPE = static_cast<int>(state.range(1));
        torvex::allocate_fields(flow, grid, 4);
        flow.z0.allocate(grid.ni, grid.nj, 1e-4F);
        flow.den.fill(1.0F);
        for (torvex::Field3* x : {&flow.tke, &flow.tkl}) {
            x->fill(1.0F);
        }
        flow.ted.fill(0.1F);
        flow.lm.fill(0.2F);
        flow.vis.fill(0.9F);
        flow.viskl.fill(0.9F);
        for (int k = 2; k <= grid.nk; ++k) {
            for (int j = 1; j <= grid.nj; ++j) {
                for (int i = 1; i <= grid.ni; ++i) {
                    flow.u(i, j, k) = 5.0F + 2.0F * grid.zc(i, j, k);
                    flow.flxU(i, j, k) = flow.u(i, j, k) * grid.xix(i, j, k);
                }
            }
        }
        walls = torvex::wall_cells(settings, grid, flow.z0);
        controls = torvex::solve_controls(settings);
    }
    ~Case() = default;
    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;

    CaseSettings settings;
    GridGeometry grid;
    FlowState flow;
    torvex::SolverWork work;
    torvex::Walls walls;
    torvex::SolveControls controls;
    SolverContext ctx{.settings = settings,
                      .controls = controls,
                      .grid = grid,
                      .walls = walls,
                      .flow = flow,
                      .work = work};
};

template <class Routine>
void measure(benchmark::State& state, Routine routine) {
    Case c(state);
    for ([[maybe_unused]] auto _ : state) {
        routine(c.ctx);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void calcke(benchmark::State& state) {
    measure(state, [](SolverContext& ctx) { torvex::CALCKE(ctx, 1, 2); });
}
void calced(benchmark::State& state) {
    measure(state, [](SolverContext& ctx) { torvex::CALCED(ctx, 1, 2); });
}
void calcklm(benchmark::State& state) {
    measure(state, [](SolverContext& ctx) { torvex::CALCKLM(ctx, 1, 2); });
}
void calclm(benchmark::State& state) {
    measure(state, torvex::CALCLM);
}
void calcvis(benchmark::State& state) {
    measure(state, torvex::CALCVIS);
}

// The triad a = b + s c with as many elements, for comparison: 12 bytes an element.
void triad(benchmark::State& state) {
    const auto cells = static_cast<int>(state.range(0));
    const torvex::Field2 b(cells, 1, 1.0F);
    const torvex::Field2 c(cells, 1, 2.0F);
    torvex::Field2 a(cells, 1);
    for ([[maybe_unused]] auto _ : state) {
        float* out = a.data();
        const float* x = b.data();
        const float* y = c.data();
#pragma omp parallel for simd schedule(static)
        for (int n = 0; n < cells; ++n) {
            out[n] = x[n] + 3.0F * y[n];
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void with_sweeps(benchmark::internal::Benchmark* b) {
    b->ArgsProduct({{100000, 1000000}, {0, 4}})->UseRealTime();
}
void without_sweeps(benchmark::internal::Benchmark* b) {
    b->ArgsProduct({{100000, 1000000}, {0}})->UseRealTime();
}

BENCHMARK(calcke)->Name("CALCKE")->Apply(with_sweeps);
BENCHMARK(calced)->Name("CALCED")->Apply(with_sweeps);
BENCHMARK(calcklm)->Name("CALCKLM")->Apply(with_sweeps);
BENCHMARK(calclm)->Name("CALCLM")->Apply(without_sweeps);
BENCHMARK(calcvis)->Name("CALCVIS")->Apply(without_sweeps);
BENCHMARK(triad)->Name("triad")->Arg(100000)->Arg(1000000)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
