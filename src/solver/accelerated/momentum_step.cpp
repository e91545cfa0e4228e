// Momentum in an accelerated iteration. u, v and w have one matrix and are assembled from one old
// state, so that the lines are eliminated once for all three. With the working factor URF_w
//
//   ap  = (sum - sp)/URF_w + c_w + X        sum = ae + aw + an + as + at + ab
//   su += ((1 - URF_w)/URF_w (sum - sp) + c_w + X) phi_old
//
//   c_w = den cmu^(1/4) sqrt|tke| KAPPA/ln(d/z0w) vol_g/d   in cells at walls, summed on two walls
//   X   = 0.5 (D_e + D_w + D_n + D_s + s2 (D_t + D_b))      with the set for steep ground
//
// c_w is the explicit wall shear's own coefficient: taken as a centre it changes nothing of what is
// converged to and keeps wall cells from swinging. D is the diffusion across a face, the lesser of
// its two upwind coefficients, s2 = (zex^2 + zey^2)/|ze|^2 the square of the slope's sine. The gain
// of a velocity from a pressure drop stays that of the case's relaxation, see pressure_step.
//
// reads   the grid, u, v, w, p, tke, vis, den, the fluxes, gp_d
// writes  eq.ae..ab, ap, sp, su_u, su_v, su_w, rap; u, v, w in the interior and on the boundary;
//         resid_u, resid_v, resid_w

#include "solver/accelerated/momentum_step.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "canopy/canopy_sources.hpp"
#include "solver/canopy_cells_of.hpp"
#include "solver/constants.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/flow_assembly.hpp"
#include "solver/line_residuals.hpp"
#include "solver/momentum_boundary.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

namespace {

// The unrelaxed centre of a cell.
template <bool drag>
[[gnu::always_inline]] inline float centre(const LinearSystem& eq, int i, int j, int k) {
    const float sum = eq.ae(i, j, k) + eq.aw(i, j, k) + eq.an(i, j, k) + eq.as(i, j, k) +
                      eq.at(i, j, k) + eq.ab(i, j, k);
    if constexpr (drag) {
        return sum - static_cast<float>(eq.sp(i, j, k));
    } else {
        return sum;
    }
}

// X of a cell, from the coefficients of both sides of its faces; boundary faces have no part in it.
[[gnu::always_inline]] inline float damping(const GridGeometry& g, const LinearSystem& eq, int i,
                                            int j, int k) {
    const float x = g.zex(i, j, k);
    const float y = g.zey(i, j, k);
    const float z = g.zez(i, j, k);
    const float level = x * x + y * y;
    const float s2 = level / (level + z * z);
    const float D_e = std::min(eq.ae(i, j, k), eq.aw(i + 1, j, k));
    const float D_w = std::min(eq.aw(i, j, k), eq.ae(i - 1, j, k));
    const float D_n = std::min(eq.an(i, j, k), eq.as(i, j + 1, k));
    const float D_s = std::min(eq.as(i, j, k), eq.an(i, j - 1, k));
    const float D_t = std::min(eq.at(i, j, k), eq.ab(i, j, k + 1));
    const float D_b = std::min(eq.ab(i, j, k), eq.at(i, j, k - 1));
    return 0.5F * (D_e + D_w + D_n + D_s + s2 * (D_t + D_b));
}

// The coefficients that damping() reads beyond the interior.
void clear_outer_coefficients(const GridGeometry& g, LinearSystem& eq) {
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            eq.ae(1, j, k) = 0.0F;
            eq.aw(g.ni, j, k) = 0.0F;
        }
        for (int i = 2; i <= g.nx; ++i) {
            eq.an(i, 1, k) = 0.0F;
            eq.as(i, g.nj, k) = 0.0F;
        }
    }
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            eq.at(i, j, 1) = 0.0F;
            eq.ab(i, j, g.nk) = 0.0F;
        }
    }
}

template <bool drag, bool steep>
void relax_row(const SolverContext& c, AcceleratedWork& work, int j, int k) {
    const GridGeometry& g = c.grid;
    FlowState& s = c.flow;
    LinearSystem& eq = s.eq;
    const float held = (1.0F - work.set.momentum) / work.set.momentum;
#pragma omp simd
    for (int i = 2; i <= g.nx; ++i) {
        const float middle = centre<drag>(eq, i, j, k);
        float extra = held * middle;
        if constexpr (steep) {
            extra += damping(g, eq, i, j, k);
        }
        work.rap(i, j, k) = 1.0F / middle;
        eq.ap(i, j, k) = middle + extra;
        work.su_u(i, j, k) += extra * s.u(i, j, k);
        work.su_v(i, j, k) += extra * s.v(i, j, k);
        work.su_w(i, j, k) += extra * s.w(i, j, k);
    }
}

