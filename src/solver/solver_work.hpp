#pragma once

namespace torvex {

// Scratch of the linear solvers, allocated once per direction and reused.
struct SolverWork {};

}  // namespace torvex
