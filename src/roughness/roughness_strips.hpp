#pragma once

#include "base/case_settings.hpp"
#include "base/field.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

// Strips of the roughness field that take one value. Their means are those of roughness_mean.hpp,
// summed one cell after the other in double precision; the cell (i,j) has the sides
// x_line(i) - x_line(i-1) and y_line(j) - y_line(j-1). Cells 1 and ni, nj are ghosts.

// The flat part of both side buffer zones: one value across the zone at every i. Both means divide
// by the width of the north strip; the south strip has another one only where y_line is not
// symmetric, and that is accepted.
void smear_sides(const MeshLines& lines, Field2& z0);

// The flat part of the downwind buffer zone: one value along the wind in every row j.
void smear_downwind(const MeshLines& lines, Field2& z0);

// Ghosts repeat the cell beside them, corners the cell diagonal to them.
void repeat_on_ghost_ring(Field2& z0);

// The mean over the flat part of the upwind buffer zone, over the cells i = 2 where the zone is so
// short that it has no flat part.
float upwind_mean(const MeshLines& lines, const Field2& z0);

// Puts z_up on the flat part of the upwind buffer zone, and as far downwind as the two keys
// USE_CONSTANT_ROUGHNESS_IN_* say: up to the study circle, or everywhere.
void stamp_upwind(const CaseSettings& settings, const MeshLines& lines, float z_up, Field2& z0);

}  // namespace torvex
