// OUTER_ITERATION: so far it prepares the metric of the mesh; the loop over the equations follows.

#include "run/outer_iteration.hpp"

#include "mesh/grid.hpp"

namespace torvex {

void OUTER_ITERATION(Run& /*run*/, Direction& direction) {
    // A user-defined domain brings no mesh yet.
    if (direction.grid.nx > 0) {
        GRID(direction.grid);
    }
}

}  // namespace torvex
