#pragma once

#include "solver/solver_context.hpp"

namespace torvex {

// Adds what canopy drag makes and breaks of tke, and of ted, to su and sp of the equation in hand.
// Only for runs with a canopy.
void canopy_sources_tke(const SolverContext& ctx);
void canopy_sources_ted(const SolverContext& ctx);

}  // namespace torvex
