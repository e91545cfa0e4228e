// Boundary routines of the pressure correction.
//
//   boundary_fluxes  flx = S.(u, v, w) with the velocity of the boundary index, no pressure term;
//                    they are never corrected: all six boundaries are of Neumann type for pp
//   bc_flux          flxW = 0 at the top in every mode
//   bc_pp            pp of the six boundary planes copies the cell beside it; the boundary
//                    coefficients of the equation are 0 already, see pressure_equation
//   bc_p             p alike; between the inflow and outflow planes and the ground and the top the
//                    sides copy their rows over the whole extent, so that the edges along j = 1 and
//                    nj are filled too, those on the ground and the top with the planes' old values
//
// reads   xn, yn, zn, u, v, w
// writes  flxU(1 and nx), flxV(1 and ny), flxW(1 and nz) [m3/s]; boundary planes of pp, p
// plain   tests/solver/reference/plain_pressure: boundary_flux

#include "solver/pressure_boundary.hpp"

#include "solver/face_area.hpp"

namespace torvex {

namespace {

[[gnu::always_inline]] inline float through(const Vec3& diagonals, const FlowState& s, int i, int j,
                                            int k) {
    return 0.5F * dot(diagonals, {s.u(i, j, k), s.v(i, j, k), s.w(i, j, k)});
}

void copy_row(Field3& x, int i1, int i2, int j, int k, int j_from, int k_from) {
#pragma omp simd
    for (int i = i1; i <= i2; ++i) {
        x(i, j, k) = x(i, j_from, k_from);
    }
}

}  // namespace

void boundary_fluxes(const GridGeometry& g, FlowState& s) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            s.flxU(1, j, k) = through(east_diagonals(g, 1, j, k), s, 1, j, k);
            s.flxU(g.nx, j, k) = through(east_diagonals(g, g.nx, j, k), s, g.ni, j, k);
        }
#pragma omp simd
        for (int i = 2; i <= g.nx; ++i) {
            s.flxV(i, 1, k) = through(north_diagonals(g, i, 1, k), s, i, 1, k);
            s.flxV(i, g.ny, k) = through(north_diagonals(g, i, g.ny, k), s, i, g.nj, k);
        }
    }
#pragma omp parallel for schedule(static)
    for (int j = 2; j <= g.ny; ++j) {
#pragma omp simd
        for (int i = 2; i <= g.nx; ++i) {
            s.flxW(i, j, 1) = through(top_diagonals(g, i, j, 1), s, i, j, 1);
        }
    }
}

void bc_flux(const GridGeometry& g, FlowState& s) {
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            s.flxW(i, j, g.nz) = 0.0F;
        }
    }
}

void bc_pp(const GridGeometry& g, Field3& pp) {
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            pp(1, j, k) = pp(2, j, k);
            pp(g.ni, j, k) = pp(g.nx, j, k);
        }
        copy_row(pp, 2, g.nx, 1, k, 2, k);
        copy_row(pp, 2, g.nx, g.nj, k, g.ny, k);
    }
    for (int j = 2; j <= g.ny; ++j) {
        copy_row(pp, 2, g.nx, j, 1, j, 2);
        copy_row(pp, 2, g.nx, j, g.nk, j, g.nz);
    }
}

void bc_p(const GridGeometry& g, Field3& p) {
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            p(1, j, k) = p(2, j, k);
            p(g.ni, j, k) = p(g.nx, j, k);
        }
    }
    for (int k = 1; k <= g.nk; ++k) {
        copy_row(p, 1, g.ni, 1, k, 2, k);
        copy_row(p, 1, g.ni, g.nj, k, g.ny, k);
    }
    for (int j = 2; j <= g.ny; ++j) {
        copy_row(p, 2, g.nx, j, 1, j, 2);
        copy_row(p, 2, g.nx, j, g.nk, j, g.nz);
    }
}

}  // namespace torvex
