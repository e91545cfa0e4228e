#pragma once

#include <cstdint>

#include "solver/accelerated/accelerated_work.hpp"
#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// What the coarse mesh does at the head of an iteration.
enum class Coarse : std::uint8_t { nothing, start, cycle };

// Behind n iterations on a mesh whose cycles began with the first one.
constexpr Coarse coarse_at(const Cycling& cycling, int n) {
    return n % cycling.every == 0 ? Coarse::cycle : Coarse::nothing;
}

// One accelerated iteration on a mesh: the coarse mesh where there is one, momentum, pressure
// correction, turbulence. `residuals`: takes those of momentum and turbulence too. Returns the
// record of the pressure correction.
SolveRecord accelerated_iteration(const SolverContext& c, AcceleratedWork& work,
                                  const Cycling& cycling, Coarse coarse, bool residuals = false);

}  // namespace torvex
