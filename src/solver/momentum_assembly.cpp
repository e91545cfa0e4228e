// Assembly of a momentum equation, phi = u, v or w (component a of the velocity):
//
//   su = (a) cross diffusion        sum over faces  vis/vol 0.5 (L.M) D_M phi,  M other than L
//      + (b) transposed stress      sum over faces  vis/vol M_a (L.D_M u),      all M
//      + (c) pressure gradient      the face values of p times the cell's own metric
//      - (d) deferred convection    RATIO/4 times the higher-order part of the face fluxes
//   sp = 0
//   ae..ab (u only) = upwind mass flux + central diffusion vis |L|^2/vol
//
// with D_M the difference along M over the face, from corner values where M lies in the face. On
// log faces vis is that of the log law, elsewhere interpolated.
//
// reads   vol, xix..zez, fx..fz; u, v, w, p, vis, den, flxU..flxW
// writes  su, sp, and ae..ab for u, in 2..nx, 2..ny, 2..nz
// plain   tests/solver/reference/plain_momentum: neighbour_coefficients, sources
// all at once, from one state: flow_assembly
//
// Every corner and every face is formed once. A thread walks upward through its planes and keeps
// what the next plane and the next row need: the corners of the plane below and the fluxes through
// bottom and south faces. Where its part begins it forms those of the plane below anew, so that
// the bits do not depend on the number of threads. All in single precision, su stored in double.

#include "solver/momentum_assembly.hpp"

#include <cstddef>

#include "solver/momentum_walk.hpp"
#include "solver/momentum_work.hpp"
#include "solver/plane_walk.hpp"

namespace torvex {

template <Component A>
void assemble_momentum(const SolverContext& c, MomentumWork& work) {
    fit(work, c.grid);
    LinearSystem& eq = c.flow.eq;
    walk_planes(c.grid, [&](std::size_t thread) {
        return MomentumWalk<double, A>(c, work.threads[thread], {&eq.su}, &eq.sp);
    });
}

template void assemble_momentum<Component::u>(const SolverContext&, MomentumWork&);
template void assemble_momentum<Component::v>(const SolverContext&, MomentumWork&);
template void assemble_momentum<Component::w>(const SolverContext&, MomentumWork&);

}  // namespace torvex
