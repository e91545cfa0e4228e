#pragma once

#include "base/case_settings.hpp"
#include "base/iteration_report.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

struct SolverWork;

// What the equation routines of one direction work on.
struct SolverContext {
    const CaseSettings& settings;
    const GridGeometry& grid;
    FlowState& flow;
    SolverWork& work;  // scratch of the linear solvers and the assembly
    const IterationReport& report;
    int skip_sides = 0;  // 1 in a nested run: the parent sets the side and outflow values
};

}  // namespace torvex
