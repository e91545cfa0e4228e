// Drag of forests and buildings, wholly implicit and alike for u, v and w:
//
//   sp -= vol den gp_d sqrt(u^2 + v^2 + w^2)
//
// reads   vol, den, gp_d [1/m], u, v, w
// writes  sp in 2..nx, 2..ny, 2..nz, the ground cells included, from the first iteration on

#include "canopy/canopy_sources.hpp"

#include <cmath>

namespace torvex {

void canopy_momentum_source(const CanopyCells& c) {
    if (c.gp_d.size() == 0) {
        return;  // a mesh that was given without canopy data
    }
    const int nx = c.gp_d.ni() - 1;
    const int ny = c.gp_d.nj() - 1;
    const int nz = c.gp_d.nk() - 1;
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= nz; ++k) {
        for (int j = 2; j <= ny; ++j) {
#pragma omp simd
            for (int i = 2; i <= nx; ++i) {
                const float u = c.u(i, j, k);
                const float v = c.v(i, j, k);
                const float w = c.w(i, j, k);
                const float speed = std::sqrt(u * u + v * v + w * w);
                const float drag = c.den(i, j, k) * c.gp_d(i, j, k) * speed;
                c.sp(i, j, k) += static_cast<double>(-c.vol(i, j, k) * drag);
            }
        }
    }
}

}  // namespace torvex
