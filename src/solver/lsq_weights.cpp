#include "solver/lsq_weights.hpp"

#include <cmath>
#include <cstddef>

namespace torvex {

namespace {

float row_residual(const LeastSquares& system, std::size_t rows, std::size_t a) {
    float r = system.rhsL[a];
    for (std::size_t b = 0; b < rows; ++b) {
        r -= system.gram[a][b] * system.beta[b];
    }
    return r;
}

}  // namespace

void lsq_weights(LeastSquares& system, int m, float omega) {
    constexpr int most_rounds = 100;
    constexpr float small_enough = 0.0001F;
    const auto rows = static_cast<std::size_t>(m);
    system.beta.fill(0.0F);
    for (int round = 0; round < most_rounds; ++round) {
        float sum = 0.0F;
        for (std::size_t a = 0; a < rows; ++a) {
            sum += std::abs(row_residual(system, rows, a));
        }
        if (sum < small_enough) {
            return;
        }
        for (std::size_t a = 0; a < rows; ++a) {
            if (system.gram[a][a] > 0.0F) {
                system.beta[a] += omega * row_residual(system, rows, a) / system.gram[a][a];
            }
        }
    }
}

}  // namespace torvex
