#pragma once

#include "base/field.hpp"
#include "base/fixed_array.hpp"
#include "solver/rcm_work.hpp"

namespace torvex {

// The least-squares system of the stored corrections, 1 the newest.
struct LeastSquares {
    Field2 gram{stored_corrections, stored_corrections};
    FixedArray<float, stored_corrections> rhsL;
    FixedArray<float, stored_corrections> beta;
};

// Solves gram*beta = rhsL for the leading L unknowns.
void lsq_weights(int L, float omega, LeastSquares& system);

}  // namespace torvex
