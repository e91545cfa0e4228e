#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"

namespace torvex {

// Scales the six outer criteria by S = max(N, 300000)/300000, N the mesh count, and caps them at
// OUT_CC_LIMIT unless that is 0. Returns S.
float scale_criteria(CaseSettings& settings, int ni, int nj, int nk);

// Tells console and log the criteria in force.
void report_criteria(const CaseSettings& settings, float S, RunLog& log);

}  // namespace torvex
