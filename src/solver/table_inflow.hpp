#pragma once

#include <string>

#include "base/case_settings.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// The start fields of a direction whose inflow is the user's profile table, in place of INIT. s.z0
// is filled before. A table that cannot be used ends in inflow_file_error.
void fill_table_inflow(const CaseSettings& settings, const GridGeometry& g, FlowState& s);

// Ends the run with its text on the console, and with what is wrong and where on standard error.
[[noreturn]] void inflow_file_error(const std::string& what, const std::string& where);

}  // namespace torvex
