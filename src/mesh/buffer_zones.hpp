#pragma once

#include "base/case_settings.hpp"
#include "base/field.hpp"
#include "base/run_log.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

// Flattens the ground h(i, j) [m] in the buffer zones: a linear ramp from the inner edge of the
// zone, then a flat part at h_f to the edge of the mesh. h_f keeps the ground volume of the zone,
//
//   h_f = (I - 0.5 h_e w_in) / (w_out + 0.5 w_in)
//
// with I the trapezoid integral of the sampled ground over the zone, h_e the height at the inner
// edge, w_in and w_out the widths of ramp and flat part. The order is sides, upwind, downwind, each
// on the ground that the one before has left:
//
//   sides     section by section, i = i_centre - n_add .. i_centre + n_inner
//   upwind    one height for the whole width, or INFLOW_ELEVATION
//   downwind  row by row; INFLOW_ELEVATION where BOUNDARY_HEIGHT_MODE is not 0
//
// The downwind end thus keeps a profile across the wind, and the upwind end does not. Sums run i
// outer, j inner, ascending, in single precision. `iwd` is the direction index: a preview does not
// take SPECIFY_INFLOW_ELEVATION. Stops: 153 sides, 154 upwind, 155 downwind, for widths not above
// 0.
void flatten_buffer_zones(const CaseSettings& settings, const MeshLines& lines, int iwd,
                          RunLog& log, Field2& h);

}  // namespace torvex
