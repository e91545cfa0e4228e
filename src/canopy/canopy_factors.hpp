#pragma once

#include "base/case_settings.hpp"

namespace torvex {

// Of one cell: cf [-], density (0 none, 1 all of it) and length [m] as a canopy file gives them.
float drag_density(float cf, float density, float length);                        // gp_d [1/m]
float tke_dissipation_factor(const CanopyParameters& parameters, float density);  // gp_k [-]
float ted_dissipation_factor(const CanopyParameters& parameters, float density);  // gp_e [-]

}  // namespace torvex
