#pragma once

#include "run/run_state.hpp"

// Steps of the sequence that are not written yet. A case that needs one of them ends with a message
// instead of a wrong result.
namespace torvex {

// nest: the child's lines and their check over all directions, the parent's flow on the boundaries
void nest_fit_lines(Run& run);
void nest_check_domain(Run& run);
void nest_bc_set(Run& run, Direction& direction);

}  // namespace torvex
