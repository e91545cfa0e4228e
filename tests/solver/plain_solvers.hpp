#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"
#include "solver/rcm.hpp"

namespace torvex {

// The solvers written as their formulas stand: one cell after another, nothing shared, no blocks.
// The library's results agree with these to rounding.
void plain_sweep_phi(const CellRange& cells, LinearSystem& eq, Field3& phi, float relax);
void plain_sip(const CellRange& cells, const LinearSystem& eq, const Field3& rhs, Field3& phi,
               int nsweep, float alpha);
SolveRecord plain_rcm(const CellRange& cells, const LinearSystem& eq, Field3& phi, int L,
                      int ncycle, float r0);

// The residual in double precision throughout.
double exact_residual(const LinearSystem& eq, const Field3& phi, int i, int j, int k);

}  // namespace torvex
