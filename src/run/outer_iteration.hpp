#pragma once

#include "run/run_state.hpp"
#include "solver/equations.hpp"

namespace torvex {

// The pressure-correction loop of one direction, on a mesh and fields that stand: from outer_count
// + 1 on, at most MAXIT iterations. Stop 161: the monitor point is not inside the mesh.
void OUTER_ITERATION(Run& run, Direction& direction);
void OUTER_ITERATION(Run& run, Direction& direction, const Equations& equations);

}  // namespace torvex
