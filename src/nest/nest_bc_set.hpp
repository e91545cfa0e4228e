#pragma once

#include <string>

#include "nest/parent.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Carries the flow of a finished parent onto the boundaries of a child whose start fields stand,
// and writes vpkeinp.tuf under the child's stem, unless that is blank. The boundary routines then hold these values.
// `parent_stem` heads the names of the parent's files. Stops: 183, 184; 1 for a face without area.
void nest_bc_set(const NestPass& pass, const std::string& parent_stem,
                 const std::string& child_stem, FlowState& s);

}  // namespace torvex
