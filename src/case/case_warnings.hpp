#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "case/case_text.hpp"

namespace torvex {

// Tells, on the log and on standard error, what a case file says that its author hardly means; the
// run goes on. Angles whose members differ in sign, have 60 minutes or seconds, or can be no
// degrees; keys, groups and blocks that nobody knows; counts that disagree with the list given;
// sites of one label; keys that have no effect.
void warn_of_case(const CaseText& file, const CaseSettings& settings, const KeyLines& lines,
                  RunLog& log);

}  // namespace torvex
