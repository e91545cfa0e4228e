#pragma once

#include <optional>
#include <string>

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"

// Tests of what a file brought. A value that no flow can be computed with would show later only, as
// a direction that diverges.
namespace torvex {

// Stops with the code where a roughness length is not finite or not above 0, naming the cell.
void check_roughness(const Field2& z0, const std::string& file, int code = 1);

// The same of the interior columns alone, for a field whose ghost columns are filled afterwards:
// what is wrong, naming the cell, or nothing.
std::optional<std::string> fault_of_inner_roughness(const Field2& z0);

// Stops with the code where a coordinate of a node is not finite, naming the node.
void check_nodes(const GridGeometry& grid, const std::string& file, int code);

}  // namespace torvex
