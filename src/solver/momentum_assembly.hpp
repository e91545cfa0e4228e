#pragma once

#include "solver/momentum_component.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

struct MomentumWork;

// The explicit sources of a component in su, 0 in sp, and for u the six neighbour coefficients.
template <Component A>
void assemble_momentum(const SolverContext& c, MomentumWork& work);

extern template void assemble_momentum<Component::u>(const SolverContext&, MomentumWork&);
extern template void assemble_momentum<Component::v>(const SolverContext&, MomentumWork&);
extern template void assemble_momentum<Component::w>(const SolverContext&, MomentumWork&);

}  // namespace torvex
