#pragma once

#include <string>
#include <vector>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"

namespace torvex {

// Head of the names of the parent's files for a direction; the parent's names carry no prefix.
std::string parent_stem(const std::string& tag);

// Stops 1 with "another run is using this directory" while the parent is being computed.
void require_idle_parent();

// Tells log and standard error, before the first direction begins, for which directions the parent
// has no result, has diverged, or has residuals above the outer criteria of `settings`, which are
// those scaled with the parent's cells. tags[iwd - 1] is the tag of direction iwd.
void tell_parent_state(const CaseSettings& settings, const std::vector<std::string>& tags,
                       RunLog& log);

}  // namespace torvex
