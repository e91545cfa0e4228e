#pragma once

#include "base/case_settings.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// The flow at a point above ground.
struct MonitorSample {
    float u = 0, v = 0, w = 0;  // [m/s]
    float p = 0;                // [Pa]
    float k = 0;                // [m2/s2]
    float e = 0;                // [m2/s3]
    bool inside = false;        // false: the point is not inside the mesh, no value is set
};

// Bilinear in the columns round the point, then linear in height above the ground of the
// interpolated column. The angle is the wind direction, which turns the frame of the mesh.
MonitorSample sample_monitor(const CaseSettings& settings, const GridGeometry& grid,
                             const FlowState& flow, float angle);

// Inflow speed at MONITOR_HEIGHT, linear in the column (1,1). False if the height lies outside the
// column or the column does not rise.
bool reference_speed_at_monitor(const CaseSettings& settings, const GridGeometry& grid,
                                const FlowState& flow, float& ref);

// Stop 161 where one of the two does not find its place.
void require_monitor_inside(const CaseSettings& settings, const GridGeometry& grid,
                            const FlowState& flow, float angle);

}  // namespace torvex
