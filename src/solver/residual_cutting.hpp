#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"
#include "solver/rcm_work.hpp"
#include "solver/solve_record.hpp"

namespace torvex {

// The pressure solver made of one point sweep and then RCM, whose stop test compares with the
// residual sum behind the sweep. It makes its arrays at the first call on a mesh and keeps them.
class ResidualCutting {
 public:
    SolveRecord operator()(const CellRange& cells, LinearSystem& eq, Field3& pp, int cycles);

 private:
    RcmWork work_;
};

}  // namespace torvex
