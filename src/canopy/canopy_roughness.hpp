#pragma once

#include "base/field.hpp"
#include "canopy/canopy_pieces.hpp"

namespace torvex {

// The roughness length of the ground below a canopy, in place on what the roughness maps give at
// 2..nx, 2..ny:
//
//   z0 = Z((1 - c) R(z0 of the map) + sum f R(z0 of the piece)),  c = min(1, sum f)
//
// with R and Z of roughness_mean.hpp over the pieces of both sets; fractions that sum to more than
// 1 are scaled to it. Columns without a piece keep what they have. The ghost ring repeats the cell
// beside it.
void canopy_roughness(const ColumnLists* const (&sets)[2], Field2& z0);

}  // namespace torvex
