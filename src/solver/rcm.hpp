#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

struct RcmResult {
    float r1;  // last residual sum, 0 if no cycle ran
    int n;     // cycle that met the stop ratio, ncycle + 1 when all have run
    float a;   // r1 / r0
};

// Solves the system for phi in the cells of a range by at most ncycle cycles that combine the last
// L corrections, L at most stored_corrections. r0 is the residual sum that r1 is measured by.
RcmResult RCM(const CellRange& cells, Field3& phi, int L, int ncycle, float r0, SolverWork& work,
              const LinearSystem& eq);

}  // namespace torvex
