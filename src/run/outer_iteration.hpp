#pragma once

#include "run/run_state.hpp"

namespace torvex {

// The pressure-correction loop of one direction, on a mesh and fields that stand.
void OUTER_ITERATION(Run& run, Direction& direction);

}  // namespace torvex
