// The equilibrium surface layer as inflow, start and upper boundary.
//
//   u    = (u*/KAPPA) ln(h/z0),     u* = KAPPA 10/ln(Zg/z0), so that u is 10 m/s at Zg
//   tke  = u*^2/sqrt(CMU)
//   ted  = u*^3/(KAPPA h)
//
// It goes on above Zg. With the eddy viscosity CMU tke^2/ted = KAPPA u* h the stress is u*^2 at all
// heights, production is dissipation, and the equation of ted holds for balanced_sigma_e, so that
// over ground of this roughness nothing changes downwind, given the same stress on top.
//
// ref     Richards and Hoxey (1993), with h in place of h + z0: the wall formulas count from the
//         wall, and the layer must meet them in the centre of the first cell; Richards and Norris
//         (2011) and Hargreaves and Wright (2007) on the stress that the top must carry

#include "solver/equilibrium_layer.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "solver/constants.hpp"
#include "solver/face_area.hpp"
#include "solver/init.hpp"
#include "solver/power_law.hpp"

namespace torvex {

EquilibriumLayer equilibrium_layer(float z0) {
    const float Zg = gradient_height(z0);
    if (!(z0 < Zg)) {
        stop(1,
             "the roughness length" + edit::E(z0, 12, 4) +
                 " m of the inflow is not below its gradient height" + edit::E(Zg, 12, 4) + " m",
             "key EQUILIBRIUM_INFLOW", "check the roughness that the case or its maps give");
    }
    return {z0, Zg, KAPPA * reference_speed / std::log(Zg / z0)};
}

float speed_at(const EquilibriumLayer& layer, float h) {
    return h > layer.z0 ? layer.u_star / KAPPA * std::log(h / layer.z0) : 0.0F;
}

float energy_of(const EquilibriumLayer& layer, float c_mu) {
    return layer.u_star * layer.u_star / std::sqrt(c_mu);
}

float dissipation_at(const EquilibriumLayer& layer, float h) {
    return layer.u_star * layer.u_star * layer.u_star / (KAPPA * std::max(h, layer.z0));
}

float shear_exponent_at(const EquilibriumLayer& layer, float h) {
    return 1.0F / std::log(h / layer.z0);
}

void fill_equilibrium_layer(const CaseSettings& settings, const GridGeometry& g, FlowState& s) {
    std::vector<EquilibriumLayer> layers;
    for (int j = 1; j <= g.nj; ++j) {
        layers.push_back(equilibrium_layer(s.z0(1, j)));
    }
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            const EquilibriumLayer& layer = layers[static_cast<std::size_t>(j - 1)];
            const float tke = energy_of(layer, settings.CMU);
            for (int i = 1; i <= g.ni; ++i) {
                const float h = height_above_ground(g, i, j, k);
                s.u(i, j, k) = speed_at(layer, h);
                s.tke(i, j, k) = tke;
                s.ted(i, j, k) = dissipation_at(layer, h);
            }
        }
    }
    copy_lowest_level(s.tke);
    copy_lowest_level(s.ted);
}

template <class Number>
void add_top_stress(const GridGeometry& g, const FlowState& s, Array3<Number>& su) {
    for (int j = 2; j <= g.ny; ++j) {
        const float u_star = equilibrium_layer(s.z0(1, j)).u_star;
        for (int i = 2; i <= g.nx; ++i) {
            const float stress = s.den(i, j, g.nz) * u_star * u_star;
            su(i, j, g.nz) += static_cast<Number>(stress * top_area(g, i, j, g.nz).z);
        }
    }
}

template void add_top_stress(const GridGeometry&, const FlowState&, Array3<float>&);
template void add_top_stress(const GridGeometry&, const FlowState&, Array3<double>&);

}  // namespace torvex
