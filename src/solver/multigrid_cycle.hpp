#pragma once

#include <functional>
#include <vector>

#include "solver/multigrid_level.hpp"

namespace torvex {

// The meshes of the multigrid solver, the finest first, and the room of each thread.
struct MultigridMeshes {
    std::vector<MultigridLevel> level;
    std::vector<LineScratch> scratch;

    // All meshes below one of ni*nj*nk cells, and room for as many threads as there may be.
    void allocate(int ni, int nj, int nk);
};

// What is done with one slab j of the finest mesh.
using OfSlab = std::function<void(int j)>;

// Fills the coefficients and pivots of all meshes; load(j) writes ae, an, at of the finest.
void set_coefficients(MultigridMeshes& meshes, const OfSlab& load);

// One V cycle: z of the finest mesh from its r. finish(j) is called once for every slab, when z of
// the slabs j-1, j, j+1 has its last value.
void v_cycle(MultigridMeshes& meshes, const OfSlab& finish);

}  // namespace torvex
