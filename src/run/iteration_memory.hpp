#pragma once

#include <string>

#include "run/run_state.hpp"

namespace torvex {

// What the iterations of a direction remember beside the fields, as a text file beside
// restart.info, written before that. Its count tells which result it belongs to. List-directed:
//
//   line 1   outer_count
//   line 2   stage of the acceleration (0 common, 1 robust, 2 plain), the count when it began, the
//            iterations seen since, the smallest mass residual among them, where that was
//   line 3   iterations of a coarse cycle, its gain, cycles made or not, the mass residual in front
//            of the last one
//   line 4   the fraction of STOP_SITES that the direction settled by (0: it has not), iterations
//            remembered, speeds in each
//   then     these speeds [m/s], a line an iteration
//
// Written where the case asks for acceleration or STOP_SITES; else an old one is removed. A failure
// is a stop.
void write_iteration_memory(const Run& run, const Direction& direction);

// Takes the file of the direction into it, if its count is the direction's. False where there is
// none such, or what stands there cannot be read; the direction remembers nothing then.
bool read_iteration_memory(Direction& direction);

}  // namespace torvex
