#pragma once

#include "run/run_state.hpp"

namespace torvex {

// The site output: profiles of the direction as its fields stand, and the label list.
void write_sites(Run& run, const Direction& direction);

// Tells, before a direction is solved, which of the sites its mesh does not hold.
void warn_of_sites_outside(Run& run, const Direction& direction);

}  // namespace torvex
