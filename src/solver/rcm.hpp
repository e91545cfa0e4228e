#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"
#include "solver/rcm_work.hpp"
#include "solver/solve_record.hpp"

namespace torvex {

// Solves the system for phi in the cells of a range by at most ncycle cycles that combine the last
// L corrections, L at most stored_corrections. r0 is the residual sum that r1 is measured by.
SolveRecord RCM(const CellRange& cells, Field3& phi, int L, int ncycle, float r0, RcmWork& work,
                const LinearSystem& eq);

}  // namespace torvex
