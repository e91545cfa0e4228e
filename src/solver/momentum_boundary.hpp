#pragma once

#include "solver/solver_context.hpp"

namespace torvex {

// The boundary conditions of the three momentum equations: their wall shear goes into `target`, the
// coefficients towards a boundary become 0 in the system of the flow.
void bc_u(const SolverContext& c, Sources target);
void bc_v(const SolverContext& c, Sources target);
void bc_w(const SolverContext& c, Sources target);

// All three, where the equations share their matrix and each has a right side of its own.
void bc_flow(const SolverContext& c, Field3& su_u, Field3& su_v, Field3& su_w);

}  // namespace torvex
