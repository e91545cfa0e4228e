// CALCP: the pressure step of the outer iteration, SIMPLE on collocated cells.
//
//   sum over the faces of den*(flx + coef*(pp_P - pp_N)) = 0
//
// with flx the face fluxes by momentum interpolation and coef their change per unit of pp. The
// pressure solver of the direction solves for pp; velocities and fluxes take the whole correction,
// p the part URFP of it. DOUBLE_CORRECTION repeats the solution for what the first one leaves out
// on non-orthogonal meshes.
//
// reads   the grid, u, v, w, p, den, dUxi..dWze; URFP, NSWPP, DOUBLE_CORRECTION
// writes  flxU, flxV, flxW, pp, p and its boundary values, u, v, w in 2..nx, 2..ny, 2..nz;
//         coefXi, coefEt, coefZe and eq as scratch; resid_m, the sum of the mass imbalances before
//         the correction [kg/s], at every call
// level   p(2,2,2) never moves
// ref     Patankar and Spalding (1972), Rhie and Chow (1983), Ferziger and Peric (2002)

#include "solver/calcp.hpp"

#include "solver/pressure_boundary.hpp"
#include "solver/pressure_correction.hpp"
#include "solver/pressure_equation.hpp"
#include "solver/pressure_faces.hpp"
#include "solver/second_corrector.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

namespace {

SolveRecord solve(const SolverContext& c) {
    const GridGeometry& g = c.grid;
    FlowState& s = c.flow;
    const CellRange interior{2, 2, 2, g.nx, g.ny, g.nz};
    const SolveRecord done = c.work.solvers.pressure(interior, s.eq, s.pp, c.controls.NSWPP);
    bc_pp(g, s.pp);
    return done;
}

void correct(const SolverContext& c) {
    correct_flow(c.grid, c.flow, c.controls.URFP);
    bc_p(c.grid, c.flow.p);
}

// The mass that the extra fluxes of the second corrector bring into each cell is a source of its
// own: formed from the whole fluxes it would hold the cells that correct_flow leaves uncorrected,
// and the solution would diverge.
SolveRecord correct_again(const SolverContext& c) {
    const GridGeometry& g = c.grid;
    FlowState& s = c.flow;
    non_orthogonal_fluxes(g, s);
    add_non_orthogonal_fluxes(g, s);
    mass_source(g, {s.coefXi, s.coefEt, s.coefZe}, s);
    face_coefficients(g, s);
    s.pp.fill(0.0F);  // the coefficients of the equation stand
    const SolveRecord done = solve(c);
    correct(c);
    return done;
}

}  // namespace

SolveRecords CALCP(const SolverContext& c, int /*iter*/, int /*interval*/) {
    const GridGeometry& g = c.grid;
    FlowState& s = c.flow;
    face_fluxes(g, s);
    boundary_fluxes(g, s);
    bc_flux(g, s);
    s.resid_m = mass_source(g, {s.flxU, s.flxV, s.flxW}, s);
    pressure_equation(g, s);
    SolveRecords records{solve(c)};
    correct(c);
    if (c.settings.DOUBLE_CORRECTION) {
        records.push_back(correct_again(c));
    }
    return records;
}

}  // namespace torvex
