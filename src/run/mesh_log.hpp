#pragma once

#include <string>

#include "mesh/mesh_lines.hpp"

namespace torvex {

// Writes run_prefix + "log-meshnumber": the mesh counts, the borders of the core, additional and
// buffer areas, and the ends and midpoints of each line. A run without lines has 0 for the borders
// and empty blocks.
void write_mesh_log(const std::string& run_prefix, const MeshLines& lines);

}  // namespace torvex
