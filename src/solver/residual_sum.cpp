// Residual sums of an equation, the measure of its convergence:
//
//   r = ae phi(i+1) + aw phi(i-1) + an phi(j+1) + as phi(j-1) + at phi(k+1) + ab phi(k-1)
//       + su - ap phi
//
// The six products are summed in single precision, su and the product ap phi join in double
// precision. |r| and |ap phi| are summed in single precision, every eighth cell of the rows of a
// plane by itself, then these eight sums, then the planes.
//
// reads   ae..ab, ap, su, sp, phi in and beside the range

#include "solver/residual_sum.hpp"

#include <array>

#include "solver/constants.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/lane_sum.hpp"
#include "solver/plane_sums.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

struct Sums {
    LaneSum residual, scale;
};

// Adds |r| and, if asked for, |ap phi| of the cells of a row.
template <bool skip_pinned, bool with_scale>
void add_row(const CellRange& cells, const LinearSystem& eq, const Field3& phi, int j, int k,
             Sums& sums) {
    const int i = cells.i1;
    const CoefficientRow c = coefficient_row(eq, i, j, k);
    const FieldRows x = field_rows(phi, i, j, k);
    const double* su = &eq.su(i, j, k);
    const double* sp = &eq.sp(i, j, k);
    constexpr float pin = -static_cast<float>(BIG);
    rising_cells(cells_i(cells), [&]<class V>(V, int m) {
        fetch_ahead(m, c, x.top, su);
        const V diagonal = load<V>(c.ap + m) * load<V>(x.c + m);
        const V rest =
            narrow<V>(widen(c.neighbours<V>(x, m)) + load_wide<V>(su + m) - widen(diagonal));
        V size = magnitude(rest);
        if constexpr (skip_pinned) {
            fetch_ahead(m, sp);
            size = narrow<V>(load_wide<V>(sp + m)) == pin ? V{} : size;
        }
        sums.residual.add(size, m);
        if constexpr (with_scale) {
            sums.scale.add(magnitude(diagonal), m);
        }
    });
}

template <bool skip_pinned>
float sum(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    return plane_sums<1>(cells, [&](int k) {
        Sums sums;
        for (int j = cells.j1; j <= cells.j2; ++j) {
            add_row<skip_pinned, false>(cells, eq, phi, j, k, sums);
        }
        return std::array{sums.residual.total()};
    })[0];
}

}  // namespace

float residual_sum(const CellRange& cells, const LinearSystem& eq, const Field3& phi,
                   Pinned pinned) {
    return pinned == Pinned::skip ? sum<true>(cells, eq, phi) : sum<false>(cells, eq, phi);
}

std::optional<float> residual_sum_below(const CellRange& cells, const LinearSystem& eq,
                                        const Field3& phi, float ratio, float r0) {
    const auto is_below = [=](float r1) { return ratio > r1 / r0; };
    // The first plane in the order of the whole sum.
    Sums part;
    for (int j = cells.j1; j <= cells.j2 && !is_empty(cells); ++j) {
        add_row<true, false>(cells, eq, phi, j, cells.k1, part);
        if (!is_below(part.residual.total())) {
            return std::nullopt;
        }
    }
    const float r1 = residual_sum(cells, eq, phi, Pinned::skip);
    return is_below(r1) ? std::optional(r1) : std::nullopt;
}

EquationSums equation_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    const auto [residual, scale] = plane_sums<2>(cells, [&](int k) {
        Sums sums;
        for (int j = cells.j1; j <= cells.j2; ++j) {
            add_row<true, true>(cells, eq, phi, j, k, sums);
        }
        return std::array{sums.residual.total(), sums.scale.total()};
    });
    return {residual, scale};
}

}  // namespace torvex
