// Residual sums of an equation, the measure of its convergence:
//
//   r = ae phi(i+1) + aw phi(i-1) + an phi(j+1) + as phi(j-1) + at phi(k+1) + ab phi(k-1)
//       + su - ap phi
//
// The six products are summed in single precision, su and the product ap phi join in double
// precision. |r| and the terms of a scale are summed in single precision, every eighth cell of the
// rows of a plane by itself, then these eight sums, then the planes.
//
// reads   ae..ab, ap, su, sp, phi in and beside the range; for the scale of momentum u, v, w
// plain   tests/solver/plain_solvers: exact_residual

#include "solver/residual_sum.hpp"

#include <array>
#include <type_traits>

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

// The scale of a cell, from its ap and its ap phi; one of them for each row.
struct NoScale {};
struct DiagonalScale {
    template <class V>
    V of_cell(int /*m*/, V /*ap*/, V diagonal) const {
        return magnitude(diagonal);
    }
};
struct SpeedScale {
    const float *u, *v, *w;

    template <class V>
    V of_cell(int m, V ap, V /*diagonal*/) const {
        fetch_ahead(m, u, v, w);
        const V um = load<V>(u + m);
        const V vm = load<V>(v + m);
        const V wm = load<V>(w + m);
        return magnitude(ap * square_root(um * um + vm * vm + wm * wm));
    }
};

// Adds |r| and the scale of the cells of a row.
template <bool skip_pinned, class Scale>
void add_row(const CellRange& cells, const LinearSystem& eq, const Field3& phi, int j, int k,
             const Scale& scale, Sums& sums) {
    const int i = cells.i1;
    const CoefficientRow c = coefficient_row(eq, i, j, k);
    const FieldRows x = field_rows(phi, i, j, k);
    const double* su = &eq.su(i, j, k);
    const double* sp = &eq.sp(i, j, k);
    constexpr float pin = -static_cast<float>(BIG);
    rising_cells(cells_i(cells), [&]<class V>(V, int m) {
        fetch_ahead(m, c, x.top, su);
        const V ap = load<V>(c.ap + m);
        const V diagonal = ap * load<V>(x.c + m);
        const V rest =
            narrow<V>(widen(c.neighbours<V>(x, m)) + load_wide<V>(su + m) - widen(diagonal));
        V size = magnitude(rest);
        if constexpr (skip_pinned) {
            fetch_ahead(m, sp);
            size = narrow<V>(load_wide<V>(sp + m)) == pin ? V{} : size;
        }
        sums.residual.add(size, m);
        if constexpr (!std::is_same_v<Scale, NoScale>) {
            sums.scale.add(scale.template of_cell<V>(m, ap, diagonal), m);
        }
    });
}

template <bool skip_pinned>
float sum(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    return plane_sums<1>(cells, [&](int k) {
        Sums sums;
        for (int j = cells.j1; j <= cells.j2; ++j) {
            add_row<skip_pinned>(cells, eq, phi, j, k, NoScale{}, sums);
        }
        return std::array{sums.residual.total()};
    })[0];
}

// scale_of(j, k) is the scale of a row.
template <class ScaleOf>
EquationSums both_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi,
                       const ScaleOf& scale_of) {
    const auto [residual, scale] = plane_sums<2>(cells, [&](int k) {
        Sums sums;
        for (int j = cells.j1; j <= cells.j2; ++j) {
            add_row<true>(cells, eq, phi, j, k, scale_of(j, k), sums);
        }
        return std::array{sums.residual.total(), sums.scale.total()};
    });
    return {residual, scale};
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
        add_row<true>(cells, eq, phi, j, cells.k1, NoScale{}, part);
        if (!is_below(part.residual.total())) {
            return std::nullopt;
        }
    }
    const float r1 = residual_sum(cells, eq, phi, Pinned::skip);
    return is_below(r1) ? std::optional(r1) : std::nullopt;
}

EquationSums equation_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    return both_sums(cells, eq, phi, [](int /*j*/, int /*k*/) { return DiagonalScale{}; });
}

EquationSums equation_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi,
                           const Velocity& velocity) {
    return both_sums(cells, eq, phi, [&](int j, int k) {
        const int i = cells.i1;
        return SpeedScale{&velocity.u(i, j, k), &velocity.v(i, j, k), &velocity.w(i, j, k)};
    });
}

}  // namespace torvex
