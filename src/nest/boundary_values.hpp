#pragma once

#include "nest/parent.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// Sets u, v, w, p, tke, ted, vis (and lm, tkl, viskl where the parent has them) of the planes i =
// 1, ni, j = 1, nj at all levels from the parent, and pp to 0 there. The other cells stay.
void set_boundary_values(const NestPass& pass, const Parent& parent, FlowState& s);

}  // namespace torvex