template <bool drag, bool steep>
void relax_cells(const SolverContext& c, AcceleratedWork& work) {
    const GridGeometry& g = c.grid;
    const LinearSystem& eq = c.flow.eq;
    if constexpr (steep) {
        clear_outer_coefficients(g, c.flow.eq);
    }
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            fetch_row(j + 1, k, eq.ae, eq.aw, eq.an, eq.as, eq.at, eq.ab, eq.ap, work.rap,
                      work.su_u, work.su_v, work.su_w, c.flow.u, c.flow.v, c.flow.w);
            relax_row<drag, steep>(c, work, j, k);
        }
    }
}

// c_w of one cell.
template <Wall wall>
void add_wall(const SolverContext& c, AcceleratedWork& work, int a, int b) {
    FlowState& s = c.flow;
    const auto [i, j, k, ig, jg, kg] = wall_place<wall>(c.grid, a, b);
    const WallCell& cell = cell_at<wall>(c.walls, a, b);
    const float cmu4 = std::sqrt(std::sqrt(c.settings.CMU));
    const float c_w =
        s.den(i, j, k) * cmu4 * std::sqrt(std::abs(s.tke(i, j, k))) * KAPPA / cell.L1 * cell.area;
    if (!(c_w > 0.0F)) {
        return;  // a centre below its wall's roughness length would lose its own weight
    }
    s.eq.ap(i, j, k) += c_w;
    work.su_u(i, j, k) += c_w * s.u(i, j, k);
    work.su_v(i, j, k) += c_w * s.v(i, j, k);
    work.su_w(i, j, k) += c_w * s.w(i, j, k);
}

void add_walls(const SolverContext& c, AcceleratedWork& work) {
    const GridGeometry& g = c.grid;
    const bool top = c.settings.wall_on_top();
#pragma omp parallel for schedule(static)
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            add_wall<Wall::ground>(c, work, i, j);
            if (top) {
                add_wall<Wall::top>(c, work, i, j);
            }
        }
    }
    if (!c.settings.walls_on_sides() || c.skip_sides != 0) {
        return;
    }
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int i = 2; i <= g.nx; ++i) {
            add_wall<Wall::south>(c, work, i, k);
            add_wall<Wall::north>(c, work, i, k);
        }
    }
}

void add_tau(const GridGeometry& g, const Tau& tau, AcceleratedWork& work) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
#pragma omp simd
            for (int i = 2; i <= g.nx; ++i) {
                work.su_u(i, j, k) += tau.u(i, j, k);
                work.su_v(i, j, k) += tau.v(i, j, k);
                work.su_w(i, j, k) += tau.w(i, j, k);
            }
        }
    }
}

}  // namespace

void momentum_systems(const SolverContext& c, AcceleratedWork& work) {
    fit(work, c.grid);
    assemble_flow(c, c.work.momentum, work.su_u, work.su_v, work.su_w);
    if (c.settings.canopy_on()) {
        c.flow.eq.sp.fill(0.0);
        canopy_momentum_source(canopy_cells_of(c, sources_of(c.flow.eq)));
    }
    bc_flow(c, work.su_u, work.su_v, work.su_w);
    if (work.tau != nullptr) {
        add_tau(c.grid, *work.tau, work);
    }
}

void momentum_centres(const SolverContext& c, AcceleratedWork& work) {
    const GridGeometry& g = c.grid;
    const bool drag = c.settings.canopy_on();
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
#pragma omp simd
            for (int i = 2; i <= g.nx; ++i) {
                const float middle =
                    drag ? centre<true>(c.flow.eq, i, j, k) : centre<false>(c.flow.eq, i, j, k);
                work.rap(i, j, k) = 1.0F / middle;
            }
        }
    }
}

void solve_momentum_systems(const SolverContext& c, AcceleratedWork& work, bool residuals) {
    FlowState& s = c.flow;
    const bool steep = work.set.steep;
    if (c.settings.canopy_on()) {
        steep ? relax_cells<true, true>(c, work) : relax_cells<true, false>(c, work);
    } else {
        steep ? relax_cells<false, true>(c, work) : relax_cells<false, false>(c, work);
    }
    add_walls(c, work);
    const LineUnknowns<3> unknowns{{{work.su_u, s.u}, {work.su_v, s.v}, {work.su_w, s.w}}};
    if (residuals) {
        const std::array sums = line_residuals<3>(s.eq, unknowns);
        s.resid_u = sums[0];
        s.resid_v = sums[1];
        s.resid_w = sums[2];
    }
    constexpr int sweeps = 2;
    line_sweeps<3>(s.eq, unknowns, sweeps, work.lines);
}

}  // namespace torvex
