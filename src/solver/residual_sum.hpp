#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

// Whether a pinned cell, sp = -BIG in single precision, counts in a residual sum.
enum class Pinned { count, skip };

// The sum of |r| over the cells of a range.
float residual_sum(const CellRange& cells, const LinearSystem& eq, const Field3& phi,
                   Pinned pinned);

struct EquationSums {
    float residual;  // sum of |r|, pinned cells left out
    float scale;     // sum of |ap phi| over all cells
};

// Both sums in one pass.
EquationSums equation_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi);

}  // namespace torvex
