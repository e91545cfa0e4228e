#include "run/sample_monitor.hpp"

#include "base/stop.hpp"
#include "maps/local_metric.hpp"
#include "results/mesh_column.hpp"

namespace torvex {

namespace {

float value_at(const Line1& values, LinePlace z) {
    return values(z.i) + z.w * (values(z.i + 1) - values(z.i));
}

}  // namespace

MonitorSample sample_monitor(const CaseSettings& settings, const GridGeometry& grid,
                             const FlowState& flow, float angle) {
    const MeshPosition at =
        position_from_centre(settings.monitor_lon_min, settings.monitor_lat_min,
                             settings.cent_lon_min, settings.cent_lat_min, settings.GS, angle);
    const ColumnPlace place = column_place(at, grid);
    MonitorSample sample;
    if (!place.inside()) {
        return sample;
    }
    const LinePlace z = place_on(settings.MONITOR_HEIGHT, above_ground(column(grid.zc, place)));
    if (!z.inside()) {
        return sample;
    }
    const auto value = [&](const Field3& q) { return value_at(column(q, place), z); };
    sample = {value(flow.u),   value(flow.v),   value(flow.w), value(flow.p),
              value(flow.tke), value(flow.ted), true};
    return sample;
}

bool reference_speed_at_monitor(const CaseSettings& settings, const GridGeometry& grid,
                                const FlowState& flow, float& ref) {
    const LinePlace z = place_on(settings.MONITOR_HEIGHT, above_ground(column(grid.zc, 1, 1)));
    if (!z.inside()) {
        return false;
    }
    ref = value_at(column(flow.u, 1, 1), z);
    return true;
}

void require_monitor_inside(const CaseSettings& settings, const GridGeometry& grid,
                            const FlowState& flow, float angle) {
    float ref = 0.0F;
    if (!sample_monitor(settings, grid, flow, angle).inside ||
        !reference_speed_at_monitor(settings, grid, flow, ref)) {
        stop(161, "the monitor point is not inside the mesh",
             "keys MONITOR_LON, MONITOR_LAT, MONITOR_HEIGHT",
             "move the point, or set MONITOR_POSITION = 0");
    }
}

}  // namespace torvex
