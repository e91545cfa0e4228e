#pragma once

#include <functional>

#include "base/case_settings.hpp"
#include "base/field.hpp"
#include "solver/linear_system.hpp"
#include "solver/solve_record.hpp"

namespace torvex {

// One sweep over the cells of a range, in place; relax multiplies the change of every cell.
using Sweep =
    std::function<void(const CellRange& cells, LinearSystem& eq, Field3& phi, float relax)>;

// Solves the system for the pressure correction in the cells of a range, from the pp that is there
// and by at most so many cycles. It owns the arrays that it works in.
using PressureSolver =
    std::function<SolveRecord(const CellRange& cells, LinearSystem& eq, Field3& pp, int cycles)>;

// What solves the linear systems of a direction.
struct LinearSolvers {
    Sweep sweep;              // momentum and turbulence
    PressureSolver pressure;  // pressure correction
};

// The one place where they are chosen: point sweeps, and for the pressure what PRESSURE_SOLVER
// says, residual cutting or multigrid.
LinearSolvers linear_solvers(const CaseSettings& settings);

}  // namespace torvex
