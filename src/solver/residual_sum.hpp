#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

struct ResidualSums {
    float residual = 0;  // sum of |r|, without pinned cells
    float scale = 0;     // sum of |ap phi|, with them
};

// Sums over the range, in single precision: the cells of a plane k in the order j, i, then the
// planes in the order k; the same for any number of threads. A cell with sp = -BIG is pinned.
ResidualSums residual_sums(const CellRange& range, const LinearSystem& eq, const Field3& phi);
float residual_sum(const CellRange& range, const LinearSystem& eq, const Field3& phi);

}  // namespace torvex
