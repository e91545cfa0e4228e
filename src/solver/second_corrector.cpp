// Second corrector: the face fluxes due to the non-orthogonality of the mesh.
//
// The first corrector drives the flux of a face by pp_P - pp_N, as if the centres P and N of the
// two cells stood on the normal through the face centre r_f. The values on that normal are found at
// the feet r_X' = r_f + ((r_X - r_f).e) e, e the unit normal, from the gradients of pp in the
// cells:
//
//   X    = coef (grad_P.(r_P' - r_P) - grad_N.(r_N' - r_N))
//   grad = (drop of pp across the cell, times the area vector of each direction)/vol
//
// reads   xn, yn, zn, xc, yc, zc, vol, xix..zez, fx, fy, fz, pp with its boundary values
// writes  X over coefXi, coefEt, coefZe; it is 0 on the boundary faces, where coef is; then adds it
//         to flxU, flxV, flxW
// plain   tests/solver/reference/plain_pressure: extra_flux
//
// On an orthogonal mesh X is 0 to rounding.

#include "solver/second_corrector.hpp"

#include <algorithm>
#include <limits>

#include "mesh/cell_nodes.hpp"
#include "solver/face_area.hpp"
#include "solver/interpolation.hpp"

namespace torvex {

namespace {

[[gnu::always_inline]] inline Vec3 gradient(const GridGeometry& g, const Field3& pp, int i, int j,
                                            int k) {
    const float rise_xi = east(pp, g, i, j, k) - west(pp, g, i, j, k);
    const float rise_et = north(pp, g, i, j, k) - south(pp, g, i, j, k);
    const float rise_ze = top(pp, g, i, j, k) - bottom(pp, g, i, j, k);
    const float vol = g.vol(i, j, k);
    return {(rise_xi * g.xix(i, j, k) + rise_et * g.etx(i, j, k) + rise_ze * g.zex(i, j, k)) / vol,
            (rise_xi * g.xiy(i, j, k) + rise_et * g.ety(i, j, k) + rise_ze * g.zey(i, j, k)) / vol,
            (rise_xi * g.xiz(i, j, k) + rise_et * g.etz(i, j, k) + rise_ze * g.zez(i, j, k)) / vol};
}

// What pp gains from the centre of cell (i,j,k) to its foot on the normal e through r_f.
[[gnu::always_inline]] inline float rise_to_foot(const GridGeometry& g, const Field3& pp,
                                                 const Vec3& r_f, const Vec3& e, int i, int j,
                                                 int k) {
    const Vec3 grad = gradient(g, pp, i, j, k);
    const Vec3 r{g.xc(i, j, k) - r_f.x, g.yc(i, j, k) - r_f.y, g.zc(i, j, k) - r_f.z};
    const float along = dot(r, e);
    return dot(grad, Vec3{along * e.x, along * e.y, along * e.z} - r);
}

template <Axis A>
[[gnu::always_inline]] inline Vec3 diagonals(const GridGeometry& g, int i, int j, int k) {
    if constexpr (A == Axis::i) {
        return east_diagonals(g, i, j, k);
    } else if constexpr (A == Axis::j) {
        return north_diagonals(g, i, j, k);
    } else {
        return top_diagonals(g, i, j, k);
    }
}

// The extra flux of the face of cell (i,j,k) towards the next cell, per unit of the coefficient.
template <Axis A>
[[gnu::always_inline]] inline float extra_drop(const GridGeometry& g, const Field3& pp, int i,
                                               int j, int k) {
    constexpr int di = A == Axis::i ? 1 : 0;
    constexpr int dj = A == Axis::j ? 1 : 0;
    constexpr int dk = A == Axis::k ? 1 : 0;
    const CellNodes nodes{i, j, k, {i - 1, i}, {j - 1, j}, {k - 1, k}};
    const Vec3 r_f = face_centre<A>(g, A == Axis::i ? i : (A == Axis::j ? j : k), nodes);
    const Vec3 area = diagonals<A>(g, i, j, k);
    // A face without area has no normal, and a coefficient of 0.
    const float size = std::max(length(area), std::numeric_limits<float>::min());
    const Vec3 e{area.x / size, area.y / size, area.z / size};
    return rise_to_foot(g, pp, r_f, e, i, j, k) -
           rise_to_foot(g, pp, r_f, e, i + di, j + dj, k + dk);
}

// Turns the coefficients of the faces i = 2..last of row (j, k) into X.
template <Axis A>
void extra_row(const GridGeometry& g, const Field3& pp, Field3& coef, int last, int j, int k) {
#pragma omp simd
    for (int i = 2; i <= last; ++i) {
        coef(i, j, k) *= extra_drop<A>(g, pp, i, j, k);
    }
}

}  // namespace

void non_orthogonal_fluxes(const GridGeometry& g, FlowState& s) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            extra_row<Axis::i>(g, s.pp, s.coefXi, g.nx - 1, j, k);
            if (j < g.ny) {
                extra_row<Axis::j>(g, s.pp, s.coefEt, g.nx, j, k);
            }
            if (k < g.nz) {
                extra_row<Axis::k>(g, s.pp, s.coefZe, g.nx, j, k);
            }
        }
    }
}

void add_non_orthogonal_fluxes(const GridGeometry& g, FlowState& s) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
#pragma omp simd
            for (int i = 2; i <= g.nx; ++i) {
                s.flxU(i, j, k) += s.coefXi(i, j, k);
                s.flxV(i, j, k) += s.coefEt(i, j, k);
                s.flxW(i, j, k) += s.coefZe(i, j, k);
            }
        }
    }
}

}  // namespace torvex
