#pragma once

#include <cmath>

#include "solver/constants.hpp"
#include "solver/turbulence/boundary_steps.hpp"

namespace torvex {

// Wall formula of an energy, tke or tkl. In the cell beside a wall shear stress and dissipation
// follow from the log law and its equilibrium, tau = c_mu^(1/4) sqrt(k) KAPPA Vt/L1 den, averaged
// over the height 2 d of the cell:
//
//   production   |tau Vt| L2/(2 d L1) vol
//   sink         c_mu^(3/4) den sqrt(k) L2/(KAPPA 2 d) vol k
//
// with Vt the speed along the wall.
// ref  Launder and Spalding (1974)
class EnergyWall {
 public:
    EnergyWall(const SolverContext& ctx, Field3& energy, float c_mu, Sources target)
        : ctx_(ctx),
          energy_(energy),
          target_(target),
          cmu4_(std::sqrt(std::sqrt(c_mu))),
          cmu34_(std::pow(c_mu, 0.75F)) {}

    template <Wall wall>
    void apply(int a, int b) const {
        FlowState& s = ctx_.flow;
        const auto [i, j, k, ig, jg, kg] = wall_place<wall>(ctx_.grid, a, b);
        const WallCell& c = cell_at<wall>(ctx_.walls, a, b);
        const float u = s.u(i, j, k);
        const float v = s.v(i, j, k);
        const float w = s.w(i, j, k);
        const float normal = u * c.n_x + v * c.n_y + w * c.n_z;
        const float along2 = u * u + v * v + w * w - normal * normal;
        // Rounding may leave a flow straight at the wall below zero.
        const float Vt = std::sqrt(along2 < 0.0F ? 0.0F : along2);
        const float den = s.den(i, j, k);
        const float vol = ctx_.grid.vol(i, j, k);
        const float root = std::sqrt(std::abs(energy_(i, j, k)));
        const float work = std::abs(den * Vt * cmu4_ * root * KAPPA / c.L1 * Vt);
        const float production = work * vol / (2.0F * c.d * c.L1) * c.L2;
        const float sink = cmu34_ * den * root / KAPPA * c.L2 / (2.0F * c.d) * vol;
        towards_wall<wall>(s.eq, i, j, k) = 0.0F;
        target_.su(i, j, k) += static_cast<double>(production);
        target_.sp(i, j, k) = static_cast<double>(-sink);
        energy_(ig, jg, kg) = energy_(i, j, k);
    }

 private:
    const SolverContext& ctx_;
    Field3& energy_;
    Sources target_;
    float cmu4_;
    float cmu34_;
};

// What an energy equation changes beside walls before its boundary steps: the production by the
// resolved shear goes out again and the sink is cleared, for the wall formula takes their place.
void clear_wall_planes(const SolverContext& ctx, Sources target);

}  // namespace torvex
