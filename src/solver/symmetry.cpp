// The coefficients of a symmetric matrix stand twice in memory, once on each side of a face. A
// solver that knows this reads them once.
//
// reads   ae..ab in the range; ae, an, at in the cells below and beside it

#include "solver/symmetry.hpp"

#include <atomic>

#include "solver/fetch_ahead.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

bool row_is_symmetric(const CellRange& cells, const LinearSystem& eq, int j, int k) {
    const int n = cells_i(cells);
    const CoefficientRow stored = coefficient_row(eq, cells.i1, j, k);
    const CoefficientRow mirrored = coefficient_row(eq, cells.i1, j, k, Matrix::symmetric);
    fetch_cells(cells_ahead, n, stored.ae, stored.aw, stored.an, stored.as, stored.at, stored.ab);
    int different = 0;
#pragma omp simd reduction(+ : different)
    for (int m = 0; m < n; ++m) {
        const bool same = stored.aw[m] == mirrored.aw[m] && stored.as[m] == mirrored.as[m] &&
                          stored.ab[m] == mirrored.ab[m];
        different += same ? 0 : 1;
    }
    return different == 0;
}

}  // namespace

bool is_symmetric(const CellRange& cells, const LinearSystem& eq) {
    std::atomic<bool> symmetric = true;
#pragma omp parallel for schedule(static)
    for (int k = cells.k1; k <= cells.k2; ++k) {
        for (int j = cells.j1; j <= cells.j2 && symmetric.load(std::memory_order_relaxed); ++j) {
            if (!row_is_symmetric(cells, eq, j, k)) {
                symmetric.store(false, std::memory_order_relaxed);
            }
        }
    }
    return symmetric;
}

}  // namespace torvex
