// Sweeps with the stop test of the momentum and turbulence equations:
//
//   r1 = sum |r| with the phi of the sweep,   a = r1/r0,   done when 0.1 > a
//
// Nobody sees r1 but behind the last sweep. Between the others it is summed only as far as it takes
// to know that the test fails, mostly one row, since r0 is mostly that of an earlier iteration and
// far too small.

#include "solver/sweep_until.hpp"

#include <optional>

#include "solver/residual_sum.hpp"

namespace torvex {

SolveRecord sweep_until(const Sweep& sweep, const CellRange& cells, LinearSystem& eq, Field3& phi,
                        float relax, int sweeps, float r0) {
    constexpr float stop_ratio = 0.1F;
    SolveRecord result{.r0 = r0};
    for (; result.n <= sweeps; ++result.n) {
        sweep(cells, eq, phi, relax);
        if (result.n < sweeps) {
            if (const auto r1 = residual_sum_below(cells, eq, phi, stop_ratio, r0)) {
                result.r1 = *r1;
                result.a = *r1 / r0;
                return result;
            }
        } else {
            result.r1 = residual_sum(cells, eq, phi, Pinned::skip);
            result.a = result.r1 / r0;  // not a number or infinite for r0 = 0
            if (stop_ratio > result.a) {
                return result;
            }
        }
    }
    return result;
}

}  // namespace torvex
