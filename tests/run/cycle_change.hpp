#pragma once

#include <map>
#include <string>
#include <vector>

namespace torvex::test {

// Solves the direction of a case by accelerated iterations without coarse meshes until nothing
// moves, makes one cycle of one coarse iteration, and tells what that changed: the largest change
// of each field as a fraction of its largest value, of the positive ones that of the logarithm. The
// case allows as many iterations as `settling`.
std::map<std::string, double> change_by_cycle(const std::vector<std::string>& arguments,
                                              int settling);

// Expects these changes to be those of rounding.
void expect_fixed_point(const std::map<std::string, double>& changes);

// Iterates a case with cycles, then makes one more cycle on the coarse mesh at hand and one on a new
// one, from the same fine fields. Returns the names of the fields that differ behind them.
std::vector<std::string> fields_that_remember(const std::vector<std::string>& arguments,
                                              int iterations);

}  // namespace torvex::test
