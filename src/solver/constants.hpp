#pragma once

#include "base/log_layer.hpp"  // KAPPA

namespace torvex {

inline constexpr float TINY = 1.0e-15F;  // guard of denominators, floor of tke
inline constexpr double BIG = 1.0e25;    // pins a cell: su = BIG*value, sp = -BIG

}  // namespace torvex
