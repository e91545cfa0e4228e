#pragma once

#include <functional>
#include <string>
#include <vector>

#include "run/run_state.hpp"

namespace torvex {

// The solve of one direction; it sets converged, diverged, stop_requested, outer_count and the
// residuals.
using Solve = std::function<void(Run&, Direction&)>;

// One run of the program: finds and reads the case, sizes the domain, walks the wind directions.
// Arguments are those behind the program's name. Returns the exit status: 0, 2 after a user stop,
// or a stop code, whose message then stands on standard error. Changes the working directory to
// that of the case file.
int run_torvex(const std::vector<std::string>& arguments);
int run_torvex(const std::vector<std::string>& arguments, const Solve& solve);

}  // namespace torvex
