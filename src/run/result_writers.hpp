#pragma once

#include "run/run_state.hpp"

namespace torvex {

// The result file of `outer_count`, then restart.info (never the other way round: restart.info must
// not name a result that is not there), then the site output.
void write_final_result(Run& run, Direction& direction);

// The result file of an iteration under way and the numbered restart.info, then the site output.
void write_intermediate_result(Run& run, Direction& direction, int iteration);

// What a divergence leaves: the fields of the failed iteration under the number of the one before,
// with the residuals that one had. restart.info keeps the name used last.
void write_diverged_result(Run& run, Direction& direction, int prev_iter,
                           const Residuals& prev_resid);

}  // namespace torvex
