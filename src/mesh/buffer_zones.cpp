#include "mesh/buffer_zones.hpp"

#include <string>

#include "base/stop.hpp"

namespace torvex {

namespace {

// Widths of ramp and flat part [m].
struct ZoneWidths {
    float in = 0;
    float out = 0;

    // Height of a flat part that, with the ramp from h_e, has the integral I.
    float flat_height(float I, float h_e) const {
        return (I - 0.5F * h_e * in) / (out + 0.5F * in);
    }
};

[[noreturn]] void refuse(RunLog& log, int code, const std::string& text, const char* keys) {
    log.timed(" [Stop " + std::to_string(code) + "]: " + text);
    stop(code, text, keys,
         "widen the buffer zone or use finer cells; BOUNDARY_HEIGHT_MODE above 1 needs XYCONF");
}

float mix(float r, float from, float to) {
    return (1.0F - r) * from + r * to;
}

void flatten_side_zones(const MeshLines& lines, RunLog& log, Field2& h) {
    const Line1& y = lines.y_line;
    const int d = lines.j_centre;
    constexpr const char* keys = "keys SIDE_BR, BZ_LIMIT";
    ZoneWidths w;
    w.in = y(d + lines.n_blend_side) - y(d + lines.n_inner);
    if (!(w.in > 0.0F)) {
        refuse(log, 153, "Inner side Buffer zone width is smaller than 0.0.", keys);
    }
    w.out = y(d + lines.n_side) - y(d + lines.n_blend_side);
    if (!(w.out > 0.0F)) {
        refuse(log, 153, "Outer side Buffer zone width is smaller than 0.0.", keys);
    }
    const auto section = [&](int i, int from, int to) {
        float I = 0.0F;
        for (int j = from; j < to; ++j) {
            I += (h(i, j) + h(i, j + 1)) * (y(j + 1) - y(j)) * 0.5F;
        }
        return I;
    };
    for (int i = lines.i_centre - lines.n_add; i <= lines.i_centre + lines.n_inner; ++i) {
        const int inner = d + lines.n_inner;
        const int blend = d + lines.n_blend_side;
        const float h_e = h(i, inner);
        const float h_f = w.flat_height(section(i, inner, d + lines.n_side), h_e);
        for (int j = blend; j <= d + lines.n_side; ++j) {
            h(i, j) = h_f;
        }
        for (int j = inner; j <= blend; ++j) {
            h(i, j) = mix((y(j) - y(inner)) / w.in, h_e, h_f);
        }
    }
    for (int i = lines.i_centre - lines.n_add; i <= lines.i_centre + lines.n_inner; ++i) {
        const int inner = d - lines.n_inner;
        const int blend = d - lines.n_blend_side;
        const float h_e = h(i, inner);
        const float h_f = w.flat_height(section(i, d - lines.n_side, inner), h_e);
        for (int j = d - lines.n_side; j <= blend; ++j) {
            h(i, j) = h_f;
        }
        for (int j = blend; j <= inner; ++j) {
            h(i, j) = mix((y(j) - y(blend)) / w.in, h_f, h_e);
        }
    }
}

// The flat height of the upwind end that keeps the volume of its zone over the whole width.
float upwind_height(const MeshLines& lines, const ZoneWidths& w, const Field2& h) {
    const Line1& x = lines.x_line;
    const Line1& y = lines.y_line;
    const int c = lines.i_centre;
    float V = 0.0F;
    for (int i = c - lines.n_up; i < c - lines.n_add; ++i) {
        for (int j = 1; j < lines.ny; ++j) {
            const float corners = h(i, j) + h(i + 1, j) + h(i + 1, j + 1) + h(i, j + 1);
            V += corners * 0.25F * (x(i + 1) - x(i)) * (y(j + 1) - y(j));
        }
    }
    float S = 0.0F;
    for (int j = 1; j < lines.ny; ++j) {
        const int i = c - lines.n_add;
        S += (h(i, j) + h(i, j + 1)) * (y(j + 1) - y(j)) * 0.5F;
    }
    return (V - 0.5F * S * w.in) / ((w.out + 0.5F * w.in) * (y(lines.ny) - y(1)));
}

void flatten_upwind_zone(const CaseSettings& settings, const MeshLines& lines, int iwd, RunLog& log,
                         Field2& h) {
    const Line1& x = lines.x_line;
    const int edge = lines.i_centre - lines.n_up;
    const int blend = lines.i_centre - lines.n_blend_up;
    const int inner = lines.i_centre - lines.n_add;
    constexpr const char* keys = "keys UP_BR, BZ_LIMIT, BOUNDARY_HEIGHT_MODE";
    ZoneWidths w;
    w.in = x(inner) - x(blend);
    if (!(w.in > 0.0F)) {
        refuse(log, 154, "Inner upwind buffer zone width is smaller than 0.0.", keys);
    }
    w.out = x(blend) - x(edge);
    if (!(w.out > 0.0F)) {
        w.out = x(lines.i_centre - lines.n_connect_up) - x(edge);
    }
    if (!(w.out > 0.0F)) {
        refuse(log, 154, "Outer upwind Buffer zone width is smaller than 0.0.", keys);
    }
    float h_f = upwind_height(lines, w, h);
    const bool inflow_given = settings.SPECIFY_INFLOW_ELEVATION && iwd != preview_direction;
    if (inflow_given || settings.BOUNDARY_HEIGHT_MODE == 1) {
        h_f = settings.INFLOW_ELEVATION;
    }
    for (int j = 1; j <= lines.ny; ++j) {
        const float h_e = h(inner, j);
        for (int i = edge; i <= blend; ++i) {
            h(i, j) = h_f;
        }
        for (int i = blend; i <= inner; ++i) {
            h(i, j) = mix((x(i) - x(blend)) / w.in, h_f, h_e);
        }
    }
}

void flatten_downwind_zone(const CaseSettings& settings, const MeshLines& lines, RunLog& log,
                           Field2& h) {
    const Line1& x = lines.x_line;
    const int inner = lines.i_centre + lines.n_inner;
    const int blend = lines.i_centre + lines.n_blend_down;
    const int edge = lines.i_centre + lines.n_down;
    constexpr const char* keys = "keys DOWN_BR, BZ_LIMIT, BOUNDARY_HEIGHT_MODE";
    const std::string text = "Downwind buffer zone width is smaller than 0.0.";
    ZoneWidths w;
    w.in = x(blend) - x(inner);
    if (!(w.in > 0.0F)) {
        refuse(log, 155, text, keys);
    }
    w.out = x(edge) - x(blend);
    if (!(w.out > 0.0F)) {
        w.out = x(edge) - x(lines.i_centre + lines.n_connect_down);
    }
    if (!(w.out > 0.0F)) {
        refuse(log, 155, text, keys);
    }
    for (int j = 1; j <= lines.ny; ++j) {
        const float h_e = h(inner, j);
        float h_f = settings.INFLOW_ELEVATION;
        if (settings.BOUNDARY_HEIGHT_MODE == 0) {
            float I = 0.0F;
            for (int i = inner; i < edge; ++i) {
                I += (h(i, j) + h(i + 1, j)) * (x(i + 1) - x(i)) * 0.5F;
            }
            h_f = w.flat_height(I, h_e);
        }
        for (int i = blend; i <= edge; ++i) {
            h(i, j) = h_f;
        }
        for (int i = inner; i <= blend; ++i) {
            h(i, j) = mix((x(i) - x(inner)) / w.in, h_e, h_f);
        }
    }
}

}  // namespace

void flatten_buffer_zones(const CaseSettings& settings, const MeshLines& lines, int iwd,
                          RunLog& log, Field2& h) {
    flatten_side_zones(lines, log, h);
    flatten_upwind_zone(settings, lines, iwd, log, h);
    flatten_downwind_zone(settings, lines, log, h);
}

}  // namespace torvex
