#pragma once

#include "base/field.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

struct MomentumWork;

// The explicit sources of u, v and w in the interior, [N], from one state of the flow, and the six
// neighbour coefficients of all three in the equation in hand, whose su and sp are not looked at.
void assemble_flow(const SolverContext& c, MomentumWork& work, Field3& su_u, Field3& su_v,
                   Field3& su_w);

}  // namespace torvex
