// Cells per second of the parts of the momentum equations on a hill mesh, beside a triad of the
// same machine over arrays of the same length.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <memory>

#include "mesh/test_meshes.hpp"
#include "solver/flow_assembly.hpp"
#include "solver/flow_state.hpp"
#include "solver/momentum_assembly.hpp"
#include "solver/momentum_boundary.hpp"
#include "solver/momentum_solution.hpp"
#include "solver/solver_work.hpp"

namespace {

using torvex::Component;
using torvex::Field3;

// A smooth flow over the hill with everything set that the equations read.
struct Flow {
    explicit Flow(std::int64_t cells)
        : g(torvex::with_metrics(cells < 1000000 ? torvex::hill_mesh({51, 51, 41})
                                                 : torvex::hill_mesh({126, 101, 81}))) {
        settings.URFU = settings.URFV = settings.URFW = 0.5F;
        settings.ETA = 0.5F;
        settings.RATIO = 1.0F;
        settings.CMU = 0.09F;
        settings.DENSIT = 1.0F;
        torvex::allocate_fields(s, g, 1);
        s.den.fill(1.0F);
        s.z0.allocate(g.ni, g.nj, 1e-4F);
        s.tke.fill(1.0F);
        for (std::size_t n = 0; n < s.u.size(); ++n) {
            const float x = 0.001F * static_cast<float>(n % 1009);
            s.u.data()[n] = 8.0F + x;
            s.v.data()[n] = 0.5F - x;
            s.w.data()[n] = 0.2F * x;
            s.p.data()[n] = 3.0F * x;
            s.vis.data()[n] = 0.1F + 0.1F * x;
            s.flxU.data()[n] = 0.01F + 0.001F * x;
            s.flxV.data()[n] = 0.002F * (x - 0.5F);
            s.flxW.data()[n] = 0.002F * (0.4F - x);
        }
        s.outflow_mass = 50.0F;
        for (Field3& source : su) {
            source.allocate(g.ni, g.nj, g.nk);
        }
        walls = torvex::wall_cells(settings, g, s.z0);
        controls = torvex::solve_controls(settings);
    }

    torvex::CaseSettings settings;
    torvex::GridGeometry g;
    torvex::FlowState s;
    std::array<Field3, 3> su;
    torvex::SolverWork work;
    torvex::Walls walls;
    torvex::SolveControls controls;
    torvex::SolverContext context{.settings = settings,
                                  .controls = controls,
                                  .grid = g,
                                  .walls = walls,
                                  .flow = s,
                                  .work = work};
};

template <class Step>
void run(benchmark::State& state, Step step) {
    const auto flow = std::make_unique<Flow>(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        step(*flow);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <Component A>
void assembly(benchmark::State& state) {
    run(state, [](Flow& f) { torvex::assemble_momentum<A>(f.context, f.work.momentum); });
}

// u, v and w in one walk.
void flow_assembly(benchmark::State& state) {
    run(state, [](Flow& f) {
        std::array<Field3, 3>& su = f.su;
        torvex::assemble_flow(f.context, f.work.momentum, su[0], su[1], su[2]);
    });
}

void boundary(benchmark::State& state) {
    run(state, [](Flow& f) { torvex::bc_u(f.context, torvex::sources_of(f.s.eq)); });
}

void relaxation(benchmark::State& state) {
    const auto flow = std::make_unique<Flow>(state.range(0));
    torvex::assemble_momentum<Component::u>(flow->context, flow->work.momentum);
    for ([[maybe_unused]] auto _ : state) {
        torvex::relax_momentum(flow->context, Component::u);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void triad(benchmark::State& state) {
    const auto n = static_cast<int>(state.range(0));
    const Field3 b(n, 1, 1, 1.0F);
    const Field3 c(n, 1, 1, 2.0F);
    Field3 a(n, 1, 1);
    float* x = a.data();
    const float* y = b.data();
    const float* z = c.data();
    for ([[maybe_unused]] auto _ : state) {
#pragma omp parallel for simd schedule(static)
        for (int i = 0; i < n; ++i) {
            x[i] = y[i] + 3.0F * z[i];
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(assembly<Component::u>)->Name("assembly of u")->Arg(100000)->Arg(1000000)->UseRealTime();
BENCHMARK(assembly<Component::v>)->Name("assembly of v")->Arg(100000)->Arg(1000000)->UseRealTime();
BENCHMARK(assembly<Component::w>)->Name("assembly of w")->Arg(100000)->Arg(1000000)->UseRealTime();
BENCHMARK(flow_assembly)->Name("assembly of all")->Arg(100000)->Arg(1000000)->UseRealTime();
BENCHMARK(boundary)->Name("bc_u")->Arg(100000)->Arg(1000000)->UseRealTime();
BENCHMARK(relaxation)->Name("relaxation")->Arg(100000)->Arg(1000000)->UseRealTime();
BENCHMARK(triad)->Name("triad")->Arg(100000)->Arg(1000000)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
