#pragma once

#include "run/run_state.hpp"

namespace torvex {

// Fills a direction from its saved state: nodes, roughness, all flow arrays, the count and the
// residuals. The mesh counts are those of this run. Of the residuals only m, u, v, w are saved; k
// and e are 0 until the next iteration. Arrays without a record in the file are 0. Stops: 210-212,
// 221, 222, 231, 232.
void read_restart(const Run& run, Direction& direction);

}  // namespace torvex
