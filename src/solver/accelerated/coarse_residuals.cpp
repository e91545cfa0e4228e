#include "solver/accelerated/coarse_residuals.hpp"

#include "solver/accelerated/transfers.hpp"
#include "solver/constants.hpp"

namespace torvex {

namespace {

constexpr float pin = -static_cast<float>(BIG);

// sum of a (phi_nb - phi), the coefficients' centre taken out term by term.
[[gnu::always_inline]] inline float exchange(const LinearSystem& eq, const Field3& phi, int i,
                                             int j, int k) {
    const float own = phi(i, j, k);
    return eq.ae(i, j, k) * (phi(i + 1, j, k) - own) + eq.aw(i, j, k) * (phi(i - 1, j, k) - own) +
           eq.an(i, j, k) * (phi(i, j + 1, k) - own) + eq.as(i, j, k) * (phi(i, j - 1, k) - own) +
           eq.at(i, j, k) * (phi(i, j, k + 1) - own) + eq.ab(i, j, k) * (phi(i, j, k - 1) - own);
}

// Residual of a momentum equation; drag in sp where there is a canopy.
struct MomentumResidual {
    const LinearSystem& eq;
    const Field3& phi;
    const Field3& su;
    float drag;  // 1 with a canopy, else 0

    [[gnu::always_inline]] float operator()(int i, int j, int k) const {
        return exchange(eq, phi, i, j, k) + su(i, j, k) +
               drag * static_cast<float>(eq.sp(i, j, k)) * phi(i, j, k);
    }
};

struct TransportResidual {
    const LinearSystem& eq;
    const Field3& phi;

    [[gnu::always_inline]] float operator()(int i, int j, int k) const {
        const auto sp = static_cast<float>(eq.sp(i, j, k));
        const float r =
            exchange(eq, phi, i, j, k) + static_cast<float>(eq.su(i, j, k)) + sp * phi(i, j, k);
        return sp == pin ? 0.0F : r;
    }
};

struct Component3 {
    const Field3& phi;
    const Field3& su;
    Field3& tau;
};
std::array<Component3, 3> components(const FlowState& s, const AcceleratedWork& work, Tau& tau) {
    return {{{s.u, work.su_u, tau.u}, {s.v, work.su_v, tau.v}, {s.w, work.su_w, tau.w}}};
}

// sp is drag only where a canopy acts; without one it holds what another equation left.
float drag_factor(const SolverContext& c) {
    return c.settings.canopy_on() ? 1.0F : 0.0F;
}

CellRange interior(const GridGeometry& g) {
    return {2, 2, 2, g.nx, g.ny, g.nz};
}

template <class Residual>
void sum_residuals(const CoarseLevel& level, const Residual& residual, Field3& tau) {
    restrict_cells(level.by, interior(level.grid), residual,
                   [&](int I, int J, int k, float sum, int /*cells*/) { tau(I, J, k) = sum; });
}

}  // namespace

void sum_momentum_residuals(const SolverContext& fine, const AcceleratedWork& work,
                            CoarseLevel& level) {
    for (const auto& [phi, su, tau] : components(fine.flow, work, level.tau)) {
        sum_residuals(level, MomentumResidual{fine.flow.eq, phi, su, drag_factor(fine)}, tau);
    }
}

void sum_transport_residuals(const SolverContext& fine, Transported which, CoarseLevel& level) {
    sum_residuals(level, TransportResidual{fine.flow.eq, field_of(which, fine.flow)},
                  tau_of(which, level.tau));
}

void take_momentum_residuals(const SolverContext& coarse, CoarseLevel& level) {
    const GridGeometry& g = coarse.grid;
    for (const auto& [phi, su, tau] : components(coarse.flow, level.work, level.tau)) {
        const MomentumResidual residual{coarse.flow.eq, phi, su, drag_factor(coarse)};
        Field3& out = tau;
#pragma omp parallel for schedule(static)
        for (int k = 2; k <= g.nz; ++k) {
            for (int j = 2; j <= g.ny; ++j) {
#pragma omp simd
                for (int i = 2; i <= g.nx; ++i) {
                    out(i, j, k) -= residual(i, j, k);
                }
            }
        }
    }
}

void take_transport_residuals(const SolverContext& coarse, Transported which, CoarseLevel& level) {
    const GridGeometry& g = coarse.grid;
    const LinearSystem& eq = coarse.flow.eq;
    const Field3& phi = field_of(which, coarse.flow);
    const TransportResidual residual{eq, phi};
    Field3& tau = tau_of(which, level.tau);
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
#pragma omp simd
            for (int i = 2; i <= g.nx; ++i) {
                const float taken = tau(i, j, k) - residual(i, j, k);
                const float factor = phi(i, j, k) / static_cast<float>(eq.su(i, j, k) / BIG);
                const float held = taken < 0.0F ? taken / phi(i, j, k) : taken;
                tau(i, j, k) = static_cast<float>(eq.sp(i, j, k)) == pin ? factor : held;
            }
        }
    }
}

}  // namespace torvex
