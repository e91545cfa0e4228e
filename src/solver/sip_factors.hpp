#pragma once

#include "solver/linear_system.hpp"
#include "solver/rcm_work.hpp"

namespace torvex {

// The factors of SIP in the rows j..j+rows-1 of plane k; those of the rows and planes before them
// are there already, and zero outside the range.
void sip_factor_rows(const CellRange& cells, int j, int rows, int k, float alpha, RcmWork& work,
                     const LinearSystem& eq);

}  // namespace torvex
