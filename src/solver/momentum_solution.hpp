#pragma once

#include "solver/momentum_component.hpp"
#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// ap, the metric over ap, and under-relaxation of an assembled equation.
void relax_momentum(const SolverContext& c, Component component);

// resid and scale of the equation.
void reference_sums(const SolverContext& c, Component component);

// Inner sweeps until the residual is a tenth of resid.
SolveRecord solve_momentum(const SolverContext& c, Component component);

}  // namespace torvex
