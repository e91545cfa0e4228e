// The corrections that follow from pp.
//
//   u, v, w += drop_xi dUxi + drop_et dUet + drop_ze dUze (dVxi.., dWxi..), unrelaxed
//   flxU    += coefXi (pp(i) - pp(i+1)), flxV and flxW alike
//   p       += URFP (pp - pp(2,2,2))
//
// with drop the difference of pp between the lower and the upper face of the cell. All three
// directions act on the velocities; on a face the direction across it alone does, see
// second_corrector for the rest. Cell (2,2,2) keeps its pressure and so holds the level of p.
//
// reads   fx, fy, fz, pp with its boundary values, dUxi..dWze, coefXi, coefEt, coefZe
// writes  u, v, w, p in the interior; flxU, flxV, flxW in 2..nx-1, 2..ny-1, 2..nz-1: boundary
//         fluxes stand, and so do those among the last cells of each direction
// plain   tests/solver/reference/plain_pressure: velocity_change, flux_change

#include "solver/pressure_correction.hpp"

#include "solver/fetch_ahead.hpp"
#include "solver/interpolation.hpp"

namespace torvex {

namespace {

// The cell stands outside the loop below, as a face does in pressure_faces.
template <class Gains>
[[gnu::always_inline]] inline void correct_cell(const GridGeometry& g, FlowState& s,
                                                const Gains& gains, float URFP, float pp_ref, int i,
                                                int j, int k) {
    const Field3& pp = s.pp;
    const float drop_xi = west(pp, g, i, j, k) - east(pp, g, i, j, k);
    const float drop_et = south(pp, g, i, j, k) - north(pp, g, i, j, k);
    const float drop_ze = bottom(pp, g, i, j, k) - top(pp, g, i, j, k);
    const Vec3 d_xi = gains.template along<Axis::i>(i, j, k);
    const Vec3 d_et = gains.template along<Axis::j>(i, j, k);
    const Vec3 d_ze = gains.template along<Axis::k>(i, j, k);
    s.u(i, j, k) += drop_xi * d_xi.x + drop_et * d_et.x + drop_ze * d_ze.x;
    s.v(i, j, k) += drop_xi * d_xi.y + drop_et * d_et.y + drop_ze * d_ze.y;
    s.w(i, j, k) += drop_xi * d_xi.z + drop_et * d_et.z + drop_ze * d_ze.z;
    s.p(i, j, k) += URFP * (pp(i, j, k) - pp_ref);
}

template <class Gains>
void correct_cells(const GridGeometry& g, FlowState& s, const Gains& gains, float URFP,
                   float pp_ref, int j, int k) {
#pragma omp simd
    for (int i = 2; i <= g.nx; ++i) {
        correct_cell(g, s, gains, URFP, pp_ref, i, j, k);
    }
}

void correct_faces(const GridGeometry& g, FlowState& s, int j, int k) {
    const Field3& pp = s.pp;
#pragma omp simd
    for (int i = 2; i <= g.nx - 1; ++i) {
        s.flxW(i, j, k) += s.coefZe(i, j, k) * (pp(i, j, k) - pp(i, j, k + 1));
        s.flxU(i, j, k) += s.coefXi(i, j, k) * (pp(i, j, k) - pp(i + 1, j, k));
        s.flxV(i, j, k) += s.coefEt(i, j, k) * (pp(i, j, k) - pp(i, j + 1, k));
    }
}

template <class Gains>
void correct(const GridGeometry& g, FlowState& s, const Gains& gains, float URFP) {
    const float pp_ref = s.pp(2, 2, 2);
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            fetch_row(j + 1, k, s.u, s.v, s.w, s.p);
            gains.fetch(j + 1, k, k);
            fetch_row(j + 1, k + 1, s.pp);
            correct_cells(g, s, gains, URFP, pp_ref, j, k);
            if (j < g.ny && k < g.nz) {
                fetch_row(j + 1, k, s.coefXi, s.coefEt, s.coefZe, s.flxU, s.flxV, s.flxW);
                correct_faces(g, s, j, k);
            }
        }
    }
}

}  // namespace

void correct_flow(const GridGeometry& g, FlowState& s, float URFP) {
    correct(g, s, StoredGains(s), URFP);
}

void correct_flow(const GridGeometry& g, const SharedGains& gains, FlowState& s, float URFP) {
    correct(g, s, gains, URFP);
}

}  // namespace torvex
