#pragma once

#include "base/field.hpp"
#include "roughness/roughness_pass.hpp"

namespace torvex {

// The roughness field of a wind direction with canopy: the same strips and the same upwind stamp as
// in calc_roughness1, on the field that the canopy file brought. A directional alpha does not act.
// A nested run keeps the field, or has the parent's z_up everywhere.
//
// reads   z0 at 2..nx, 2..ny [m]
// writes  z0 everywhere; upwind; log; but in a preview also the files calc_sbz_roughness2-TAG.tdt
//         and log-upwind_roughness-TAG
// stops   158 EQUIVALENT_ROUGHNESS, 186 no earlier run or no parent, 1 bad values
void calc_sbz_roughness2(const RoughnessPass& pass, UpwindRoughness& upwind, Field2& z0);

}  // namespace torvex
