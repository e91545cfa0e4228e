#pragma once

#include "solver/solver_context.hpp"

namespace torvex {

// Drag of forests and buildings on the momentum equation in hand.
void canopy_momentum_source(const SolverContext& c);

}  // namespace torvex
