// Volume fluxes between the cells by momentum interpolation, and the face coefficients of the
// pressure equation.
//
// Velocity and pressure stand at the same points, so a pressure that alternates from cell to cell
// would leave no trace in plainly interpolated velocities. On the face between cells P and N, with
// d the metric components along the face's own direction over ap, the cell velocities are therefore
// stripped of the pressure drop across their own cell and given the drop between P and N:
//
//   q_f  = (1-f) (q - d Dp)_P + f (q - d Dp)_N + ((1-f) d_P + f d_N) (p_P - p_N)
//   Dp   = p at the lower face of the cell - p at its upper face, along the same direction
//   flx  = 0.5 S'.(u_f, v_f, w_f)
//   coef = 0.5 S'.(d_f of u, v, w)
//
// with S' the cross product of the face's diagonals, twice the area vector. Drops along the other
// two directions take no part.
//
// reads   xn, yn, zn, fx, fy, fz, u, v, w, p, dUxi..dWze
// writes  flxU in 2..nx-1, 2..ny, 2..nz, flxV and flxW alike [m3/s]: faces between two cells
//         coefXi in 1..nx, 2..ny, 2..nz, coefEt and coefZe alike, 0 on the boundary faces
// ref     Rhie and Chow (1983)
// plain   tests/solver/reference/plain_pressure: interpolated_flux, coefficient
//
// Each k plane does all three directions and both results, one direction after the other: a row
// then has some twenty streams, and the plane's data stay in cache for the next direction. Areas
// come from the nodes, three arrays for all directions, where stored areas would be nine to read.

#include "solver/pressure_faces.hpp"

#include "mesh/cell_nodes.hpp"
#include "solver/face_area.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/interpolation.hpp"

namespace torvex {

namespace {

// What belongs to the faces across one axis.
template <Axis A>
struct Faces;

template <>
struct Faces<Axis::i> {
    static constexpr int di = 1, dj = 0, dk = 0;
    const Field3& f;
    Field3& flux;
    Field3& coef;

    Faces(const GridGeometry& g, FlowState& s) : f(g.fx), flux(s.flxU), coef(s.coefXi) {}

    [[gnu::always_inline]] static Vec3 diagonals(const GridGeometry& g, int i, int j, int k) {
        return east_diagonals(g, i, j, k);
    }
};

template <>
struct Faces<Axis::j> {
    static constexpr int di = 0, dj = 1, dk = 0;
    const Field3& f;
    Field3& flux;
    Field3& coef;

    Faces(const GridGeometry& g, FlowState& s) : f(g.fy), flux(s.flxV), coef(s.coefEt) {}

    [[gnu::always_inline]] static Vec3 diagonals(const GridGeometry& g, int i, int j, int k) {
        return north_diagonals(g, i, j, k);
    }
};

template <>
struct Faces<Axis::k> {
    static constexpr int di = 0, dj = 0, dk = 1;
    const Field3& f;
    Field3& flux;
    Field3& coef;

    Faces(const GridGeometry& g, FlowState& s) : f(g.fz), flux(s.flxW), coef(s.coefZe) {}

