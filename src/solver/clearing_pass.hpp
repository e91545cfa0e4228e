#pragma once

#include "base/case_settings.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Gives all arrays that are no fields their values at the start of a direction, resumed or fresh.
void clearing_pass(const CaseSettings& settings, FlowState& s);

}  // namespace torvex
