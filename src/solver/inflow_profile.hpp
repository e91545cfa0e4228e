#pragma once

#include <string>
#include <vector>

#include "base/case_settings.hpp"
#include "solver/profile_table.hpp"

namespace torvex {

// An inflow given by the user: values at heights above ground, which rise strictly.
struct InflowProfile {
    std::vector<float> height;  // [m]
    std::vector<float> u;       // speed [m/s]
    std::vector<float> tke;     // turbulence energy [m2/s2]
};

// For a height h above the ground [m].
inline ProfilePlace place_in(const InflowProfile& profile, float h) {
    return place_in(profile.height, h);
}

// INFLOW_PROFILE_FILE in the form that INFLOW_PROFILE_TABLE tells: a table, or a profile of the
// site output. A file that cannot be used stops with code 1, naming the line.
InflowProfile read_inflow_profile(const CaseSettings& settings);

}  // namespace torvex
