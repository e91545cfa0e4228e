#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

// Gauss-Seidel by lines along k as the formulas stand, in double precision: line by line, the lines
// of even i + j first in each sweep. phi keeps its values on the boundary planes.
void plain_line_sweeps(const LinearSystem& eq, const Field3& su, Array3<double>& phi, int sweeps);

// The sum of |r| over the interior in double precision.
double plain_line_residual(const LinearSystem& eq, const Field3& su, const Field3& phi);

}  // namespace torvex
