#pragma once

#include "solver/linear_solvers.hpp"
#include "solver/momentum_work.hpp"
#include "solver/turbulence/transport_scratch.hpp"

namespace torvex {

// What the equations of one direction solve with, and the scratch of the momentum and turbulence
// equations, which they make themselves.
struct SolverWork {
    LinearSolvers solvers = linear_solvers(CaseSettings{});
    MomentumWork momentum;
    TransportScratch transport;
};

}  // namespace torvex
