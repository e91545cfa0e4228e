#pragma once

#include <string>

#include "run/run_state.hpp"

namespace torvex {

// Ends the start of a direction whose fields are filled: on a restart without a saved state the
// fields of its vpkeinp.tuf, where that fits and was not made for another case, replace all but the
// inflow; then vpkeinp.tuf and the fingerprint are written. The log tells where the fields come
// from; `origin` names what filled them, as in "the power law".
void finish_start(Run& run, Direction& direction, const std::string& origin);

// " WD 240.0: Fields start from ORIGIN." on the log.
void tell_start(Run& run, const Direction& direction, const std::string& origin);

}  // namespace torvex
