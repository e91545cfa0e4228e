#pragma once

#include <functional>

#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// The routines of one outer iteration under their names. The loop calls what stands here, so that
// its control can be tested without a flow.
struct Equations {
    using Solve = std::function<SolveRecords(const SolverContext&, int iter, int interval)>;
    using Update = std::function<void(const SolverContext&)>;

    Solve CALCU, CALCV, CALCW;      // momentum
    Solve CALCP;                    // pressure correction; a second record with DOUBLE_CORRECTION
    Solve CALCKE, CALCED, CALCKLM;  // turbulence: k, epsilon, k of the k-l part
    Update CALCLM, CALCLM_;         // mixing length from tke, from tkl
    Update CALCVIS;                 // eddy viscosity
};

// The equations of the flow.
Equations flow_equations();

}  // namespace torvex
