#pragma once

#include <cmath>

namespace torvex {

inline constexpr float KAPPA = 0.41F;  // von Karman's constant in all wall formulas

// The Prandtl number of dissipation with which the k-epsilon equations hold in a log layer: there
// tke is even, epsilon falls with 1/h, and the diffusion of epsilon balances its source less sink
// where
//
//   sigma_e = KAPPA^2/((c_e2 - c_e1) sqrt(c_mu))                     (Richards and Hoxey, 1993)
inline float balanced_sigma_e(float c_mu, float c_e1, float c_e2) {
    return KAPPA * KAPPA / ((c_e2 - c_e1) * std::sqrt(c_mu));
}

}  // namespace torvex
