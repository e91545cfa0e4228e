#pragma once

#include "base/field.hpp"
#include "solver/linear_solvers.hpp"

namespace torvex {

// Sweeps over phi, at most `sweeps` of them, until 0.1 > r1/r0; pinned cells are left out of r1.
// With r0 = 0 all sweeps are made, with none allowed r1 and a stay 0.
SolveRecord sweep_until(const Sweep& sweep, const CellRange& cells, LinearSystem& eq, Field3& phi,
                        float relax, int sweeps, float r0);

}  // namespace torvex
