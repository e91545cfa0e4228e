// The cycle that moves the separated lee, which is slow on a fine mesh, on a coarse one. With r the
// residuals of the fine equations at the present state, R the restriction of fields and S sums over
// the fine cells and faces, the coarse mesh solves
//
//   A(phi) = S r - r_c,    r_c = the coarse residual at R phi
//
// by a few ordinary iterations; tau = S r - r_c stands in its right sides, S F - F_c in its fluxes,
// a factor on the pin where ted is pinned. Where the fine state solves its equations (r = 0) the
// coarse one does not move: the cycle has the fixed point of the plain iteration. The change of the
// coarse fields, times `gain`, goes to the fine ones: u, v, w, p by addition, the energies, ted and
// vis by factors, the fluxes in shares that keep the balance of each cell. Coarser meshes help in
// the same way.
//
// Values on the boundary that a boundary routine rewrites take the change of the cell beside them;
// those that it holds, the inflow, ted, vis, v and w at an open top, v on the sides, in a nested
// run all of the sides and the outflow, stay as they are, to the bit. So do the rows where two
// planes of the boundary meet: what a cycle does must follow from the fine fields alone.
//
// ref  Brandt (1977); Lien and Leschziner (1994) for turbulence on coarse meshes

#include "solver/accelerated/coarse_cycle.hpp"

#include <array>
#include <cmath>

#include "solver/accelerated/accelerated_iteration.hpp"
#include "solver/accelerated/coarse_level.hpp"
#include "solver/accelerated/coarse_residuals.hpp"
#include "solver/accelerated/copy_field.hpp"
#include "solver/accelerated/flux_transfers.hpp"
#include "solver/accelerated/momentum_step.hpp"
#include "solver/accelerated/pressure_step.hpp"
#include "solver/accelerated/transfers.hpp"
#include "solver/accelerated/turbulence_step.hpp"
#include "solver/pressure_boundary.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"

namespace torvex {

namespace {

constexpr std::array cycled_fields{&FlowState::u,    &FlowState::v,    &FlowState::w,
                                   &FlowState::p,    &FlowState::tke,  &FlowState::ted,
                                   &FlowState::vis,  &FlowState::flxU, &FlowState::flxV,
                                   &FlowState::flxW, &FlowState::tkl,  &FlowState::viskl};

void keep_fields(CoarseLevel& level) {
    for (const auto field : cycled_fields) {
        copy_field(level.flow.*field, level.before.*field);
    }
}

constexpr std::array energies{Transported::tke, Transported::ted, Transported::tkl};

// S r of every equation.
void sum_fine_residuals(const SolverContext& fine, AcceleratedWork& work, CoarseLevel& level) {
    momentum_systems(fine, work);
    sum_momentum_residuals(fine, work, level);
    for (const Transported which : energies) {
        if (is_transported(which, fine.settings.TURBULENCE_MODEL)) {
            transport_system(fine, work, which);
            sum_transport_residuals(fine, which, level);
        }
    }
}

// tau = S r - r_c. The first of two passes makes the boundary values.
void evaluate_coarse_state(const SolverContext& coarse, CoarseLevel& level) {
    AcceleratedWork& work = level.work;
    work.tau = nullptr;
    for (const bool second : {false, true}) {
        bc_p(coarse.grid, coarse.flow.p);
        viscosity_step(coarse, 1.0F);
        momentum_systems(coarse, work);
        if (second) {
            take_momentum_residuals(coarse, level);
            momentum_centres(coarse, work);
        }
        for (const Transported which : energies) {
            if (is_transported(which, coarse.settings.TURBULENCE_MODEL)) {
                transport_system(coarse, work, which);
                if (second) {
                    take_transport_residuals(coarse, which, level);
                }
            }
        }
    }
}

// S F - F_c; the coarse fluxes are S F again behind it.
void take_fluxes(const SolverContext& coarse, CoarseLevel& level) {
    FlowState& s = level.flow;
    mass_fluxes(coarse, level.work);
    const auto take = [](const Field3& sum, Field3& flux, Field3& tau) {
        const auto size = static_cast<std::ptrdiff_t>(sum.size());
#pragma omp parallel for simd schedule(static)
        for (std::ptrdiff_t n = 0; n < size; ++n) {
            tau.data()[n] = sum.data()[n] - flux.data()[n];
            flux.data()[n] = sum.data()[n];
        }
    };
    take(level.before.flxU, s.flxU, level.tau.flxU);
    take(level.before.flxV, s.flxV, level.tau.flxV);
    take(level.before.flxW, s.flxW, level.tau.flxW);
}

// exp(x) within |x| <= 0.7 to single precision, in a form that is vectorised.
[[gnu::always_inline]] inline float exponential(float x) {
    float sum = 1.0F / 40320.0F;
    sum = sum * x + 1.0F / 5040.0F;
    sum = sum * x + 1.0F / 720.0F;
    sum = sum * x + 1.0F / 120.0F;
    sum = sum * x + 1.0F / 24.0F;
    sum = sum * x + 1.0F / 6.0F;
    sum = sum * x + 0.5F;
    sum = sum * x + 1.0F;
    return sum * x + 1.0F;
}

// Which cells beside the interior a field takes its change in.
struct Beside {
    bool sides = false, ground = false, top = false;
};

// Carries the change of the coarse fields since keep_fields into the fine ones.
class Carrying {
 public:
    Carrying(const SolverContext& fine, const CoarseLevel& level, float gain)
        : fine_(fine), level_(level), gain_(gain) {}

