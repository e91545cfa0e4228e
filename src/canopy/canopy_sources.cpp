// Drag of forests and buildings, wholly implicit and alike for u, v and w:
//
//   sp -= vol den gp_d sqrt(u^2 + v^2 + w^2)
//
// reads   vol, den, gp_d [1/m], u, v, w
// writes  sp in 2..nx, 2..ny, 2..nz, the ground cells included, from the first iteration on

#include "canopy/canopy_sources.hpp"

#include <cmath>

namespace torvex {

void canopy_momentum_source(const SolverContext& c) {
    const GridGeometry& g = c.grid;
    FlowState& s = c.flow;
    if (s.gp_d.size() == 0) {
        return;  // a mesh that was given without canopy data
    }
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
#pragma omp simd
            for (int i = 2; i <= g.nx; ++i) {
                const float u = s.u(i, j, k);
                const float v = s.v(i, j, k);
                const float w = s.w(i, j, k);
                const float speed = std::sqrt(u * u + v * v + w * w);
                const float drag = s.den(i, j, k) * s.gp_d(i, j, k) * speed;
                s.eq.sp(i, j, k) += static_cast<double>(-g.vol(i, j, k) * drag);
            }
        }
    }
}

}  // namespace torvex
