#pragma once

#include "base/case_settings.hpp"
#include "case/case_text.hpp"

namespace torvex {

// Limits that no run can go beyond, each with its own message: counts, angles, tags, and keys that
// something is divided by. Ends the run with exit status 1.
void check_limits(const CaseText& file, const CaseSettings& settings, const KeyLines& lines);

}  // namespace torvex
