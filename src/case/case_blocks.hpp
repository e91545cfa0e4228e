#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "case/case_text.hpp"

namespace torvex {

// The keyed blocks that a run reads, in this order. A block that is not there leaves its part
// of the program off, without a word.

// Block nest_points. Told in the log where nest_mode is non-zero. Stops: 100 no case file, 185 a
// required key missing.
void read_nest_points(const CaseText& file, CaseSettings& settings, RunLog& log);

// Block canopy_parameters. canopy_mode other than 0 and 1, or modify_terrain without a radius, ends
// the run.
void read_canopy_parameters(const CaseText& file, CaseSettings& settings);

// Block shp_parameters; lists the frontal-area directions on the console where calc_fa is on.
void read_shape_parameters(const CaseText& file, CaseSettings& settings);

// Block user_domain, where TORVEX_MODE is non-zero; what it names is tested when it is used.
void read_user_domain(const CaseText& file, CaseSettings& settings);

}  // namespace torvex
