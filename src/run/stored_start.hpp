#pragma once

#include "run/run_state.hpp"

namespace torvex {

// Ends the start of a direction whose fields are filled: on a restart without a saved state the
// fields of its vpkeinp.tuf, where that fits, replace all but the inflow; then vpkeinp.tuf is
// written.
void finish_start(const Run& run, Direction& direction);

}  // namespace torvex
