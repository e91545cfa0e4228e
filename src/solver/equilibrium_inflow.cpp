// Start fields and inflow in equilibrium with the roughness of each column: the constant-stress
// layer of Richards and Hoxey (1993), up to the gradient height Zg of the column.
//
//   u    = (u*/KAPPA) ln((h + z0)/z0)
//   tke  = u*^2 / sqrt(CMU)
//   ted  = u*^3 / (KAPPA (h + z0))
//   u*   = KAPPA 10 / ln((Zg + z0)/z0),   so that u is 10 m/s at Zg
//
// Above Zg all three keep their values there. Length, viscosity and ground layer are those of INIT.
//
// reads   zc, z0; CMU, DENSIT, VISCOS
// writes  u, tke, ted, vis in all cells; lm, tkl, viskl in models 2 and 4; the other fields are 0
// All in single precision.

#include "solver/equilibrium_inflow.hpp"

#include <algorithm>
#include <cmath>

#include "solver/constants.hpp"
#include "solver/init.hpp"
#include "solver/power_law.hpp"

namespace torvex {

namespace {

void fill_column(const CaseSettings& settings, const GridGeometry& g, FlowState& s, int i, int j) {
    const float z0 = s.z0(i, j);
    const float Zg = gradient_height(z0);
    const float u_star = friction_velocity(z0);
    for (int k = 2; k <= g.nk; ++k) {
        const float h = std::min(height_above_ground(g, i, j, k), Zg);
        s.u(i, j, k) = u_star / KAPPA * std::log((h + z0) / z0);
        s.tke(i, j, k) = u_star * u_star / std::sqrt(settings.CMU);
        s.ted(i, j, k) = u_star * u_star * u_star / (KAPPA * (h + z0));
    }
}

}  // namespace

float friction_velocity(float z0) {
    return KAPPA * reference_speed / std::log((gradient_height(z0) + z0) / z0);
}

void fill_equilibrium_inflow(const CaseSettings& settings, const GridGeometry& g, FlowState& s) {
    allocate_fields(s, g, settings.TURBULENCE_MODEL);
    fill_dissipation(settings, g, s);  // for lm; ted is replaced
#pragma omp parallel for schedule(static)
    for (int j = 1; j <= g.nj; ++j) {
        for (int i = 1; i <= g.ni; ++i) {
            fill_column(settings, g, s, i, j);
        }
    }
    copy_lowest_level(s.tke);
    copy_lowest_level(s.ted);
    fill_viscosity(settings, s);
}

}  // namespace torvex
