// The pressure step of an accelerated iteration, on the equations of CALCP. With d = metric URF rap
// in every cell, URF the case's factor, the consistent correction (SIMPLEC, Van Doormaal and
// Raithby 1984) differs from the plain one by a constant factor in pp alone, since 1 - sum(a)/ap is
// 1 - URF everywhere: velocities and fluxes take pp as it is, and
//
//   p += part (URF/URF_w) max(1 - URF_w, 0.2) (pp - pp(2,2,2))
//
// with the working factor URF_w of momentum. The density is one number, so that the balance of
// volume stands for that of mass.
//
// reads   the grid, u, v, w, p, den, rap; URFU, URFV, URFW, DOUBLE_CORRECTION; the level's tau
// writes  flxU, flxV, flxW, pp, p and its boundary values, u, v, w in 2..nx, 2..ny, 2..nz;
//         coefXi, coefEt, coefZe and work.su_u as scratch; resid_m [kg/s]

#include "solver/accelerated/pressure_step.hpp"

#include <algorithm>
#include <array>

#include "solver/fetch_ahead.hpp"
#include "solver/lane_sum.hpp"
#include "solver/plane_sums.hpp"
#include "solver/pressure_boundary.hpp"
#include "solver/pressure_correction.hpp"
#include "solver/pressure_faces.hpp"
#include "solver/second_corrector.hpp"

namespace torvex {

namespace {

void add_fluxes(const GridGeometry& g, const Tau& tau, FlowState& s) {
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
#pragma omp simd
            for (int i = 1; i <= g.nx; ++i) {
                s.flxU(i, j, k) += tau.flxU(i, j, k);
                s.flxV(i, j, k) += tau.flxV(i, j, k);
                s.flxW(i, j, k) += tau.flxW(i, j, k);
            }
        }
    }
}

// su = minus the volume that leaves each cell; returns the sum of |su|.
float volume_source(const GridGeometry& g, const Field3& east, const Field3& north,
                    const Field3& top, Field3& su) {
    return plane_sums<1>({2, 2, 2, g.nx, g.ny, g.nz}, [&](int k) {
        LaneSum sum;
        for (int j = 2; j <= g.ny; ++j) {
            fetch_row(j + 1, k, east, north, top, su);
            const float* e = &east(1, j, k);
            const float* n = &north(1, j, k);
            const float* s = &north(1, j - 1, k);
            const float* t = &top(1, j, k);
            const float* b = &top(1, j, k - 1);
            float* out = &su(1, j, k);
            rising_cells(g.nx - 1, [&]<class V>(V, int m) {
                const int c = m + 1;
                const V leaves = load<V>(e + c) - load<V>(e + c - 1) + load<V>(n + c) -
                                 load<V>(s + c) + load<V>(t + c) - load<V>(b + c);
                store(out + c, V{} - leaves);
                sum.add(magnitude(leaves), m);
            });
        }
        return std::array{sum.total()};
    })[0];
}

SolveRecord solve_and_correct(const SolverContext& c, AcceleratedWork& work) {
    const GridGeometry& g = c.grid;
    FlowState& s = c.flow;
    const WorkingSet& set = work.set;
    const float part =
        set.pressure * (c.settings.URFU / set.momentum) * std::max(1.0F - set.momentum, 0.2F);
    const SolveRecord done = work.pressure.solve(
        {.a_e = s.coefXi, .a_n = s.coefEt, .a_t = s.coefZe, .su = work.su_u}, s.pp);
    bc_pp(g, s.pp);
    correct_flow(g, shared_gains(c, work), s, part);
    bc_p(g, s.p);
    return done;
}

}  // namespace

SharedGains shared_gains(const SolverContext& c, const AcceleratedWork& work) {
    const CaseSettings& q = c.settings;
    return {c.grid, work.rap, {q.URFU, q.URFV, q.URFW}};
}

void mass_fluxes(const SolverContext& c, const AcceleratedWork& work) {
    face_fluxes(c.grid, shared_gains(c, work), c.flow);
    boundary_fluxes(c.grid, c.flow);
    bc_flux(c.grid, c.flow);
}

SolveRecord pressure_step(const SolverContext& c, AcceleratedWork& work) {
    const GridGeometry& g = c.grid;
    FlowState& s = c.flow;
    mass_fluxes(c, work);
    if (work.tau != nullptr) {
        add_fluxes(g, *work.tau, s);
    }
    s.resid_m = c.settings.DENSIT * volume_source(g, s.flxU, s.flxV, s.flxW, work.su_u);
    SolveRecord record = solve_and_correct(c, work);
    if (c.settings.DOUBLE_CORRECTION) {
        non_orthogonal_fluxes(g, s);
        add_non_orthogonal_fluxes(g, s);
        volume_source(g, s.coefXi, s.coefEt, s.coefZe, work.su_u);
        face_coefficients(g, shared_gains(c, work), s);
        solve_and_correct(c, work);
    }
    return record;
}

}  // namespace torvex
