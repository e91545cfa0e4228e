// What passes between the fields of a direction, k outermost, and the slabs of the multigrid
// solver, j outermost.

#include "solver/multigrid_exchange.hpp"

#include <algorithm>

#include "solver/fetch_ahead.hpp"
#include "solver/lane_sum.hpp"

namespace torvex {

namespace {

template <class T>
const T* range_row(const CellRange& cells, const Array3<T>& x, int j, int k) {
    return &x(cells.i1, cells.j1 + j - 1, cells.k1 + k - 1);
}

// Asks for the same row of slab j + 1.
template <class... T>
void fetch_next(const CellRange& cells, int j, int k, int n, const Array3<T>&... x) {
    (fetch_cells(x.ni(), n, range_row(cells, x, j, k)), ...);
}

template <class V, class T>
V load_single(const T* x) {
    if constexpr (sizeof(T) == sizeof(double)) {
        return narrow<V>(load_wide<V>(x));
    } else {
        return load<V>(x);
    }
}

}  // namespace

void load_faces(const CellRange& cells, const FaceCoefficients& a, int j, MultigridLevel& level) {
    const int n = level.ni;
    for (int k = 1; k <= level.nk; ++k) {
        fetch_next(cells, j, k, n, a.a_e, a.a_n, a.a_t);
        std::copy_n(range_row(cells, a.a_e, j, k), n - 1, line_row(level.ae, j, k));
        if (j < level.nj) {
            std::copy_n(range_row(cells, a.a_n, j, k), n, line_row(level.an, j, k));
        }
        if (k < level.nk) {
            std::copy_n(range_row(cells, a.a_t, j, k), n, line_row(level.at, j, k));
        }
    }
}

template <class T>
SourceSums load_cells(const CellRange& cells, const Array3<T>& from, int j,
                      const MultigridLevel& level, Field3& x) {
    SourceSums sums;
    for (int k = 1; k <= level.nk; ++k) {
        fetch_next(cells, j, k, level.ni, from);
        const T* source = range_row(cells, from, j, k);
        float* row = line_row(x, j, k);
        LaneSum values;
        LaneSum sizes;
        rising_cells(level.ni, [&]<class V>(V, int m) {
            const V value = load_single<V>(source + m);
            store(row + m, value);
            values.add(value, m);
            sizes.add(magnitude(value), m);
        });
        sums.of_values += static_cast<double>(values.total());
        sums.of_sizes += static_cast<double>(sizes.total());
    }
    return sums;
}
template SourceSums load_cells(const CellRange&, const Array3<float>&, int, const MultigridLevel&,
                               Field3&);
template SourceSums load_cells(const CellRange&, const Array3<double>&, int, const MultigridLevel&,
                               Field3&);

void store_cells(const CellRange& cells, const Solution& solution, Storing storing, int j,
                 const MultigridLevel& level, Field3& to) {
    for (int k = 1; k <= level.nk; ++k) {
        fetch_next(cells, j, k, level.ni, to);
        float* row = &to(cells.i1, cells.j1 + j - 1, cells.k1 + k - 1);
        const float* x = solution.x == nullptr ? nullptr : line_row(*solution.x, j, k);
        const float* p = solution.p == nullptr ? nullptr : line_row(*solution.p, j, k);
        const float factor = solution.factor;
        const bool add = storing == Storing::add;
        rising_cells(level.ni, [=]<class V>(V, int m) {
            V value = add ? load<V>(row + m) : V{};
            value += x == nullptr ? V{} : load<V>(x + m);
            value += p == nullptr ? V{} : factor * load<V>(p + m);
            store(row + m, value);
        });
    }
}

}  // namespace torvex
