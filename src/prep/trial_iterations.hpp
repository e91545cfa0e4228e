#pragma once

#include <optional>

#include "base/case_settings.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

// Iterates a prepared direction for about `seconds` and returns the time of an iteration [s], the
// first left out, which makes its arrays. Behind GRID, wall_cells and inflow_sums; the flow is of
// no further use. Nothing if the first iteration gives no finite residual.
std::optional<double> trial_iterations(const CaseSettings& settings, const GridGeometry& grid,
                                       const Walls& walls, FlowState& flow, double seconds);

}  // namespace torvex
