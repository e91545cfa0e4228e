#pragma once

#include <string>
#include <vector>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// What the site output of a wind direction is made from.
struct SiteOutput {
    const CaseSettings& settings;
    const GridGeometry& grid;
    const FlowState& flow;
    float angle;              // where the wind comes from [deg]
    const std::string& stem;  // head of the names of the profile files
};

// The labels of the sites that lie outside the mesh, SITE(n) for one without.
std::vector<std::string> sites_outside(const SiteOutput& output);

// A profile file for each site in the mesh, the list of their labels, and the profile of the inflow
// unless the run is nested. A site outside gets a warning in the log, no file and no line in the
// list. A profile that cannot be written ends the run; a list that cannot be written is told in the
// log only, since the profiles are whole without it.
void write_site_profiles(const SiteOutput& output, RunLog& log);

}  // namespace torvex
