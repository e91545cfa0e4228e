#pragma once

#include "solver/accelerated/accelerated_work.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// work.coarser stands. Iterations on the coarse mesh from the fields of the fine one, with nothing
// added; their change goes into the fine fields.
void coarse_start(const SolverContext& fine, AcceleratedWork& work, const Cycling& cycling);

// One cycle of the full approximation scheme (Brandt 1977): iterations on the coarse mesh whose
// equations the present fine state would solve if it solved the fine ones, see coarse_cycle.cpp.
void coarse_cycle(const SolverContext& fine, AcceleratedWork& work, const Cycling& cycling);

}  // namespace torvex
