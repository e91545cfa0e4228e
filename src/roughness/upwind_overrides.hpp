#pragma once

#include "roughness/roughness_pass.hpp"

namespace torvex {

// What may take the place of the upwind mean, in the order in which it is asked; each leaves z_up
// alone where its keys are off and in a preview, and tells the log what it took.

// USE_EQUIVALENT_ROUGHNESS: the value of this direction in EQUIVALENT_ROUGHNESS.
// Stops: 158 if it is not above 0.
void take_equivalent_roughness(const RoughnessPass& pass, float& z_up);

// What an earlier run in this directory left in log-upwind_roughness-TAG:
//
//   ATLAS_FLAG 1, MESO_DWS_MODE off              from the normal run
//   TERRAIN_MODE "flat2", MESO_DWS_MODE off      from the normal run
//   MESO_DWS_MODE on, unless ATLAS_FLAG is 1     from the atlas run, "atlas-" before the name
//
// Stops: 186 if the file is not there; 1 if it holds no number above 0.
void take_over_upwind_roughness(const RoughnessPass& pass, float& z_up);

// What the parent of a nested run left for this direction; its name carries no prefix. Never asked
// in a preview.
// Stops as above.
void take_parents_roughness(const RoughnessPass& pass, float& z_up);

}  // namespace torvex
