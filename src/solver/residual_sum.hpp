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

// What a monitor step asks of an equation.
struct EquationSums {
    float residual;  // sum of |r|, pinned cells left out
    float scale;     // sum of |ap phi| or, for a velocity component, of |ap| times the speed
};

// Both sums over the cells of a range in one pass: scale is that of |ap phi|.
EquationSums equation_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi);

// The three components, ni*nj*nk each [m/s].
struct Velocity {
    const Field3& u;
    const Field3& v;
    const Field3& w;
};

// The same of a velocity component phi: scale is that of |ap| times the speed.
EquationSums equation_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi,
                           const Velocity& velocity);

}  // namespace torvex
