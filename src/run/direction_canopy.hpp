#pragma once

#include <string>

#include "run/run_state.hpp"

namespace torvex {

// gp_d, gp_k, gp_e of a direction from the cells of a canopy file, and z0, which must stand, from
// its roughness where it holds one. Stops as read_canopy_file does.
void read_direction_canopy(const std::string& file, Run& run, Direction& direction);

}  // namespace torvex
