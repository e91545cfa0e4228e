// line_sweeps: Gauss-Seidel by lines along k, in two colours, of
//
//   ap phi = ae phi(i+1) + aw phi(i-1) + an phi(j+1) + as phi(j-1) + at phi(k+1) + ab phi(k-1) + su
//
// Near the ground cells are flat and the coefficients along k by far the largest; a line is solved
// along k by elimination (Thomas, 1949). With g(1) = 0 and q(1) = phi(1), held at the ground, for k
// rising, and then for k falling from the value held above nz:
//
//   g   = at/(ap - ab g(k-1))
//   q   = (ae phi(i+1) + aw phi(i-1) + an phi(j+1) + as phi(j-1) + su + ab q(k-1))/(ap - ab g(k-1))
//   phi = q + g phi(k+1)
//
// A sweep is two half-sweeps, over the lines of even i + j and then over the others.
//
// reads   ae..ap and the su in the interior, phi there and beside it
// writes  phi in the interior
// plain   tests/solver/reference/plain_line_sweeps
//
// All half-sweeps run in one pass through memory, see staged_rows.hpp. Every line of a row is
// eliminated, which takes full vectors no longer than every other line, but only those of the
// colour are stored: the others may be read by another thread at that time. g is formed once for
// all unknowns. Single precision; no cell's arithmetic depends on the number of threads.

#include "solver/line_sweeps.hpp"

#include <omp.h>

#include <algorithm>
#include <cstddef>

#include "solver/fetch_ahead.hpp"
#include "solver/row.hpp"
#include "solver/row_recurrence.hpp"
#include "solver/staged_rows.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

// What is kept of the lines of a row: g and each q of all levels, each solution of two levels. Cell
// i = 2 stands first.
template <std::size_t N>
class KeptLines {
 public:
    explicit KeptLines(Field3& rows) : rows_(rows) {}

    float* g(int k) const { return &rows_(1, k, 1); }
    float* q(int n, int k) const { return &rows_(1, k, 2 + n); }
    // Of level k, until that of level k - 2 takes its place.
    float* solution(int n, int k) const { return &rows_(1, 1 + k % 2, 2 + unknowns + n); }

    static void fit(Field3& rows, int cells, int nk) {
        constexpr int planes = 1 + 2 * unknowns;
        if (rows.ni() != cells || rows.nj() != nk || rows.nk() < planes) {
            rows.allocate(cells, nk, planes);
        }
    }

 private:
    static constexpr int unknowns = static_cast<int>(N);
    Field3& rows_;
};

// What g and q of a level come from, and where they go.
template <std::size_t N>
struct Elimination {
    CoefficientRow c;
    const float* g_below;
    float* g;
    std::array<FieldRows, N> x;
    std::array<const float*, N> su;
    std::array<const float*, N> q_below;
    std::array<float*, N> q;
};

template <std::size_t N>
void eliminate(int cells, const Elimination<N>& e) {
    // A copy of its own lets the pointers stay in registers.
    overlapping_cells(cells, [e]<class V>(V, int m) {
        const V ae = load<V>(e.c.ae + m);
        const V aw = load<V>(e.c.aw + m);
        const V an = load<V>(e.c.an + m);
        const V as = load<V>(e.c.as + m);
        const V ab = load<V>(e.c.ab + m);
        const V inverse = 1.0F / (load<V>(e.c.ap + m) - ab * load<V>(e.g_below + m));
        store(e.g + m, load<V>(e.c.at + m) * inverse);
#pragma GCC unroll 3
        for (std::size_t n = 0; n < N; ++n) {
            const FieldRows& x = e.x[n];
            const V known = ae * load<V>(x.c + m + 1) + aw * load<V>(x.c + m - 1) +
                            an * load<V>(x.north + m) + as * load<V>(x.south + m) +
                            load<V>(e.su[n] + m);
            store(e.q[n] + m, (known + ab * load<V>(e.q_below[n] + m)) * inverse);
        }
    });
}

