#pragma once

#include "run/run_state.hpp"

namespace torvex {

// The site output: profiles of the direction as its fields stand, and the label list.
void write_sites(Run& run, const Direction& direction);

}  // namespace torvex
