#pragma once

#include "base/case_settings.hpp"

namespace torvex {

// Reads the table of shear exponents by direction named by DIRECTIONAL_ALPHA_FILE_NAME: a count n,
// then n lines of direction [deg] and alpha. A closing entry repeats the first alpha at the
// direction 360 + alpha(1): the offset is the exponent and not the first direction, which puts the
// closing point just above 360 for a table that starts at 0. Anything unreadable ends the run.
void read_alpha_table(CaseSettings& settings);

}  // namespace torvex
