#pragma once

#include <string>

namespace torvex {

// Cells along i, j, k with both boundary layers.
struct MeshCounts {
    int ni = 0, nj = 0, nk = 0;
};

// The counts of a mesh given by the user: ni, nj, nk, in free form on a line each. A file that
// cannot be used, or a mesh that fits no machine, ends the run with status 1.
MeshCounts read_mesh_counts(const std::string& path);

}  // namespace torvex
