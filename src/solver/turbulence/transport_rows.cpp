// Kernels of the turbulence transport equations along a row of cells.
//
// A face with the area vector A of its own direction and those B, C of the two others passes
//
//   diffusion     vis/vol ( A.A dphi_A / sigma + A.B dphi_B + A.C dphi_C )
//   convection    den flux phi of the cell upwind
//
// where dphi are differences over one cell along the three directions. The first term and
// convection go into the coefficients, the two cross terms into the source. The turbulent Prandtl
// number sigma divides the first term only; that the cross terms go without it is deliberate.
//
// Products of area vectors are formed at the centres and then interpolated to the faces.
//
// plain   tests/solver/reference/plain_turbulence

#include "solver/turbulence/transport_rows.hpp"

#include "base/field.hpp"
#include "solver/interpolation.hpp"
#include "solver/turbulence/metric_rows.hpp"

namespace torvex {

namespace {

// Zero where x is negative. A value that is not a number stays what it is.
[[gnu::always_inline]] inline float positive_part(float x) {
    return x < 0.0F ? 0.0F : x;
}

}  // namespace

void transport_faces(const TransportFaces& face, float over_sigma, int first, int last) {
    const FaceSide low = face.low;
    const FaceSide high = face.high;
    const auto a = face.a;
    const auto b = face.b;
    const auto c = face.c;
    const auto d = face.d;
    along_row(first, last, [=](int i) {
        const float f = face.factor[i];
        const float vis = between(low.vis[i], high.vis[i], f);
        const float vol = between(low.vol[i], high.vol[i], f);
        const float diffusivity = vis / vol;
        const float own = between(low.own[i], high.own[i], f);
        const float orthogonal = diffusivity * over_sigma * own;
        const float mass = between(low.den[i], high.den[i], f) * face.flux[i];
        face.to_high[i] = orthogonal + positive_part(-mass);
        face.to_low[i] = orthogonal + positive_part(mass);
        const float along_first = between(low.first[i], high.first[i], f) * (a[i] - b[i]);
        const float along_second = between(low.second[i], high.second[i], f) * (c[i] + d[i]);
        face.cross[i] = 0.5F * diffusivity * (along_first + along_second);
    });
}

void metric_products(const GridGeometry& g, int j, int k, const ProductRows& out) {
    const MetricRows area = metric_rows(g, j, k);
    along_row(1, g.ni, [=](int i) {
        out.xi_xi[i] = area.xi_xi(i);
        out.et_et[i] = area.et_et(i);
        out.ze_ze[i] = area.ze_ze(i);
        out.xi_et[i] = area.xi_et(i);
        out.xi_ze[i] = area.xi_ze(i);
        out.et_ze[i] = area.et_ze(i);
    });
}

void zeta_products(const GridGeometry& g, int j, int k, const ProductRows& out) {
    const MetricRows area = metric_rows(g, j, k);
    along_row(1, g.ni, [=](int i) {
        out.ze_ze[i] = area.ze_ze(i);
        out.xi_ze[i] = area.xi_ze(i);
        out.et_ze[i] = area.et_ze(i);
    });
}

void to_i_faces(const GridGeometry& g, const Field3& phi, int j, int k, Row<float> out) {
    const auto fx = row(g.fx, j, k);
    const auto x = row(phi, j, k);
    along_row(1, g.nx, [=](int i) { out[i] = between(x[i], x[i + 1], fx[i]); });
}

}  // namespace torvex
