// Turbulence in an accelerated iteration: the systems of CALCKE, CALCED and CALCKLM, solved by two
// sweeps over lines. tke comes first and ted takes the new one. Behind the sweeps no cell but a
// pinned one has changed by more than the factor of the working set, which acts on the way to the
// solution and not at it.
//
//   ap = (sum - sp)/URF_w,   su += (1 - URF_w) ap phi_old
//
// Model 4: vis and viskl converge to a blend that depends on URFVIS, since viskl is blended into
// the vis of the iteration before. With U the case's URFVIS and R = RATIO_KL that is
//
//   vis = ((1 - R) U newe + R viskl)/(1 - (1 - R)(1 - U))
//
// which vis approaches with the working factor here.
//
// reads   the grid, u, v, w, vis, den, the fluxes, the energies
// writes  tke, ted, tkl, gen, lm, vis, viskl, with their boundary values; eq; resid_k, resid_e,
//         resid_klm

#include "solver/accelerated/turbulence_step.hpp"

#include <algorithm>
#include <limits>

#include "solver/constants.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/line_residuals.hpp"
#include "solver/row.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"

namespace torvex {

namespace {

constexpr float pin = -static_cast<float>(BIG);

void add_tau(const GridGeometry& g, const Field3& tau, LinearSystem& eq) {
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
#pragma omp simd
            for (int i = 2; i <= g.nx; ++i) {
                const auto t = static_cast<double>(tau(i, j, k));
                const double su = eq.su(i, j, k);
                const double sp = eq.sp(i, j, k);
                const bool pinned = static_cast<float>(sp) == pin;
                eq.su(i, j, k) = pinned ? su * t : su + std::max(t, 0.0);
                eq.sp(i, j, k) = pinned ? sp : sp + std::min(t, 0.0);
            }
        }
    }
}

// eq.ap, the right side in `su`, and the values before the sweeps in `before`.
void relax(const GridGeometry& g, LinearSystem& eq, const Field3& phi, float urf, Field3& su,
           Field3& before) {
    const float over = 1.0F / urf;
    const float held = (1.0F - urf) / urf;
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            fetch_row(j + 1, k, eq.ae, eq.aw, eq.an, eq.as, eq.at, eq.ab, eq.sp, phi, eq.ap, eq.su,
                      su, before);
            const auto ae = row(eq.ae, j, k);
            const auto aw = row(eq.aw, j, k);
            const auto an = row(eq.an, j, k);
            const auto as = row(eq.as, j, k);
            const auto at = row(eq.at, j, k);
            const auto ab = row(eq.ab, j, k);
            const auto sp = row(eq.sp, j, k);
            const auto source = row(eq.su, j, k);
            const auto x = row(phi, j, k);
            const auto ap = row(eq.ap, j, k);
            const auto out = row(su, j, k);
            const auto old = row(before, j, k);
#pragma omp simd
            for (int i = 2; i <= g.nx; ++i) {
                const float sum = ae[i] + aw[i] + an[i] + as[i] + at[i] + ab[i];
                const float middle = sum - static_cast<float>(sp[i]);
                ap[i] = over * middle;
                out[i] = static_cast<float>(source[i]) + held * middle * x[i];
                old[i] = x[i];
            }
        }
    }
}

// No value that is not pinned leaves before/most .. before*most, and none falls below `floor`.
void limit(const GridGeometry& g, const LinearSystem& eq, const Field3& before, float most,
           float floor, Field3& phi) {
    const float least = 1.0F / most;
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            const auto sp = row(eq.sp, j, k);
            const auto old = row(before, j, k);
            const auto x = row(phi, j, k);
#pragma omp simd
            for (int i = 2; i <= g.nx; ++i) {
                const float low = least * old[i];
                const float high = most * old[i];
                const float held = x[i] < low ? low : (x[i] > high ? high : x[i]);
                const float value = static_cast<float>(sp[i]) == pin ? x[i] : held;
                x[i] = value < floor ? floor : value;
            }
        }
    }
}

float& residual_of(Transported which, FlowState& s) {
    switch (which) {
        case Transported::tke:
            return s.resid_k;
        case Transported::ted:
            return s.resid_e;
        default:
            return s.resid_klm;
    }
}

void solve(const SolverContext& c, AcceleratedWork& work, Transported which, bool residuals) {
    const GridGeometry& g = c.grid;
    LinearSystem& eq = c.flow.eq;
    Field3& phi = field_of(which, c.flow);
    transport_system(c, work, which);
    Field3& su = work.su_u;
    Field3& before = work.su_v;
    relax(g, eq, phi, work.set.turbulence, su, before);
    const LineUnknowns<1> unknown{{{su, phi}}};
    if (residuals) {
        residual_of(which, c.flow) = line_residuals<1>(eq, unknown)[0];
    }
    constexpr int sweeps = 2;
    line_sweeps<1>(eq, unknown, sweeps, work.lines);
    // The energies stay at TINY or above, as in the plain iteration; ted may be anything.
    constexpr float any = std::numeric_limits<float>::lowest();
    limit(g, eq, before, work.set.limit, which == Transported::ted ? any : TINY, phi);
}

}  // namespace

Field3& field_of(Transported which, FlowState& s) {
    switch (which) {
        case Transported::tke:
            return s.tke;
        case Transported::ted:
            return s.ted;
        default:
            return s.tkl;
    }
}

void transport_system(const SolverContext& c, const AcceleratedWork& work, Transported which) {
    switch (which) {
        case Transported::tke:
            tke_system(c);
            break;
        case Transported::ted:
            ted_system(c);
            break;
        case Transported::tkl:
            tkl_system(c);
    }
    if (work.tau != nullptr) {
        add_tau(c.grid, tau_of(which, *work.tau), c.flow.eq);
    }
}

void viscosity_step(const SolverContext& c, float urf) {
    const int model = c.settings.TURBULENCE_MODEL;
    if (model == 2) {
        CALCLM(c);
    }
    if (model == 4) {
        CALCLM_(c);
    }
    eddy_viscosity(c, urf, c.settings.URFVIS);
}

void turbulence_step(const SolverContext& c, AcceleratedWork& work, bool residuals) {
    for (const Transported which : {Transported::tke, Transported::ted, Transported::tkl}) {
        if (is_transported(which, c.settings.TURBULENCE_MODEL)) {
            solve(c, work, which, residuals);
        }
    }
    viscosity_step(c, work.set.viscosity);
}

}  // namespace torvex
