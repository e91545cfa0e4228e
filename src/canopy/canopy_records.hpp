#pragma once

#include "base/field.hpp"

namespace torvex {

// What a canopy file holds, ghost cells included.
struct CanopyRecords {
    Field3 gp_cf;       // drag coefficient [-]                    ni*nj*nk
    Field3 gp_density;  // packing density, 0 none, 1 all of it    ni*nj*nk
    Field3 gp_length;   // length measure [m]                      ni*nj*nk
    Field2 gp_z0;  // roughness length of the ground [m]      ni*nj; empty until a file gives it
};

}  // namespace torvex
