// Production of turbulence energy along a row of cells.
//
//   strain        gen = mu_t/den S^2
//   Launder-Kato  gen = mu_t/den S W
//
//   S^2 = 2 (du/dx)^2 + 2 (dv/dy)^2 + 2 (dw/dz)^2
//         + (du/dy + dv/dx)^2 + (dv/dz + dw/dy)^2 + (dw/dx + du/dz)^2
//   W^2 = (du/dy - dv/dx)^2 + (dv/dz - dw/dy)^2 + (dw/dx - du/dz)^2
//
// The gradients are Gauss sums over the cell: differences between opposite faces times the area
// vectors, over the volume. mu_t = vis - viscos. The shear of a log law, which linear face values
// overstate in the second cell from a wall, is taken from the factors of the log faces there.
//
// reads   xix..zez, vol, fx, fy, fz, u, v, w, vis, den
// writes  gen
// ref     Launder and Spalding (1974); Kato and Launder (1993)
// plain   tests/solver/reference/plain_turbulence

#include "solver/turbulence/production.hpp"

#include <cmath>

#include "solver/interpolation.hpp"
#include "solver/row.hpp"
#include "solver/turbulence/metric_rows.hpp"

namespace torvex {

namespace {

// A velocity component in the cells of a row and in those beside them.
struct Neighbours {
    Row<const float> here, north, south, top, bottom;
};

Neighbours neighbours(const Field3& x, int j, int k) {
    return {row(x, j, k), row(x, j + 1, k), row(x, j - 1, k), row(x, j, k + 1), row(x, j, k - 1)};
}

struct Factors {
    Row<const float> east, north, south, top, bottom;
};

Factors factors(const GridGeometry& g, const LogFaces& log_faces, int j, int k) {
    const auto along = [&](Axis axis, const Field3& factor, int jf, int kf) {
        return log_face_factor(log_faces, g, axis, jf, kf, row(factor, jf, kf));
    };
    return {row(g.fx, j, k), along(Axis::j, g.fy, j, k), along(Axis::j, g.fy, j - 1, k),
            along(Axis::k, g.fz, j, k), along(Axis::k, g.fz, j, k - 1)};
}

// Differences between opposite faces.
struct Differences {
    float xi, et, ze;
};

[[gnu::always_inline]] inline Differences differences(const Neighbours& q, const Factors& f,
                                                      int i) {
    const float here = q.here[i];
    const float east = between(here, q.here[i + 1], f.east[i]);
    const float west = between(q.here[i - 1], here, f.east[i - 1]);
    const float north = between(here, q.north[i], f.north[i]);
    const float south = between(q.south[i], here, f.south[i]);
    const float top = between(here, q.top[i], f.top[i]);
    const float bottom = between(q.bottom[i], here, f.bottom[i]);
    return {east - west, north - south, top - bottom};
}

[[gnu::always_inline]] inline float square(float x) {
    return x * x;
}

}  // namespace

// Flattened: the body of the loop is too large to be taken into it otherwise.
template <Production production>
[[gnu::flatten]] void production_row(const GridGeometry& g, FlowState& s, float viscos, int j,
                                     int k, const LogFaces& log_faces) {
    const Neighbours u = neighbours(s.u, j, k);
    const Neighbours v = neighbours(s.v, j, k);
    const Neighbours w = neighbours(s.w, j, k);
    const Factors f = factors(g, log_faces, j, k);
    const MetricRows m = metric_rows(g, j, k);
    const auto vol = row(g.vol, j, k);
    const auto vis = row(s.vis, j, k);
    const auto den = row(s.den, j, k);
    const auto gen = row(s.gen, j, k);
    along_row(2, g.nx, [=](int i) {
        const Differences du = differences(u, f, i);
        const Differences dv = differences(v, f, i);
        const Differences dw = differences(w, f, i);
        const float ux = m.xix[i] * du.xi + m.etx[i] * du.et + m.zex[i] * du.ze;
        const float uy = m.xiy[i] * du.xi + m.ety[i] * du.et + m.zey[i] * du.ze;
        const float uz = m.xiz[i] * du.xi + m.etz[i] * du.et + m.zez[i] * du.ze;
        const float vx = m.xix[i] * dv.xi + m.etx[i] * dv.et + m.zex[i] * dv.ze;
        const float vy = m.xiy[i] * dv.xi + m.ety[i] * dv.et + m.zey[i] * dv.ze;
        const float vz = m.xiz[i] * dv.xi + m.etz[i] * dv.et + m.zez[i] * dv.ze;
        const float wx = m.xix[i] * dw.xi + m.etx[i] * dw.et + m.zex[i] * dw.ze;
        const float wy = m.xiy[i] * dw.xi + m.ety[i] * dw.et + m.zey[i] * dw.ze;
        const float wz = m.xiz[i] * dw.xi + m.etz[i] * dw.et + m.zez[i] * dw.ze;
        const float strain = 2.0F * ux * ux + 2.0F * vy * vy + 2.0F * wz * wz + square(uy + vx) +
                             square(vz + wy) + square(wx + uz);
        const float c = ((vis[i] - viscos) / (vol[i] * vol[i])) / den[i];
        if constexpr (production == Production::launder_kato) {
            const float vorticity = square(uy - vx) + square(vz - wy) + square(wx - uz);
            gen[i] = std::sqrt(vorticity) * (std::sqrt(strain) * c);
        } else {
            gen[i] = strain * c;
        }
    });
}

template void production_row<Production::strain>(const GridGeometry&, FlowState&, float, int, int,
                                                 const LogFaces&);
template void production_row<Production::launder_kato>(const GridGeometry&, FlowState&, float, int,
                                                       int, const LogFaces&);

}  // namespace torvex
