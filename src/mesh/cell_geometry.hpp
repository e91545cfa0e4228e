#pragma once

#include "mesh/grid_geometry.hpp"

namespace torvex {

// Allocates and fills xc, yc, zc from the nodes.
void XYZ2XYZC(GridGeometry& g);

}  // namespace torvex
