#pragma once

#include "run/run_state.hpp"
#include "solver/outer_step.hpp"

namespace torvex {

// Whether ACCEL acts. BOOSTCAL converges with boosted factors, which acceleration has no use for.
bool is_accelerated(const CaseSettings& settings);

// One iteration as the case asks for it: accelerated, or the equations one after the other.
OuterStep outer_step_of(const CaseSettings& settings, Direction& direction);

// The pressure-correction loop of one direction, on a mesh and fields that stand: from outer_count
// + 1 on, at most MAXIT iterations. Stop 161: the monitor point is not inside the mesh.
void OUTER_ITERATION(Run& run, Direction& direction);
void OUTER_ITERATION(Run& run, Direction& direction, const Equations& equations);
void OUTER_ITERATION(Run& run, Direction& direction, const OuterStep& step);

}  // namespace torvex
