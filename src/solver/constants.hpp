#pragma once

namespace torvex {

inline constexpr float KAPPA = 0.41F;    // von Karman's constant in all wall formulas
inline constexpr float TINY = 1.0e-15F;  // guard of denominators, floor of tke
inline constexpr double BIG = 1.0e25;    // pins a cell: su = BIG*value, sp = -BIG

}  // namespace torvex
