// Cells per second of the steps of the pressure correction on a hill mesh.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "mesh/test_meshes.hpp"
#include "solver/pressure_boundary.hpp"
#include "solver/pressure_cases.hpp"
#include "solver/pressure_correction.hpp"
#include "solver/pressure_equation.hpp"
#include "solver/pressure_faces.hpp"
#include "solver/second_corrector.hpp"

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
    for (auto _ : state) {
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
    std::vector<float> planes(static_cast<std::size_t>(c.g.nk));
    run(state, c, [&] {
        benchmark::DoNotOptimize(
            torvex::mass_source(c.g, {c.s.flxU, c.s.flxV, c.s.flxW}, c.s, planes));
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

void sizes(benchmark::internal::Benchmark* b) {
    b->Arg(100000)->Arg(1000000)->UseRealTime();
}

BENCHMARK(faces)->Name("face_fluxes")->Apply(sizes);
BENCHMARK(boundaries)->Name("pressure_boundaries")->Apply(sizes);
BENCHMARK(source)->Name("mass_source")->Apply(sizes);
BENCHMARK(equation)->Name("pressure_equation")->Apply(sizes);
BENCHMARK(correction)->Name("correct_flow")->Apply(sizes);
BENCHMARK(second)->Name("non_orthogonal_fluxes")->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
