#pragma once

#include <string>
#include <vector>

namespace torvex {

// torvex-prep: the entry named by the first argument, with the others. Returns the exit status; a
// failure is told on standard error. Without an entry, or with an unknown one, the usage and 102.
int run_prep(const std::vector<std::string>& arguments);

}  // namespace torvex
