// Sources of the turbulence equations along a row of cells. Single precision but for the sums into
// su, where the production of a wall cell is taken out again later.
//
// plain   tests/solver/reference/plain_turbulence

#include "solver/turbulence/turbulence_sources.hpp"

#include <cmath>

#include "solver/constants.hpp"

namespace torvex {

void energy_source_row(const GridGeometry& g, FlowState& s, const Field3& energy, float c_mu,
                       float viscos, int j, int k, Row<const float> cross) {
    const auto vol = row(g.vol, j, k);
    const auto den = row(s.den, j, k);
    const auto vis = row(s.vis, j, k);
    const auto gen = row(s.gen, j, k);
    const auto e = row(energy, j, k);
    const auto su = row(s.eq.su, j, k);
    const auto sp = row(s.eq.sp, j, k);
    along_row(2, g.nx, [=](int i) {
        const float mut = vis[i] - viscos;
        const float production = vol[i] * (den[i] * gen[i]);
        const float sink = -(vol[i] * (c_mu * (den[i] * den[i]) * std::abs(e[i])) / (mut + TINY));
        su[i] = static_cast<double>(cross[i]) + static_cast<double>(production);
        sp[i] = static_cast<double>(sink);
    });
}

void dissipation_source_row(const GridGeometry& g, FlowState& s, const DissipationConstants& c,
                            float viscos, int j, int k, Row<const float> cross) {
    const auto vol = row(g.vol, j, k);
    const auto den = row(s.den, j, k);
    const auto vis = row(s.vis, j, k);
    const auto gen = row(s.gen, j, k);
    const auto tke = row(s.tke, j, k);
    const auto su = row(s.eq.su, j, k);
    const auto sp = row(s.eq.sp, j, k);
    along_row(2, g.nx, [=](int i) {
        const float mut = vis[i] - viscos;
        const float vol_den2 = vol[i] * (den[i] * den[i]);
        const float production = vol_den2 * c.production * gen[i] * tke[i] / (mut + TINY);
        const float sink = -(vol_den2 * c.sink * tke[i] / (mut + TINY));
        su[i] = static_cast<double>(cross[i]) + static_cast<double>(production);
        sp[i] = static_cast<double>(sink);
    });
}

}  // namespace torvex
