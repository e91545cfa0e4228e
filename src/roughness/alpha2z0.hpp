#pragma once

#include <vector>

namespace torvex {

// Where and how long to search.
struct AlphaSearch {
    float z0_min = 0;  // bracket [m]
    float z0_max = 0;
    float eps = 0;  // tolerance on alpha [-]
    int maxit = 0;  // most rounds
};

// One round of the bisection, as it is recorded.
struct AlphaRound {
    int it = 0;
    float lo = 0, hi = 0, mid = 0;  // bracket and its middle [m]
    float alpha = 0;                // of mid [-]
    float target = 0;
    float error = 0;  // |alpha - target|
    float eps = 0;
    float alpha_lo = 0, alpha_hi = 0;
};

enum class AlphaStatus { converged = 0, bad_bracket = 1, not_converged = 2 };

// Inverts shear_exponent by bisection with arithmetic means.
//
//   converged      z0_out is the first middle with |alpha - target| <= eps
//   bad_bracket    z0_min is above z0_max, or the two hold no roughness length: z0_out stays
//   not_converged  z0_out is the last middle, or 0 where maxit allows no round
//
// The search also ends where the bracket cannot shrink any further in single precision: every round
// after that would be the same.
AlphaStatus alpha2z0(float target, const AlphaSearch& search, float& z0_out,
                     std::vector<AlphaRound>& rounds);

}  // namespace torvex