// The solution of a level, stored in phi where m has the parity of the colour.
void substitute(int cells, const float* g, const float* q, const float* above, int parity,
                float* solution, float* phi) {
    along_row(0, cells - 1, [=](int m) {
        const float x = q[m] + g[m] * above[m];
        solution[m] = x;
        if ((m & 1) == parity) {
            phi[m] = x;
        }
    });
}

// Level k of what the first half-sweep over row j brings into the near caches.
template <std::size_t N>
void fetch_level(const LinearSystem& eq, const LineUnknowns<N>& unknowns, int j, int k) {
    fetch_row(j, k, eq.ae, eq.aw, eq.an, eq.as, eq.at, eq.ab, eq.ap);
    for (const auto& [su, phi] : unknowns) {
        fetch_row(j, k, su);
        fetch_row(j + 1, k, phi);
    }
}

// Half-sweep `stage` over row j: the lines whose i + j is even or, in every other stage, odd.
template <std::size_t N>
void half_sweep(const LinearSystem& eq, const LineUnknowns<N>& unknowns, int stage, int j,
                const KeptLines<N>& kept) {
    const int cells = eq.ap.ni() - 2;
    const int nz = eq.ap.nk() - 1;
    std::fill_n(kept.g(1), cells, 0.0F);
    for (int k = 2; k <= nz; ++k) {
        Elimination<N> e{.c = coefficient_row(eq, 2, j, k),
                         .g_below = kept.g(k - 1),
                         .g = kept.g(k),
                         .x = {},
                         .su = {},
                         .q_below = {},
                         .q = {}};
        for (std::size_t n = 0; n < N; ++n) {
            const auto& [su, phi] = unknowns[n];
            e.x[n] = field_rows(phi, 2, j, k);
            e.su[n] = &su(2, j, k);
            e.q_below[n] = k == 2 ? &phi(2, j, 1) : kept.q(static_cast<int>(n), k - 1);
            e.q[n] = kept.q(static_cast<int>(n), k);
        }
        if (stage == 0) {
            fetch_level(eq, unknowns, j, k + 1);
        }
        eliminate(cells, e);
    }
    const int parity = (stage + j) % 2;  // of i - 2 in the lines of this colour
    for (int k = nz; k >= 2; --k) {
        for (std::size_t n = 0; n < N; ++n) {
            Field3& phi = unknowns[n].phi;
            const int unknown = static_cast<int>(n);
            const float* above = k == nz ? &phi(2, j, nz + 1) : kept.solution(unknown, k + 1);
            substitute(cells, kept.g(k), kept.q(unknown, k), above, parity,
                       kept.solution(unknown, k), &phi(2, j, k));
        }
    }
}

}  // namespace

template <std::size_t N>
void line_sweeps(const LinearSystem& eq, const LineUnknowns<N>& unknowns, int sweeps,
                 LineWork& work) {
    const int cells = eq.ap.ni() - 2;
    const int ny = eq.ap.nj() - 1;
    const int nk = eq.ap.nk();
    if (cells < 1 || nk < 3) {
        return;
    }
    const auto threads = static_cast<std::size_t>(omp_get_max_threads());
    if (work.threads.size() < threads) {
        work.threads.resize(threads);
    }
    for (Field3& rows : work.threads) {
        KeptLines<N>::fit(rows, cells, nk);
    }
    const int first = 2;
    staged_rows(2 * sweeps, ny - first + 1, true, [&](int stage, int row, int thread) {
        const int j = first + row - 1;
        half_sweep(eq, unknowns, stage, j,
                   KeptLines<N>(work.threads[static_cast<std::size_t>(thread)]));
    });
}

template void line_sweeps<1>(const LinearSystem&, const LineUnknowns<1>&, int, LineWork&);
template void line_sweeps<3>(const LinearSystem&, const LineUnknowns<3>&, int, LineWork&);

}  // namespace torvex
