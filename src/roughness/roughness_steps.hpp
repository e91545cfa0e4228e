#pragma once

#include <string_view>

#include "base/field.hpp"
#include "roughness/roughness_pass.hpp"

namespace torvex {

// The steps that the two roughness routines share.

// Smears the side zones, unless the run is nested, fills the ghost ring and writes the field to
// `table_stem`TAG.tdt.
void smear_sides_and_tabulate(const RoughnessPass& pass, std::string_view table_stem, Field2& z0);

// The upwind mean, told to the log.
float default_upwind_roughness(const RoughnessPass& pass, const Field2& z0);

// Stamps z_up, smears the downwind zone and fills the ghost ring again, so that the inflow plane
// carries z_up, which is left in log-upwind_roughness-TAG.
void stamp_and_keep(const RoughnessPass& pass, float z_up, Field2& z0);

// A nested run has no zones: nothing is smeared or stamped, but with
// USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN the whole field takes what the parent left in
// log-upwind_roughness-TAG. Stops: 186 if that is not there.
void keep_nested_field(const RoughnessPass& pass, Field2& z0);

}  // namespace torvex
