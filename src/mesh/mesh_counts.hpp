#pragma once

#include <cstdint>

namespace torvex {

// Refuses a mesh of ni * nj * nk cells that no 32-bit index can number, or whose fields cannot fit
// into `memory` bytes. Ends the run with status 1.
void check_mesh_counts(int ni, int nj, int nk, std::int64_t memory);

// Memory of this machine [bytes].
std::int64_t machine_memory();

}  // namespace torvex
