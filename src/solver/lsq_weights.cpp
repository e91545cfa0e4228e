// lsq_weights: Gauss-Seidel with over-relaxation on the small system gram*beta = rhsL, from beta =
// 0, until the sum of |residual| is below 0.0001, for at most 100 rounds.
//
// The sum is tested before each round: where nothing is left to correct, beta stays 0. A beta whose
// diagonal is not above 0, that of a correction without an image, is left alone. Whatever is
// reached after the last round stands.

#include "solver/lsq_weights.hpp"

#include <cmath>

namespace torvex {

namespace {

float residual(const LeastSquares& s, int L, int a) {
    float r = s.rhsL(a);
    for (int b = 1; b <= L; ++b) {
        r -= s.gram(a, b) * s.beta(b);
    }
    return r;
}

float residual_sum(const LeastSquares& s, int L) {
    float sum = 0;
    for (int a = 1; a <= L; ++a) {
        sum += std::abs(residual(s, L, a));
    }
    return sum;
}

}  // namespace

void lsq_weights(int L, float omega, LeastSquares& system) {
    constexpr int rounds = 100;
    constexpr float enough = 0.0001F;
    system.beta.fill(0);
    for (int round = 0; round < rounds && !(residual_sum(system, L) < enough); ++round) {
        for (int a = 1; a <= L; ++a) {
            if (const float diagonal = system.gram(a, a); diagonal > 0) {
                system.beta(a) += omega * residual(system, L, a) / diagonal;
            }
        }
    }
}

}  // namespace torvex
