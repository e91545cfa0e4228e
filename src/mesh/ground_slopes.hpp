#pragma once

#include <array>

#include "mesh/grid_geometry.hpp"

namespace torvex {

// How steep the ground of a mesh is: the parts of its plan between the limits, from 0 up, and the
// steepest cell.
struct GroundSlopes {
    static constexpr std::array<float, 4> limits{10.0F, 20.0F, 30.0F, 40.0F};  // [deg]
    std::array<double, limits.size() + 1> parts{};  // below 10, 10 to 20, ..., above 40 [-]
    float steepest = 0;                             // [deg]
};

// The slope of a cell is that of its four ground nodes, its weight its area in plan. Needs the nodes
// only.
GroundSlopes ground_slopes(const GridGeometry& grid);

}  // namespace torvex
