#pragma once

#include <span>
#include <string>
#include <vector>

#include "base/case_settings.hpp"

namespace torvex {

// The names of the files that a run writes in its directory, or deletes there: logs, tables, mesh,
// sites and restart data of the directions with these tags. Not among them are the results
// vpkeout_NNNNN.tuf, whose numbers only the run itself finds out.
std::vector<std::string> run_output_names(const CaseSettings& settings,
                                          std::span<const std::string> tags);

}  // namespace torvex
