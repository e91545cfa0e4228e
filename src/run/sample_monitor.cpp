#include "run/sample_monitor.hpp"

#include "base/line1.hpp"
#include "maps/local_metric.hpp"
#include "results/bracket.hpp"

namespace torvex {

namespace {

Line1 line_along_i(const Field3& x, int n) {
    Line1 line(n);
    for (int i = 1; i <= n; ++i) {
        line(i) = x(i, 1, 1);
    }
    return line;
}

Line1 line_along_j(const Field3& y, int n) {
    Line1 line(n);
    for (int j = 1; j <= n; ++j) {
        line(j) = y(1, j, 1);
    }
    return line;
}

// A field in the vertical above a point between four columns.
Line1 column(const Field3& q, LinePlace x, LinePlace y) {
    Line1 values(q.nk());
    for (int k = 1; k <= q.nk(); ++k) {
        values(k) = bilinear(x.w, y.w, q(x.i, y.i, k), q(x.i + 1, y.i, k), q(x.i + 1, y.i + 1, k),
                             q(x.i, y.i + 1, k));
    }
    return values;
}

Line1 above_ground(Line1 heights) {
    const float ground = heights(1);
    for (int k = 1; k <= heights.size(); ++k) {
        heights(k) -= ground;
    }
    return heights;
}

float value_at(const Line1& values, LinePlace z) {
    return values(z.i) + z.w * (values(z.i + 1) - values(z.i));
}

}  // namespace

MonitorSample sample_monitor(const CaseSettings& settings, const GridGeometry& grid,
                             const FlowState& flow, float angle) {
    const MeshPosition at =
        position_from_centre(settings.monitor_lon_min, settings.monitor_lat_min,
                             settings.cent_lon_min, settings.cent_lat_min, settings.GS, angle);
    const LinePlace x = place_on(at.x, line_along_i(grid.xc, grid.ni));
    const LinePlace y = place_on(at.y, line_along_j(grid.yc, grid.nj));
    MonitorSample sample;
    if (!x.inside() || !y.inside()) {
        return sample;
    }
    const LinePlace z = place_on(settings.MONITOR_HEIGHT, above_ground(column(grid.zc, x, y)));
    if (!z.inside()) {
        return sample;
    }
    const auto value = [&](const Field3& q) { return value_at(column(q, x, y), z); };
    sample = {value(flow.u),   value(flow.v),   value(flow.w), value(flow.p),
              value(flow.tke), value(flow.ted), true};
    return sample;
}

bool reference_speed_at_monitor(const CaseSettings& settings, const GridGeometry& grid,
                                const FlowState& flow, float& ref) {
    const LinePlace corner{1, 0.0F};
    const LinePlace z =
        place_on(settings.MONITOR_HEIGHT, above_ground(column(grid.zc, corner, corner)));
    if (!z.inside()) {
        return false;
    }
    ref = value_at(column(flow.u, corner, corner), z);
    return true;
}

}  // namespace torvex
