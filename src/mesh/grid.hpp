#pragma once

#include "mesh/grid_geometry.hpp"

namespace torvex {

// Allocates and fills vol, xix..zez, fx, fy, fz from the nodes and the cell centres.
void GRID(GridGeometry& g);

}  // namespace torvex
