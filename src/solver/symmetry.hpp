#pragma once

#include "solver/linear_system.hpp"

namespace torvex {

// Whether the matrix is the same from both sides of every face of a range, its lower boundary
// faces included: aw = ae(i-1), as = an(j-1), ab = at(k-1).
bool is_symmetric(const CellRange& cells, const LinearSystem& eq);

}  // namespace torvex
