#pragma once

#include "base/case_settings.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

inline constexpr int most_levels = 5000;

// Levels above ground, in single precision. Reads MIN_DZ, MESH_VRATIO, MIN_DZ_HEIGHT,
// CONSTANT_DZ_HEIGHT, USE_TFTB; writes z_line and nz.
//
//   layers of MIN_DZ up to MIN_DZ_HEIGHT, where that is above MIN_DZ
//   above them layers of MESH_VRATIO^q * MIN_DZ, q = 0, 1, 2, ...
//   levels above k_c scaled linearly about z_line(k_c), so that z_line(nz) = z_top
//
// Without layers of constant height the number of levels is found with exponents one higher than
// those that fill the list; the difference is deliberate and the scaling absorbs it.
// Stop 152: no level above the one that reaches CONSTANT_DZ_HEIGHT.
void make_vertical_levels(const CaseSettings& settings, float z_top, MeshLines& lines);

// k_c: one above the first level that reaches CONSTANT_DZ_HEIGHT. Stop 152 if there is none.
int top_constant_level(const Line1& z_line, float CONSTANT_DZ_HEIGHT);

}  // namespace torvex
