#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "case/case_text.hpp"

namespace torvex {

// Working constants CMU, CE1, CE2, SIGK, SIGE of the chosen model; the hybrid takes those of
// k-epsilon. An unknown TURBULENCE_MODEL ends the run with exit status 1.
void select_turbulence_constants(const CaseText& file, CaseSettings& settings,
                                 const KeyLines& lines);

// Tells the log the model and its constants, F5.3 each.
void report_turbulence_model(const CaseSettings& settings, RunLog& log);

}  // namespace torvex
