#pragma once

#include <array>

namespace torvex {

inline constexpr int stored_corrections = 4;

// The normal equations of the residual cutting method: gram beta = rhsL, of which the first m rows
// and columns are in use.
struct LeastSquares {
    std::array<std::array<float, stored_corrections>, stored_corrections> gram{};
    std::array<float, stored_corrections> rhsL{};
    std::array<float, stored_corrections> beta{};
};

// Gauss-Seidel with over-relaxation from beta = 0, at most 100 rounds, until the sum of |residual|
// is below 0.0001. The sum is tested before each round; a beta whose diagonal is not above 0 stays.
void lsq_weights(LeastSquares& system, int m, float omega);

}  // namespace torvex
