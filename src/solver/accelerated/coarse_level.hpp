#pragma once

#include <memory>

#include "solver/accelerated/accelerated_work.hpp"
#include "solver/accelerated/coarsening.hpp"
#include "solver/flow_state.hpp"
#include "solver/solver_context.hpp"
#include "solver/solver_work.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

// The next coarser mesh of a direction, with what its iterations need.
struct CoarseLevel {
    Coarsening by;
    GridGeometry grid;
    FlowState flow;
    Walls walls;
    SolveControls controls;
    SolverWork solver;
    AcceleratedWork work;
    Tau tau;
    FlowState before;  // the kept fields at the beginning of a cycle
};

// Least cells of a level along i and j.
inline constexpr int least_coarse_cells = 4;

// Made from the mesh, roughness, canopy and fields of `fine`. Held boundary values are face means
// of the fine ones. Nothing where the mesh would be too small or a cell of it has no volume.
std::unique_ptr<CoarseLevel> make_coarse_level(const SolverContext& fine);

// The level as the equations take it, with the case of the fine mesh.
SolverContext context_of(const SolverContext& fine, CoarseLevel& level);

// The fields of the fine mesh on the coarse one. `inner`: the interior alone; else the boundary
// planes and the viscosity too.
void restrict_fields(const SolverContext& fine, CoarseLevel& level, bool inner);

}  // namespace torvex
