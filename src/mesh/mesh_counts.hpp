#pragma once

#include <cstdint>
#include <string_view>

namespace torvex {

inline constexpr std::string_view sizing_keys =
    "keys MIN_DXY, MAX_DXY, MESH_HRATIO, MIN_DZ, MESH_VRATIO";

// Refuses a mesh of ni * nj * nk cells that no 32-bit index can number, or whose fields cannot fit
// into `memory` bytes. Ends the run with status 1; `where` says what the counts come from.
void check_mesh_counts(int ni, int nj, int nk, std::int64_t memory,
                       std::string_view where = sizing_keys);

// Memory of this machine [bytes].
std::int64_t machine_memory();

}  // namespace torvex
