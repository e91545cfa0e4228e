#pragma once

#include <string>

#include "run/run_state.hpp"

namespace torvex {

// Removes restart.info before the first file of a direction is made anew. A fresh run (RESTART_FLAG
// other than 1) takes nothing from an earlier one: all its directions are forgotten together,
// before anything of the first is written and behind what can still refuse it, so that no resume
// counts a direction that this run never reached as done.
void forget_saved_states(Run& run, const Direction& direction);

// Ends the start of a direction whose fields are filled: on a restart without a saved state the
// fields of its vpkeinp.tuf, where that fits and was not made for another case, replace all but the
// inflow; then vpkeinp.tuf and the fingerprint are written. The log tells where the fields come
// from; `origin` names what filled them, as in "the power law".
void finish_start(Run& run, Direction& direction, const std::string& origin);

// What INIT fills the fields from, as finish_start wants it.
std::string origin_of_init(const CaseSettings& settings);

// " WD 240.0: Fields start from ORIGIN." on the log.
void tell_start(Run& run, const Direction& direction, const std::string& origin);

}  // namespace torvex
