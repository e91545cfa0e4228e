#pragma once

#include "solver/solver_context.hpp"

namespace torvex {

// The boundary conditions of the three momentum equations.
void bc_u(const SolverContext& c);
void bc_v(const SolverContext& c);
void bc_w(const SolverContext& c);

}  // namespace torvex
