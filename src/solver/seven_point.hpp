#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

// Sum of the neighbour products less the central one, in single precision.
[[gnu::always_inline]] inline float seven_point(const LinearSystem& eq, const Field3& phi, int i,
                                                int j, int k) {
    return eq.ae(i, j, k) * phi(i + 1, j, k) + eq.aw(i, j, k) * phi(i - 1, j, k) +
           eq.an(i, j, k) * phi(i, j + 1, k) + eq.as(i, j, k) * phi(i, j - 1, k) +
           eq.at(i, j, k) * phi(i, j, k + 1) + eq.ab(i, j, k) * phi(i, j, k - 1) -
           eq.ap(i, j, k) * phi(i, j, k);
}

// The residual of a cell: su is added in double, for in a pinned cell it is of the order 1e25.
[[gnu::always_inline]] inline float cell_residual(const LinearSystem& eq, const Field3& phi, int i,
                                                  int j, int k) {
    return static_cast<float>(static_cast<double>(seven_point(eq, phi, i, j, k)) + eq.su(i, j, k));
}

}  // namespace torvex
