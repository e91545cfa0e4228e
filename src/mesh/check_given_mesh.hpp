#pragma once

#include <string>

#include "mesh/grid_geometry.hpp"

namespace torvex {

// Refuses a mesh that the equations cannot be solved on; XYZ2XYZC and GRID have run. Ends the run
// with status 1, naming the first bad cell and the file that the nodes come from.
void check_given_mesh(const GridGeometry& g, const std::string& file);

}  // namespace torvex
