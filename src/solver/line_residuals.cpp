// line_residuals: the residual sums of unknowns that share a matrix,
//
//   r = ae phi(i+1) + aw phi(i-1) + an phi(j+1) + as phi(j-1) + at phi(k+1) + ab phi(k-1)
//       + su - ap phi
//
// reads   ae..ap, the su, the phi in the interior and beside it
// plain   tests/solver/reference/plain_line_sweeps: plain_line_residual
//
// The six products are summed in single precision, su and the product ap phi join in double
// precision. |r| is summed in single precision, every eighth cell of the rows of a plane by itself,
// then these eight sums, then the planes: the same bits for any number of threads.

#include "solver/line_residuals.hpp"

#include "solver/constants.hpp"
#include "solver/lane_sum.hpp"
#include "solver/plane_sums.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

template <std::size_t N>
void add_row(const LinearSystem& eq, const LineUnknowns<N>& unknowns, int j, int k,
             std::array<LaneSum, N>& sums) {
    constexpr auto pinned = static_cast<float>(0.5 * BIG);
    const int cells = eq.ap.ni() - 2;
    const CoefficientRow c = coefficient_row(eq, 2, j, k);
    for (std::size_t n = 0; n < N; ++n) {
        const FieldRows x = field_rows(unknowns[n].phi, 2, j, k);
        const float* su = &unknowns[n].su(2, j, k);
        rising_cells(cells, [&]<class V>(V, int m) {
            const V ap = load<V>(c.ap + m);
            const V r = narrow<V>(widen(c.neighbours<V>(x, m)) + widen(load<V>(su + m)) -
                                  widen(ap * load<V>(x.c + m)));
            sums[n].add(ap > pinned ? V{} : magnitude(r), m);
        });
    }
}

}  // namespace

template <std::size_t N>
std::array<float, N> line_residuals(const LinearSystem& eq, const LineUnknowns<N>& unknowns) {
    const CellRange interior{2, 2, 2, eq.ap.ni() - 1, eq.ap.nj() - 1, eq.ap.nk() - 1};
    return plane_sums<N>(interior, [&](int k) {
        std::array<LaneSum, N> sums;
        for (int j = interior.j1; j <= interior.j2; ++j) {
            add_row<N>(eq, unknowns, j, k, sums);
        }
        return totals(sums);
    });
}

template std::array<float, 1> line_residuals<1>(const LinearSystem&, const LineUnknowns<1>&);
template std::array<float, 3> line_residuals<3>(const LinearSystem&, const LineUnknowns<3>&);

}  // namespace torvex
