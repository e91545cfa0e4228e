#pragma once

#include "run/run_state.hpp"

namespace torvex {

// A direction on the mesh, roughness and inflow of the user's files, in place of maps, MAKE_MESH,
// the roughness routines and INIT. Afterwards the direction stands as it does after INIT.
void READ_MESH_ETC(Run& run, Direction& direction);

// The two parts of it that a resume needs, since the saved state holds neither: the mesh counts
// before it is read, the canopy behind it.
void read_user_counts(Run& run);
void read_user_canopy(Run& run, Direction& direction);

}  // namespace torvex
