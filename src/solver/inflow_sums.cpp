// The inflow sums of a direction:
//
//   flow_in     = sum over the inflow faces of den S . (u, v, w)     [kg/s]
//   momentum_in = sum over the inflow faces of den S . (u^2, 0, 0)   [N]
//
// reads   xn, yn, zn; den, u, v, w on i = 1, j = 2..ny, k = 2..nz
// writes  flow_in, outflow_mass (the same mass, which the outflow condition keeps), momentum_in
//
// The sums run in single precision, j outer and k inner.

#include "solver/inflow_sums.hpp"

#include "solver/face_area.hpp"

namespace torvex {

void inflow_sums(const GridGeometry& g, FlowState& s) {
    float mass = 0;
    float momentum = 0;
    for (int j = 2; j <= g.ny; ++j) {
        for (int k = 2; k <= g.nz; ++k) {
            const Vec3 S = east_area(g, 1, j, k);
            const float u = s.u(1, j, k);
            const float den = s.den(1, j, k);
            mass += den * dot(S, {u, s.v(1, j, k), s.w(1, j, k)});
            momentum += den * (S.x * (u * u));
        }
    }
    s.flow_in = mass;
    s.outflow_mass = mass;
    s.momentum_in = momentum;
}

}  // namespace torvex
