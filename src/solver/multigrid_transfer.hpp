#pragma once

#include "solver/multigrid_level.hpp"

namespace torvex {

// The next mesh of a level: pairs of columns along i and along j, the last one alone where their
// number is odd; all of k.
MultigridLevel coarser(const MultigridLevel& fine);

// The coefficients of the faces of coarse slab (j+1)/2 from slabs j-1, j, j+1; for the last slab j
// of each pair.
void coarsen_faces(const MultigridLevel& fine, int j, MultigridLevel& coarse);

// The residual of slab j, whose lines of colour 1 have been solved last and those of colour 0 just
// before, from z = 0: assigned to slab (j+1)/2 of coarse.r for the first slab of a pair, added for
// the second.
void restrict_residual(const MultigridLevel& fine, int j, MultigridLevel& coarse);

// Adds the solution of the coarse mesh to slab j of fine.z.
void prolong(const MultigridLevel& coarse, int j, MultigridLevel& fine, LineScratch& scratch);

}  // namespace torvex
