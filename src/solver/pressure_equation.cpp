// The equation of the pressure correction: its mass source and its coefficients.
//
//   m  = Fe - Fw + Fn - Fs + Ft - Fb     F = density of the face * volume flux
//   su = -m, sp = 0                      resid_m = sum |m|
//   ae = den_e coefXi(i,j,k), aw = den_w coefXi(i-1,j,k), an, as with coefEt, at, ab with coefZe
//   ap = ae + aw + an + as + at + ab - sp
//
// reads   fx, fy, fz, den, the fluxes; coefXi, coefEt, coefZe, 0 on the boundary faces: no
//         correction passes the boundary, the inflow included, and the boundary coefficients are 0
// writes  eq in 2..nx, 2..ny, 2..nz, and ae, an, at = 0 of the cells before them; pp
// plain   tests/solver/reference/plain_pressure: imbalance, residual
//
// The sum is in single precision: every eighth cell of the rows of a plane by itself, then these
// eight sums, then the planes. So it is the same for any number of threads.

#include "solver/pressure_equation.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

#include "solver/fetch_ahead.hpp"
#include "solver/interpolation.hpp"
#include "solver/lane_sum.hpp"
#include "solver/plane_sums.hpp"

namespace torvex {

namespace {

void source_row(const GridGeometry& g, const FaceFlows& flow, FlowState& s, int j, int k) {
    const Field3& den = s.den;
#pragma omp simd
    for (int i = 2; i <= g.nx; ++i) {
        const float Fe = east(den, g, i, j, k) * flow.east(i, j, k);
        const float Fw = west(den, g, i, j, k) * flow.east(i - 1, j, k);
        const float Fn = north(den, g, i, j, k) * flow.north(i, j, k);
        const float Fs = south(den, g, i, j, k) * flow.north(i, j - 1, k);
        const float Ft = top(den, g, i, j, k) * flow.top(i, j, k);
        const float Fb = bottom(den, g, i, j, k) * flow.top(i, j, k - 1);
        const float m = Fe - Fw + Fn - Fs + Ft - Fb;
        s.eq.su(i, j, k) = -static_cast<double>(m);
        s.eq.sp(i, j, k) = 0.0;
    }
}

void coefficient_row(const GridGeometry& g, FlowState& s, int j, int k) {
    const Field3& den = s.den;
    LinearSystem& eq = s.eq;
#pragma omp simd
    for (int i = 2; i <= g.nx; ++i) {
        const float ae = east(den, g, i, j, k) * s.coefXi(i, j, k);
        const float aw = west(den, g, i, j, k) * s.coefXi(i - 1, j, k);
        const float an = north(den, g, i, j, k) * s.coefEt(i, j, k);
        const float as = south(den, g, i, j, k) * s.coefEt(i, j - 1, k);
        const float at = top(den, g, i, j, k) * s.coefZe(i, j, k);
        const float ab = bottom(den, g, i, j, k) * s.coefZe(i, j, k - 1);
        eq.ae(i, j, k) = ae;
        eq.aw(i, j, k) = aw;
        eq.an(i, j, k) = an;
        eq.as(i, j, k) = as;
        eq.at(i, j, k) = at;
        eq.ab(i, j, k) = ab;
        eq.ap(i, j, k) = ae + aw + an + as + at + ab;  // sp is 0
    }
    // The lower boundary faces from outside: the matrix is symmetric there too.
    eq.ae(1, j, k) = eq.aw(2, j, k);
    if (j == 2) {
        std::copy_n(&eq.as(2, j, k), g.nx - 1, &eq.an(2, 1, k));
    }
    if (k == 2) {
        std::copy_n(&eq.ab(2, j, k), g.nx - 1, &eq.at(2, j, 1));
    }
}

}  // namespace

float mass_source(const GridGeometry& g, const FaceFlows& flow, FlowState& s) {
    return plane_sums<1>({2, 2, 2, g.nx, g.ny, g.nz}, [&](int k) {
        LaneSum sum;
        for (int j = 2; j <= g.ny; ++j) {
            fetch_row(j + 1, k, flow.east, flow.north, flow.top, s.eq.su, s.eq.sp, s.den);
            source_row(g, flow, s, j, k);
            const double* su = &s.eq.su(2, j, k);
            rising_cells(g.nx - 1, [&]<class V>(V, int m) {
                sum.add(magnitude(narrow<V>(load_wide<V>(su + m))), m);
            });
        }
        return std::array{sum.total()};
    })[0];
}

void pressure_equation(const GridGeometry& g, FlowState& s) {
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= g.nk; ++k) {
        const std::ptrdiff_t plane = static_cast<std::ptrdiff_t>(g.ni) * g.nj;
        std::fill_n(s.pp.data() + plane * (k - 1), plane, 0.0F);
        if (k > 1 && k <= g.nz) {
            for (int j = 2; j <= g.ny; ++j) {
                fetch_row(j + 1, k, s.coefXi, s.coefEt, s.coefZe, s.eq.ae, s.eq.aw, s.eq.an,
                          s.eq.as, s.eq.at, s.eq.ab, s.eq.ap);
                coefficient_row(g, s, j, k);
            }
        }
    }
}

}  // namespace torvex
