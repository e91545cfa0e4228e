#pragma once

#include "base/case_settings.hpp"
#include "case/case_text.hpp"
#include "run/run_state.hpp"

// The steps of a run before its first direction, in their order. They write to the run's log and
// the console, and to no file. The case is still open here; behind them it is settled.
namespace torvex {

// Groups and blocks of the case file, their checks and warnings, the prefix of the run. `lines`
// says afterwards which keys were given. Stops: all of the case file; 1 for an input that the run
// itself would overwrite.
void read_settings(const CaseText& file, CaseSettings& settings, KeyLines& lines, Run& run);

// The mesh lines for all directions, those of the child in a nested run, the convergence criteria
// and the angles and tags of the directions. A user's domain has one direction and no lines.
void size_run(CaseSettings& settings, Run& run);

// True if a resume finds a result of direction `iwd` to go on with.
bool has_saved_state(const Run& run, int iwd);

// Which directions will leave the maps, told before hours are spent on the others.
void warn_of_small_maps(Run& run);

}  // namespace torvex
