#pragma once

#include <algorithm>
#include <cmath>

namespace torvex {

// Roughness lengths are never averaged themselves. What is averaged, with areas as weights, is
//
//   R(z0) = 1 / ln^2(10 / z0)        z0 = Z(R) = 10 / exp(1 / sqrt(R))
//
// the drag of a log law at 10 m but for the factor KAPPA^2, so that a patchwork and its mean slow
// the wind alike. The logarithm is taken in single precision, all else in double.

// R is symmetric about 10 m and would turn 20 m into 5 m, so its argument ends below 10 m.
inline constexpr float largest_mean_roughness = 9.999F;

// A roughness length of 0 gives 0, and Z(0) is 0.
inline double R(float z0) {
    const auto L = static_cast<double>(std::log(10.0F / std::min(z0, largest_mean_roughness)));
    return 1.0 / (L * L);
}

// The roughness length [m] of a mean R; 0 for R = 0.
inline float Z(double R) {
    return static_cast<float>(10.0 / std::exp(1.0 / std::sqrt(R)));
}

}  // namespace torvex
