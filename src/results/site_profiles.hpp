#pragma once

#include <string>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Written beside the case file, whatever the prefix of the run, anew at each site output.
inline constexpr const char* label_list_name = "_latlon_label_list.txt";

// What the site output of a wind direction is made from.
struct SiteOutput {
    const CaseSettings& settings;
    const GridGeometry& grid;
    const FlowState& flow;
    float angle;              // where the wind comes from [deg]
    const std::string& stem;  // head of the names of the profile files
};

// A profile file for each site in the mesh, the list of their labels, and the profile of the inflow
// unless the run is nested. A site outside gets a warning in the log, no file and no line in the
// list. A profile that cannot be written ends the run; a list that cannot be written is told in the
// log only, since the profiles are whole without it.
void write_site_profiles(const SiteOutput& output, RunLog& log);

}  // namespace torvex
