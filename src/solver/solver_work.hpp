#pragma once

#include "solver/momentum_work.hpp"

namespace torvex {

// Scratch of the linear solvers and the assembly, allocated once per direction and reused.
struct SolverWork {
    MomentumWork momentum;
};

}  // namespace torvex
