// Canopy sources of the turbulence equations.
//
//   tke   su += beta_p den gp_d V^3 vol                sp -= den gp_k gp_d V vol
//   ted   su += cpe1 beta_p den gp_d V^3 ted/tke vol   sp -= den gp_e gp_d V vol
//
// both times canopy_source_factor, 0 until the iteration start_cal_src and 1 from then on. V is the
// wind speed, gp_d the drag density, gp_k and gp_e the dissipation factors. The cells on the ground
// take none of this: their balance is that of the wall. The quotient ted/tke has no guard, tke is
// clipped at TINY.
//
// reads   u, v, w, tke, ted, den, vol, gp_d, gp_k, gp_e
// writes  su, sp in 2..nx, 2..ny, 3..nz

#include "canopy/canopy_sources_turbulence.hpp"

#include <cmath>

namespace torvex {

namespace {

// The run goes on without drag where no canopy was read, and without these sources until they
// start.
bool acts(const CanopyCells& c, float factor) {
    return factor != 0.0F && c.gp_d.size() > 0;
}

[[gnu::always_inline]] inline float speed(const CanopyCells& c, int i, int j, int k) {
    const float u = c.u(i, j, k);
    const float v = c.v(i, j, k);
    const float w = c.w(i, j, k);
    return std::sqrt(u * u + v * v + w * w);
}

// What breaks up in the wakes of leaves and walls, per unit of the variable.
[[gnu::always_inline]] inline float sink(const CanopyCells& c, const Field3& dissipation, float V,
                                         int i, int j, int k) {
    return c.den(i, j, k) * dissipation(i, j, k) * c.gp_d(i, j, k) * V * c.vol(i, j, k);
}

template <class CellSources>
void for_cells_above_ground(const CanopyCells& c, CellSources sources) {
    const int nx = c.gp_d.ni() - 1;
    const int ny = c.gp_d.nj() - 1;
    const int nz = c.gp_d.nk() - 1;
#pragma omp parallel for schedule(static)
    for (int k = 3; k <= nz; ++k) {
        for (int j = 2; j <= ny; ++j) {
#pragma omp simd
            for (int i = 2; i <= nx; ++i) {
                sources(i, j, k);
            }
        }
    }
}

}  // namespace

void canopy_sources_tke(const CanopyCells& c, const CanopyParameters& parameters, float factor) {
    if (!acts(c, factor)) {
        return;
    }
    const float beta_p = parameters.beta_p;
    for_cells_above_ground(c, [=](int i, int j, int k) {
        const float V = speed(c, i, j, k);
        const float source =
            beta_p * c.den(i, j, k) * c.gp_d(i, j, k) * (V * V * V) * c.vol(i, j, k) * factor;
        c.su(i, j, k) += static_cast<double>(source);
        c.sp(i, j, k) -= static_cast<double>(sink(c, c.gp_k, V, i, j, k) * factor);
    });
}

void canopy_sources_ted(const CanopyCells& c, const CanopyParameters& parameters, float factor) {
    if (!acts(c, factor)) {
        return;
    }
    const float production = parameters.cpe1 * parameters.beta_p;
    for_cells_above_ground(c, [=](int i, int j, int k) {
        const float V = speed(c, i, j, k);
        const float source = production * c.den(i, j, k) * c.gp_d(i, j, k) * (V * V * V) *
                             c.ted(i, j, k) / c.tke(i, j, k) * c.vol(i, j, k) * factor;
        c.su(i, j, k) += static_cast<double>(source);
        c.sp(i, j, k) -= static_cast<double>(sink(c, c.gp_e, V, i, j, k) * factor);
    });
}

}  // namespace torvex
