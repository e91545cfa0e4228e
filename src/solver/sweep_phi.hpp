#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

// One Gauss-Seidel sweep over the cells of `cells`, in place; eq.res takes the residuals of the
// sweep. relax multiplies the change of every cell.
void sweep_phi(const CellRange& cells, LinearSystem& eq, Field3& phi, float relax);

}  // namespace torvex
