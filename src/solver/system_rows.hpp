#pragma once

#include "base/field.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/linear_system.hpp"
#include "solver/row_recurrence.hpp"

namespace torvex {

// A stretch of one row of a field from cell (i,j,k) on, and the rows beside it. c[n] is phi(i+n),
// so c[-1] and c[n+1] are the west and east neighbours.
struct FieldRows {
    const float* c;
    const float* north;
    const float* south;
    const float* top;
    const float* bottom;
};

// From an interior cell on, so that all neighbours are there.
inline FieldRows field_rows(const Field3& phi, int i, int j, int k) {
    return {&phi(i, j, k), &phi(i, j + 1, k), &phi(i, j - 1, k), &phi(i, j, k + 1),
            &phi(i, j, k - 1)};
}

// The same stretch of the coefficients.
struct CoefficientRow {
    const float* ae;
    const float* aw;
    const float* an;
    const float* as;
    const float* at;
    const float* ab;
    const float* ap;

    // The products with the six neighbours, summed left to right.
    template <class V = float>
    V neighbours(const FieldRows& x, int n) const {
        return load<V>(ae + n) * load<V>(x.c + n + 1) + load<V>(aw + n) * load<V>(x.c + n - 1) +
               load<V>(an + n) * load<V>(x.north + n) + load<V>(as + n) * load<V>(x.south + n) +
               load<V>(at + n) * load<V>(x.top + n) + load<V>(ab + n) * load<V>(x.bottom + n);
    }
    // All seven products.
    template <class V = float>
    V products(const FieldRows& x, int n) const {
        return neighbours<V>(x, n) - load<V>(ap + n) * load<V>(x.c + n);
    }
};

// Of a symmetric matrix the coefficients towards i-1, j-1, k-1 are read where the neighbours keep
// theirs, which the loop has just read or soon will.
enum class Matrix { general, symmetric };

inline CoefficientRow coefficient_row(const LinearSystem& eq, int i, int j, int k,
                                      Matrix matrix = Matrix::general) {
    CoefficientRow row{&eq.ae(i, j, k), &eq.aw(i, j, k), &eq.an(i, j, k), &eq.as(i, j, k),
                       &eq.at(i, j, k), &eq.ab(i, j, k), &eq.ap(i, j, k)};
    if (matrix == Matrix::symmetric) {
        row.aw = &eq.ae(i - 1, j, k);
        row.as = &eq.an(i, j - 1, k);
        row.ab = &eq.at(i, j, k - 1);
    }
    return row;
}

// The coefficients and other rows that the loop comes to.
template <class... T>
[[gnu::always_inline]] inline void fetch_ahead(int m, const CoefficientRow& c, const T*... row) {
    fetch_ahead(m, c.ae, c.aw, c.an, c.as, c.at, c.ab, c.ap, row...);
}

// Cells, rows and planes of a range; a range whose upper bound lies below the lower one is empty.
inline int cells_i(const CellRange& c) {
    return c.i2 - c.i1 + 1;
}
inline int cells_j(const CellRange& c) {
    return c.j2 - c.j1 + 1;
}
inline int cells_k(const CellRange& c) {
    return c.k2 - c.k1 + 1;
}
inline bool is_empty(const CellRange& c) {
    return cells_i(c) < 1 || cells_j(c) < 1 || cells_k(c) < 1;
}

}  // namespace torvex
