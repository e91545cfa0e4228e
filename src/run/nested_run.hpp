#pragma once

#include "maps/terrain_map.hpp"
#include "run/run_state.hpp"

// What the sequence of a run does for a child: nothing here is called unless nest_mode is on.
namespace torvex {

// Behind the sizing: the sized lines become the child's, which is tested to lie inside its parent
// for all directions; then log and standard error hear for which directions the parent is no good.
void fit_nest(CaseSettings& settings, Run& run);

// Behind INIT of a direction: the parent's flow on the boundaries. Without a restart.info of the
// parent the run ends with status 0 and a message.
void carry_parent_flow(Run& run, const DirectionMaps& maps, Direction& direction);

// On a resume, whose boundaries come from the child's own files.
void tell_kept_boundary(Run& run, const Direction& direction);

}  // namespace torvex
