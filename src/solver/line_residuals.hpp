#pragma once

#include <array>
#include <cstddef>

#include "solver/line_sweeps.hpp"

namespace torvex {

// The sum of |r| over the cells of line_sweeps, for each of N unknowns with the one matrix; cells
// that are pinned, with ap beyond BIG/2, are left out. N is 1 or 3.
template <std::size_t N>
std::array<float, N> line_residuals(const LinearSystem& eq, const LineUnknowns<N>& unknowns);

extern template std::array<float, 1> line_residuals<1>(const LinearSystem&, const LineUnknowns<1>&);
extern template std::array<float, 3> line_residuals<3>(const LinearSystem&, const LineUnknowns<3>&);

}  // namespace torvex
