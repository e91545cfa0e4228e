#pragma once

#include <optional>

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

// Whether a pinned cell, sp = -BIG in single precision, counts in a residual sum.
enum class Pinned { count, skip };

// The sum of |r| over the cells of a range.
float residual_sum(const CellRange& cells, const LinearSystem& eq, const Field3& phi,
                   Pinned pinned);

// The residual sum r1, pinned cells left out, if ratio > r1/r0; else nothing, mostly after the
// first row: no term is negative, so that a sum that is too large already stays too large.
std::optional<float> residual_sum_below(const CellRange& cells, const LinearSystem& eq,
                                        const Field3& phi, float ratio, float r0);

struct EquationSums {
    float residual;  // sum of |r|, pinned cells left out
    float scale;     // sum of |ap phi| over all cells
};

// Both sums in one pass.
EquationSums equation_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi);

}  // namespace torvex
