// The volume that flows in and out of a child through its boundary planes, which the iteration
// holds fixed. The pressure equation has a solution for balanced planes only: what is left over
// stays in resid_m and bends the whole flow.
//
//   Q = sum S.(u,v,w) over i = 1 and j = 1 less the same over ny and ni
//   u(ni,j,k) = u(ni,j,k) + Q/sum(S_x)
//
// over the faces 2..ny by 2..nz and 2..nx by 2..nz, S the area vectors of face_area.hpp; nothing
// passes ground and top. Sums in double precision, planes in this order, k outer.

#include "nest/nest_balance.hpp"

#include <algorithm>
#include <cmath>

#include "base/edit.hpp"
#include "base/text_file.hpp"
#include "solver/face_area.hpp"

namespace torvex {

namespace {

double through(const Vec3& S, const FlowState& s, int i, int j, int k) {
    return static_cast<double>(S.x) * static_cast<double>(s.u(i, j, k)) +
           static_cast<double>(S.y) * static_cast<double>(s.v(i, j, k)) +
           static_cast<double>(S.z) * static_cast<double>(s.w(i, j, k));
}

void warn_of_imbalance(const NestPass& pass, double ratio) {
    pass.warn("nest_bc_ofix is off and inflow and outflow differ by " +
                  std::string(trimmed(edit::E(ratio, 11, 4))) +
                  " of the inflow: resid-m stays at that ratio, and the wind is off by several "
                  "times as much.",
              "a child is not balanced");
}

}  // namespace

NestBalance nest_balance(const GridGeometry& g, const FlowState& s) {
    NestBalance b;
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            const Vec3 S = east_area(g, g.nx, j, k);
            b.inflow += through(east_area(g, 1, j, k), s, 1, j, k);
            b.outflow += through(S, s, g.ni, j, k);
            b.outflow_plane += static_cast<double>(S.x);
        }
        for (int i = 2; i <= g.nx; ++i) {
            b.outflow += through(north_area(g, i, g.ny, k), s, i, g.nj, k) -
                         through(north_area(g, i, 1, k), s, i, 1, k);
        }
    }
    return b;
}

void balance_boundaries(const NestPass& pass, FlowState& s) {
    const GridGeometry& g = pass.grid;
    const NestBalance b = nest_balance(g, s);
    const double Q = b.surplus();
    const bool corrected = pass.settings.nest.nest_bc_ofix;
    pass.tell("nest: inflow " + edit::E(b.inflow, 11, 4) + ", outflow " +
              edit::E(b.outflow, 11, 4) + ", correction " +
              edit::E(corrected ? Q / b.outflow_plane : 0.0, 11, 4));
    if (!corrected) {
        constexpr double no_flow = 1.0e-30;
        warn_of_imbalance(pass, std::fabs(Q) / std::max(std::fabs(b.inflow), no_flow));
        return;
    }
    const double increment = Q / b.outflow_plane;
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            float& u = s.u(g.ni, j, k);
            u = static_cast<float>(static_cast<double>(u) + increment);
        }
    }
}

}  // namespace torvex
