#pragma once

#include <optional>

#include "base/case_settings.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/outer_step.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

// What is iterated: a direction behind GRID, wall_cells and inflow_sums.
struct Trial {
    const CaseSettings& settings;
    const GridGeometry& grid;
    const Walls& walls;
    FlowState& flow;  // of no further use afterwards
};

// Iterates for about `seconds` and returns the time of an iteration [s], the first left out, which
// makes its arrays. Nothing if that gives no finite residual.
std::optional<double> trial_iterations(const Trial& trial, const OuterStep& step, double seconds);

}  // namespace torvex
