#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "case/case_text.hpp"

namespace torvex {

// The whole case file in memory. If it is absent, a directory or unreadable, the run ends with
// "tin file missing.".
CaseText load_case_text(const std::string& case_file);

// Reads, derives and checks every setting of the eight namelist groups, and tells the log. Stops:
// 161, 162, 163, 191; 1 with file, line and key for everything else that cannot be used.
void read_case_file(const CaseText& file, CaseSettings& settings, KeyLines& lines, RunLog& log);

}  // namespace torvex