    [[gnu::always_inline]] static Vec3 diagonals(const GridGeometry& g, int i, int j, int k) {
        return top_diagonals(g, i, j, k);
    }
};

// The face of cell P = (i,j,k) towards the next cell N. It stands outside the loop below because
// vectors declared in a simd loop are kept in memory, lane by lane, and the loop is then not
// vectorised.
template <Axis A, bool with_flux, class Gains>
[[gnu::always_inline]] inline void fill_face(const GridGeometry& g, const FlowState& s,
                                             const Faces<A>& face, const Gains& gains, int i, int j,
                                             int k) {
    constexpr int di = Faces<A>::di;
    constexpr int dj = Faces<A>::dj;
    constexpr int dk = Faces<A>::dk;
    const int in = i + di;
    const int jn = j + dj;
    const int kn = k + dk;
    const float f = face.f(i, j, k);
    const Vec3 area = Faces<A>::diagonals(g, i, j, k);
    const Vec3 d_P = gains.template along<A>(i, j, k);
    const Vec3 d_N = gains.template along<A>(in, jn, kn);
    const Vec3 d{between(d_P.x, d_N.x, f), between(d_P.y, d_N.y, f), between(d_P.z, d_N.z, f)};
    face.coef(i, j, k) = 0.5F * dot(area, d);
    if constexpr (with_flux) {
        const Field3& p = s.p;
        const float p_P = p(i, j, k);
        const float p_N = p(in, jn, kn);
        const float p_low = between(p(i - di, j - dj, k - dk), p_P, face.f(i - di, j - dj, k - dk));
        const float p_face = between(p_P, p_N, f);
        const float p_high = between(p_N, p(in + di, jn + dj, kn + dk), face.f(in, jn, kn));
        const float drop_P = p_low - p_face;
        const float drop_N = p_face - p_high;
        const float drop = p_P - p_N;
        const auto component = [&](const Field3& q, float dq_P, float dq_N, float dq) {
            return between(q(i, j, k) - dq_P * drop_P, q(in, jn, kn) - dq_N * drop_N, f) +
                   dq * drop;
        };
        const Vec3 velocity{component(s.u, d_P.x, d_N.x, d.x), component(s.v, d_P.y, d_N.y, d.y),
                            component(s.w, d_P.z, d_N.z, d.z)};
        face.flux(i, j, k) = 0.5F * dot(area, velocity);
    }
}

// Faces i = 2..last of row (j, k), each between two cells.
template <Axis A, bool with_flux, class Gains>
void face_row(const GridGeometry& g, FlowState& s, const Gains& gains, int last, int j, int k) {
    const Faces<A> face(g, s);
#pragma omp simd
    for (int i = 2; i <= last; ++i) {
        fill_face<A, with_flux>(g, s, face, gains, i, j, k);
    }
}

void clear_row(Field3& coef, const GridGeometry& g, int j, int k) {
    for (int i = 2; i <= g.nx; ++i) {
        coef(i, j, k) = 0.0F;
    }
}

// The faces of row (j,k) across i and j.
template <bool with_flux, class Gains>
void side_faces(const GridGeometry& g, FlowState& s, const Gains& gains, int j, int k) {
    s.coefXi(1, j, k) = 0.0F;
    face_row<Axis::i, with_flux>(g, s, gains, g.nx - 1, j, k);
    s.coefXi(g.nx, j, k) = 0.0F;
    if (j == g.ny) {
        clear_row(s.coefEt, g, j, k);
    } else {
        face_row<Axis::j, with_flux>(g, s, gains, g.nx, j, k);
    }
}

// What the next row needs first.
template <bool with_flux, class Gains>
void fetch_next(const GridGeometry& g, const FlowState& s, const Gains& gains, int j, int k) {
    gains.fetch(j + 1, k, k + 1);
    fetch_row(j + 1, k, s.coefXi, s.coefEt, s.coefZe);
    fetch_row(j + 1, k + 1, g.xn, g.yn, g.zn);
    if constexpr (with_flux) {
        fetch_row(j + 1, k, s.flxU, s.flxV, s.flxW);
        fetch_row(j + 1, k + 1, s.u, s.v, s.w);
        fetch_row(j + 1, k + 2, s.p);
    }
}

template <bool with_flux, class Gains>
void all_faces(const GridGeometry& g, FlowState& s, const Gains& gains) {
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= g.nz; ++k) {
        if (k > 1) {
            clear_row(s.coefEt, g, 1, k);
        }
        for (int j = 2; j <= g.ny; ++j) {
            fetch_next<with_flux>(g, s, gains, j, k);
            if (k > 1) {
                side_faces<with_flux>(g, s, gains, j, k);
            }
            if (k == 1 || k == g.nz) {
                clear_row(s.coefZe, g, j, k);
            } else {
                face_row<Axis::k, with_flux>(g, s, gains, g.nx, j, k);
            }
        }
    }
}

}  // namespace

void face_fluxes(const GridGeometry& g, FlowState& s) {
    all_faces<true>(g, s, StoredGains(s));
}

void face_fluxes(const GridGeometry& g, const SharedGains& gains, FlowState& s) {
    all_faces<true>(g, s, gains);
}

void face_coefficients(const GridGeometry& g, FlowState& s) {
    all_faces<false>(g, s, StoredGains(s));
}

void face_coefficients(const GridGeometry& g, const SharedGains& gains, FlowState& s) {
    all_faces<false>(g, s, gains);
}

}  // namespace torvex
