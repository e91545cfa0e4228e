#pragma once

#include <vector>

#include "solver/momentum_work.hpp"
#include "solver/rcm.hpp"
#include "solver/turbulence/transport_scratch.hpp"

namespace torvex {

// Scratch of the linear solvers and the assembly, allocated at its first use in a direction and
// kept.
struct SolverWork {
    MomentumWork momentum;
    TransportScratch transport;
    RcmWork rcm;
    std::vector<float> plane_sums;  // one sum a plane of k
};

}  // namespace torvex
