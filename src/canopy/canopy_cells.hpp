#pragma once

#include "base/field.hpp"

namespace torvex {

// What the canopy terms see of the flow and of the equation in hand, all on the same cells;
// 2..ni-1 and so on are the interior. gp_* are empty where no canopy was read.
struct CanopyCells {
    const Field3& vol;  // cell volume [m3]
    const Field3& u;    // velocity [m/s]
    const Field3& v;
    const Field3& w;
    const Field3& den;   // density [kg/m3]
    const Field3& tke;   // turbulence energy [m2/s2]
    const Field3& ted;   // its dissipation [m2/s3]
    const Field3& gp_d;  // drag density [1/m]
    const Field3& gp_k;  // dissipation factor of tke [-]
    const Field3& gp_e;  // dissipation factor of ted [-]
    Array3<double>& su;  // source of the equation
    Array3<double>& sp;  // its part that goes with the unknown, <= 0
};

}  // namespace torvex
