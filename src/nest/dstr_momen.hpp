#pragma once

#include "nest/parent.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Makes the velocity on the inflow plane i = 1 of the child carry what each face of the parent
// carries, over the child faces that it covers; nest_bc_distr tells how (see the source). The plane
// is a node plane of the parent. Stops 1 with the text on the console where a child face has no
// area.
void dstrMomen(const NestPass& pass, const Parent& parent, FlowState& s);

}  // namespace torvex