    void add(Field3 FlowState::*field, const Beside& beside) const {
        const Field3& now = level_.flow.*field;
        const Field3& was = level_.before.*field;
        Field3& to = fine_.flow.*field;
        carry(
            beside, [&](int I, int J, int k) { return now(I, J, k) - was(I, J, k); },
            [&, gain = gain_](int i, int j, int k, float change) { to(i, j, k) += gain * change; });
    }

    void scale(Field3 FlowState::*field, const Beside& beside) const {
        const Field3& now = level_.flow.*field;
        const Field3& was = level_.before.*field;
        Field3& to = fine_.flow.*field;
        constexpr float most = 0.7F;
        carry(
            beside,
            [&](int I, int J, int k) {
                // A change of sign, of ted alone, has no logarithm and is not carried.
                const float quotient = now(I, J, k) / was(I, J, k);
                return quotient > 0.0F ? std::log(quotient) : 0.0F;
            },
            [&, gain = gain_](int i, int j, int k, float change) {
                const float x = gain * change;
                to(i, j, k) *= exponential(x > most ? most : (x < -most ? -most : x));
            });
    }

 private:
    // The interior with the outflow, then each plane beside it. The rows where two planes meet are
    // left as they are: the boundary routines make them or hold them.
    template <class From, class Take>
    void carry(const Beside& beside, const From& from, const Take& take) const {
        const GridGeometry& g = fine_.grid;
        const bool open = fine_.skip_sides == 0;
        const auto to = [&](const CellRange& cells) {
            prolong(level_.by, cells, g.nz, from, take);
        };
        to({2, 2, 2, open ? g.ni : g.nx, g.ny, g.nz});
        if (beside.sides && open) {
            to({2, 1, 2, g.nx, 1, g.nz});
            to({2, g.nj, 2, g.nx, g.nj, g.nz});
        }
        if (beside.ground) {
            to({2, 2, 1, g.nx, g.ny, 1});
        }
        if (beside.top) {
            to({2, 2, g.nk, g.nx, g.ny, g.nk});
        }
    }

    const SolverContext& fine_;
    const CoarseLevel& level_;
    float gain_;
};

void carry_change(const SolverContext& fine, const CoarseLevel& level, float gain) {
    const CaseSettings& q = fine.settings;
    const bool open_sides = !q.walls_on_sides();
    const bool open_top = !q.wall_on_top();
    const Carrying carry(fine, level, gain);
    carry.add(&FlowState::u, {.sides = open_sides, .top = open_top});
    carry.add(&FlowState::v, {});
    carry.add(&FlowState::w, {.sides = open_sides});
    carry.add(&FlowState::p, {});
    carry.scale(&FlowState::tke, {.sides = true, .ground = true, .top = true});
    if (q.TURBULENCE_MODEL != 2) {
        carry.scale(&FlowState::ted, {.sides = true, .ground = true, .top = !open_top});
    }
    carry.scale(&FlowState::vis, {});
    if (q.TURBULENCE_MODEL == 4) {
        carry.scale(&FlowState::tkl, {.sides = true, .ground = true, .top = true});
        carry.scale(&FlowState::viskl, {});
    }
    prolong_fluxes(level.by, level.grid, level.flow, level.before, gain, fine.flow);
    bc_p(fine.grid, fine.flow.p);
    bc_vis(fine);
}

}  // namespace

void coarse_start(const SolverContext& fine, AcceleratedWork& work, const Cycling& cycling) {
    CoarseLevel& level = *work.coarser;
    const SolverContext coarse = context_of(fine, level);
    restrict_fields(fine, level, true);
    keep_fields(level);
    level.work.tau = nullptr;
    for (int n = 0; n < cycling.start_iterations; ++n) {
        accelerated_iteration(coarse, level.work, cycling,
                              n == 0 ? Coarse::start : coarse_at(cycling, n));
    }
    carry_change(fine, level, 1.0F);
}

void coarse_cycle(const SolverContext& fine, AcceleratedWork& work, const Cycling& cycling) {
    CoarseLevel& level = *work.coarser;
    const SolverContext coarse = context_of(fine, level);
    sum_fine_residuals(fine, work, level);
    restrict_fields(fine, level, true);
    evaluate_coarse_state(coarse, level);
    keep_fields(level);
    take_fluxes(coarse, level);
    level.work.tau = &level.tau;
    for (int n = 0; n < cycling.coarse_iterations; ++n) {
        accelerated_iteration(coarse, level.work, cycling, coarse_at(cycling, n));
    }
    carry_change(fine, level, cycling.gain);
}

}  // namespace torvex
