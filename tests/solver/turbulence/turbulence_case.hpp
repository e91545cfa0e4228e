#pragma once

#include "base/case_settings.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/solver_context.hpp"
#include "solver/solver_work.hpp"

namespace torvex::test {

// A mesh, a flow and settings on which the turbulence routines run without a case.
class TurbulenceCase {
 public:
    // All fields at 0 but den at 1 and z0 at 0.03; all constants at their
    // defaults; one sweep of each equation without under-relaxation.
    TurbulenceCase(GridGeometry mesh, int model);

    // What the routines see of it all, walls and controls as they follow from it now.
    SolverContext context(int skip_sides = 0) {
        walls_ = wall_cells(settings, grid, flow.z0);
        controls_ = solve_controls(settings);
        return {.settings = settings,
                .controls = controls_,
                .grid = grid,
                .walls = walls_,
                .flow = flow,
                .work = work,
                .skip_sides = skip_sides};
    }

    CaseSettings settings;
    GridGeometry grid;
    FlowState flow;
    SolverWork work;

 private:
    Walls walls_;
    SolveControls controls_;
};

// Every field random: velocities of both signs, fluxes of both signs, positive energies, a density
// that varies, roughness far below the first cell centre, drag everywhere.
void make_random(TurbulenceCase& c, unsigned seed);

// A mesh of unequal counts with shaken nodes, and cells about 3 m wide and 2 m high.
GridGeometry shaken_block();

}  // namespace torvex::test
