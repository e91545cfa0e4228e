#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"
#include "solver/rcm_work.hpp"

namespace torvex {

// nsweep sweeps of Stone's strongly implicit procedure for the correction phi of the system with
// the right side work.rhs, from phi = 0. Cycle 1 builds the factors; later cycles with the same
// system, range and alpha use them again.
void SIP(const CellRange& cells, Field3& phi, int nsweep, float alpha, int cycle, RcmWork& work,
         const LinearSystem& eq);

}  // namespace torvex
