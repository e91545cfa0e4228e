#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "case/case_text.hpp"

namespace torvex {

// Limits that no run can go beyond, each with its own message: counts, angles, tags, and keys that
// something is divided by. Ends the run with exit status 1.
void check_limits(const CaseText& file, const CaseSettings& settings, const KeyLines& lines);

// Warns of angles whose degrees, minutes and seconds differ in sign, since they are summed as they
// stand; the warning says the value understood.
void warn_of_mixed_signs(const CaseText& file, const CaseSettings& settings, const KeyLines& lines,
                         RunLog& log);

// Warns of keys in the keyed blocks that no key of the run answers to: they are passed over.
void warn_of_unknown_keys(const CaseText& file, RunLog& log);

}  // namespace torvex
