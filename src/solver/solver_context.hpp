#pragma once

#include "base/case_settings.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/solve_controls.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

struct SolverWork;

// What the equation routines of one direction work on.
struct SolverContext {
    const CaseSettings& settings;
    const SolveControls& controls;
    const GridGeometry& grid;
    const Walls& walls;
    FlowState& flow;
    SolverWork& work;    // the linear solvers, and scratch of the assembly
    int skip_sides = 0;  // 1 in a nested run: the parent sets the side and outflow values
};

}  // namespace torvex
