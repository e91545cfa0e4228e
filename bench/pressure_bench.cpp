// Cells per second of the steps of the pressure correction on a hill mesh.

#include <benchmark/benchmark.h>

#include <cstdint>

#include "base/case_settings.hpp"
#include "mesh/test_meshes.hpp"
#include "solver/calcp.hpp"
#include "solver/pressure_boundary.hpp"
#include "solver/pressure_cases.hpp"
#include "solver/pressure_correction.hpp"
#include "solver/pressure_equation.hpp"
#include "solver/pressure_faces.hpp"
#include "solver/second_corrector.hpp"
#include "solver/solver_work.hpp"

namespace {

using torvex::PressureCase;

PressureCase flow(const benchmark::State& state) {
    const torvex::Planes n =
        state.range(0) < 1000000 ? torvex::Planes{51, 51, 41} : torvex::Planes{126, 101, 81};
    PressureCase c = torvex::random_case(torvex::hill_mesh(n), 1U);
    torvex::face_fluxes(c.g, c.s);
    torvex::fill_random(c.s.pp, -1.0, 1.0, 2U);
    return c;
}

template <class Step>
void run(benchmark::State& state, PressureCase& c, Step step) {
    for ([[maybe_unused]] auto _ : state) {
        step();
        benchmark::DoNotOptimize(c.s.flxU.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void faces(benchmark::State& state) {
    PressureCase c = flow(state);
    run(state, c, [&] { torvex::face_fluxes(c.g, c.s); });
}

void source(benchmark::State& state) {
    PressureCase c = flow(state);
    run(state, c, [&] {
        benchmark::DoNotOptimize(torvex::mass_source(c.g, {c.s.flxU, c.s.flxV, c.s.flxW}, c.s));
    });
}

void equation(benchmark::State& state) {
    PressureCase c = flow(state);
    run(state, c, [&] { torvex::pressure_equation(c.g, c.s); });
}

// The corrections add up without bound if they are not small.
void correction(benchmark::State& state) {
    PressureCase c = flow(state);
    torvex::fill_random(c.s.pp, -1e-6, 1e-6, 3U);
    run(state, c, [&] { torvex::correct_flow(c.g, c.s, 0.2F); });
}

void boundaries(benchmark::State& state) {
    PressureCase c = flow(state);
    run(state, c, [&] {
        torvex::boundary_fluxes(c.g, c.s);
        torvex::bc_flux(c.g, c.s);
        torvex::bc_pp(c.g, c.s.pp);
        torvex::bc_p(c.g, c.s.p);
    });
}

// coefXi.. are multiplied in place: 0 stays 0 and costs the same.
void second(benchmark::State& state) {
    PressureCase c = flow(state);
    for (torvex::Field3* x : {&c.s.coefXi, &c.s.coefEt, &c.s.coefZe}) {
        x->fill(0.0F);
    }
    run(state, c, [&] {
        torvex::non_orthogonal_fluxes(c.g, c.s);
        torvex::add_non_orthogonal_fluxes(c.g, c.s);
    });
}

// Ten cycles at most; the start is the same each time.
void calcp(benchmark::State& state) {
    PressureCase c = flow(state);
    torvex::CaseSettings settings;
    settings.URFP = 0.2F;
    settings.NSWPP = 10;
    torvex::SolverWork work;
    const torvex::Walls walls;  // no part of the pressure step
    const torvex::SolveControls controls = torvex::solve_controls(settings);
    const torvex::SolverContext context{.settings = settings,
                                        .controls = controls,
                                        .grid = c.g,
                                        .walls = walls,
                                        .flow = c.s,
                                        .work = work};
    const torvex::FlowState start = c.s;
    run(state, c, [&] {
        state.PauseTiming();
        c.s.u = start.u;
        c.s.v = start.v;
        c.s.w = start.w;
        c.s.p = start.p;
        state.ResumeTiming();
        torvex::CALCP(context, 1, 50);
    });
}

void sizes(benchmark::internal::Benchmark* b) {
    b->Arg(100000)->Arg(1000000)->UseRealTime();
}

BENCHMARK(faces)->Name("face_fluxes")->Apply(sizes);
BENCHMARK(boundaries)->Name("pressure_boundaries")->Apply(sizes);
BENCHMARK(source)->Name("mass_source")->Apply(sizes);
BENCHMARK(equation)->Name("pressure_equation")->Apply(sizes);
BENCHMARK(correction)->Name("correct_flow")->Apply(sizes);
BENCHMARK(calcp)->Name("CALCP")->Apply(sizes);
BENCHMARK(second)->Name("non_orthogonal_fluxes")->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
