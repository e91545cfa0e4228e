#pragma once

#include <array>
#include <filesystem>

#include "timed_equations.hpp"

namespace torvex::bench {

// Compulsory traffic of each routine over a solve, bytes per cell: every array that a pass over the
// mesh must read or write counts once a pass, the sweeps and cycles as the convergence log tells
// them, for the k-epsilon models (1 and 3). `behind` is the number of first iterations to leave
// out.
//
// A pass: assembly 13 arrays of geometry, 9 of flow, su and sp in double, and what it writes;
// sweep_phi ae..ab, ap, su, phi twice, res; one residual sum of an equation; SIP the matrix, rhs,
// seven factors, phi and w twice; the rest of a cycle of RCM the image, the products, the
// combination and the residual. The matrix of the pressure correction is symmetric: ae, an, at, ap
// say all of it.
std::array<double, routines> compulsory_bytes(const std::filesystem::path& convergence_log,
                                              int behind);

}  // namespace torvex::bench
