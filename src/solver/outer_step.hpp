#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "solver/equations.hpp"
#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// The solution of one linear system and the label that the log gives it.
struct LabelledSolve {
    std::string_view label;
    SolveRecord record;
};

// What one outer iteration tells.
struct StepReport {
    std::vector<LabelledSolve> solves;  // in their order
    bool finite = true;                 // false: a residual is not a number, the rest was left out
    bool tested = false;             // the residuals of this iteration are taken and may be tested
    std::vector<std::string> notes;  // for the run's log
};

// One outer iteration on grid, flow and work alone: every equation once, in place. Residuals are
// taken in iterations that are a multiple of `interval`, that of mass in every one, and left in the
// flow as they are; see normalise_residuals.
using OuterStep = std::function<StepReport(const SolverContext& context, int iter, int interval)>;

// The equations of the model one after the other (SIMPLE, Patankar and Spalding 1972).
OuterStep step_through(Equations equations);

// Divides the residuals by the inflow of mass and momentum, in place, also where an equation has
// not renewed its residual in this iteration.
void normalise_residuals(FlowState& flow, int turbulence_model);

// A residual that is not a number, or one of mass and momentum above 1e14.
bool has_diverged(const FlowState& flow);

}  // namespace torvex
