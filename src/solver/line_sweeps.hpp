#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

// One of the unknowns that share a matrix: its right side and its values.
struct LineUnknown {
    const Field3& su;
    Field3& phi;  // changed in place
};
template <std::size_t N>
using LineUnknowns = std::array<LineUnknown, N>;

// What each thread keeps of the lines of a row: made at the first use and kept.
struct LineWork {
    std::vector<Field3> threads;
};

// `sweeps` Gauss-Seidel sweeps over the lines along k, in two colours of i + j, for N unknowns with
// the one matrix ae..ap of `eq`, whose su, sp and res are not looked at. The cells are all but
// those on the boundary planes of the arrays, which hold the values there. N is 1 or 3.
template <std::size_t N>
void line_sweeps(const LinearSystem& eq, const LineUnknowns<N>& unknowns, int sweeps,
                 LineWork& work);

extern template void line_sweeps<1>(const LinearSystem&, const LineUnknowns<1>&, int, LineWork&);
extern template void line_sweeps<3>(const LinearSystem&, const LineUnknowns<3>&, int, LineWork&);

}  // namespace torvex
