#pragma once

#include <string>
#include <vector>

#include "base/case_settings.hpp"

namespace torvex {

// An inflow given by the user: values at heights above ground, which rise strictly.
struct InflowProfile {
    std::vector<float> height;  // [m]
    std::vector<float> u;       // speed [m/s]
    std::vector<float> tke;     // turbulence energy [m2/s2]
};

// A place between two levels of a profile.
struct ProfilePlace {
    std::size_t level = 0;  // the lower level, from 0
    float weight = 0;       // of the level above
};

// Below the lowest and above the highest level the end values hold.
ProfilePlace place_in(const InflowProfile& profile, float h);
float value_at(const std::vector<float>& values, ProfilePlace place);

// INFLOW_PROFILE_FILE in the form that INFLOW_PROFILE_TABLE tells: a table, or a profile of the
// site output. A file that cannot be used stops with code 1, naming the line.
InflowProfile read_inflow_profile(const CaseSettings& settings);

}  // namespace torvex
