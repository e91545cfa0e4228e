// sweep_phi: one point Gauss-Seidel sweep in four colours.
//
// The colours are the parities of k and j counted from k1 and j1, that of k outermost. Within a
// colour, for i rising:
//
//   r   = ae phi(i+1) + aw phi(i-1) + an phi(j+1) + as phi(j-1) + at phi(k+1) + ab phi(k-1)
//         - ap phi + su
//   res = r,   phi = phi + relax r / ap
//
// reads   ae..ab, ap, su, phi in and beside the range
// writes  phi and res in the range
// plain   tests/solver/plain_solvers: plain_sweep_phi
//
// The products are summed in single precision and su is added in double: a pinned cell has
// su = 1e25 * value and ap near 1e25. The products are ordered by when they are known: own plane
// column first, then north and south, the west one last.
//
// Rows of one colour do not touch each other, so a colour need not be finished before the next
// begins: planes run k1, k1+2, k1+1, k1+4, k1+3, ... and the rows of a plane alike. The system is
// read once per sweep and in storage order, which is what the processor fetches ahead: a row of the
// second colour is read in its turn and kept until the row north of it is done. No cell's
// arithmetic depends on the number of threads.

#include "solver/sweep_phi.hpp"

#include <omp.h>

#include <algorithm>
#include <cstddef>

#include "solver/fetch_ahead.hpp"
#include "solver/plane_progress.hpp"
#include "solver/row_recurrence.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

constexpr int stretch = 512;  // cells of a row at a time: the kept rows stay in the near caches

// What the update of some cells needs of the system, and the products that never wait.
template <class V>
struct Terms {
    V sum;  // towards i+1, k+1, k-1 and of the cell itself
    V an, as, aw;
    V step;  // relax / ap
    Wide<V> su;
};

// The terms of a row of the second colour, kept until the row north of it is done: block by block,
// the terms of a block side by side.
class KeptRow {
 public:
    template <class V>
    void put(int m, const Terms<V>& t) {
        float* p = at(m);
        store(p, t.sum);
        store(p + block_cells, t.an);
        store(p + 2 * block_cells, t.as);
        store(p + 3 * block_cells, t.aw);
        store(p + 4 * block_cells, t.step);
        store(su_ + m, t.su);
    }
    template <class V>
    Terms<V> get(int m) const {
        const float* p = at(m);
        return {load<V>(p),
                load<V>(p + block_cells),
                load<V>(p + 2 * block_cells),
                load<V>(p + 3 * block_cells),
                load<V>(p + 4 * block_cells),
                load_wide<V>(su_ + m)};
    }

 private:
    static constexpr int terms = 5;
    float* at(int m) { return terms_ + block_offset<terms>(m); }
    const float* at(int m) const { return terms_ + block_offset<terms>(m); }

    alignas(64) float terms_[terms * stretch];
    alignas(64) double su_[stretch];
};

// A stretch of n cells from i on, in the row in hand.
struct Stretch {
    int i, n;
    LinearSystem& eq;
    Field3& phi;
    float relax;
};

struct RowIn {
    RowIn(const Stretch& s, int j, int k)
        : c(coefficient_row(s.eq, s.i, j, k)),
          x(field_rows(s.phi, s.i, j, k)),
          su(&s.eq.su(s.i, j, k)),
          relax(s.relax) {}

    template <class V>
    Terms<V> terms(int m) const {
        fetch_ahead(m, c, x.top, su);
        const V ap = load<V>(c.ap + m);
        return {load<V>(c.ae + m) * load<V>(x.c + m + 1) + load<V>(c.at + m) * load<V>(x.top + m) +
                    load<V>(c.ab + m) * load<V>(x.bottom + m) - ap * load<V>(x.c + m),
                load<V>(c.an + m),
                load<V>(c.as + m),
                load<V>(c.aw + m),
                relax / ap,
                load_wide<V>(su + m)};
    }

    CoefficientRow c;
    FieldRows x;
    const double* su;
    float relax;
};

struct RowOut {
    RowOut(const Stretch& s, int j, int k)
        : phi(&s.phi(s.i, j, k)),
          north(&s.phi(s.i, j + 1, k)),
          south(&s.phi(s.i, j - 1, k)),
          res(&s.eq.res(s.i, j, k)),
          before(filled_block(s.phi(s.i - 1, j, k))) {}

    template <class V>
    void update(int m, const Terms<V>& t) {
        const V sum = t.sum + t.an * load<V>(north + m) + t.as * load<V>(south + m);
        const V r = add_wide(sum, t.su);
        const Solved<V> s = solve_rising(load<V>(phi + m) + r * t.step, t.aw * t.step, before);
        store(phi + m, s.x);
        store(res + m, r + t.aw * s.west);
    }

    float* phi;
    const float* north;
    const float* south;
    float* res;
    Block before;
};

void sweep_first_colour(const Stretch& s, int j, int k) {
    const RowIn in(s, j, k);
    RowOut out(s, j, k);
    rising_cells(s.n, [&]<class V>(V, int m) { out.update(m, in.terms<V>(m)); });
}

void keep(const Stretch& s, int j, int k, KeptRow& row) {
    const RowIn in(s, j, k);
    rising_cells(s.n, [&]<class V>(V, int m) { row.put(m, in.terms<V>(m)); });
}

void sweep_kept(const Stretch& s, int j, int k, const KeptRow& row) {
    RowOut out(s, j, k);
    rising_cells(s.n, [&]<class V>(V, int m) { out.update(m, row.get<V>(m)); });
}

// Keeps row j while the row kept before, j - 2, is swept: the one waits for memory, the other for
// arithmetic.
void keep_and_sweep(const Stretch& s, int j, int k, KeptRow& row, const KeptRow& earlier) {
    const RowIn in(s, j, k);
    RowOut out(s, j - 2, k);
    rising_cells(s.n, [&]<class V>(V, int m) {
        row.put(m, in.terms<V>(m));
        out.update(m, earlier.get<V>(m));
    });
}

// Both colours of plane k.
void sweep_stretch(const Stretch& s, int j1, int j2, int k, KeptRow (&kept)[2]) {
    int now = 0;
    for (int j = j1; j <= j2; j += 2) {
        sweep_first_colour(s, j, k);
        if (j == j2) {
            break;
        }
        now = 1 - now;
        if (j == j1) {
            keep(s, j + 1, k, kept[now]);
        } else {
            keep_and_sweep(s, j + 1, k, kept[now], kept[1 - now]);
        }
    }
    if (const int last = j1 + 2 * ((j2 - j1 + 1) / 2) - 1; last > j1) {
        sweep_kept(s, last, k, kept[now]);
    }
}

struct Sweep {
    const CellRange& cells;
    LinearSystem& eq;
    Field3& phi;
    float relax;

    void plane(int k, KeptRow (&kept)[2]) const {
        for (int i = cells.i1; i <= cells.i2; i += stretch) {
            const int n = std::min(stretch, cells.i2 - i + 1);
            sweep_stretch({i, n, eq, phi, relax}, cells.j1, cells.j2, k, kept);
        }
    }
};

}  // namespace

void sweep_phi(const CellRange& cells, LinearSystem& eq, Field3& phi, float relax) {
    if (is_empty(cells)) {
        return;
    }
    const Sweep sweep{cells, eq, phi, relax};
    const int pairs = (cells_k(cells) + 1) / 2;
    PlaneProgress progress(omp_get_max_threads());
#pragma omp parallel
    {
        KeptRow kept[2];
        const int threads = std::min(omp_get_num_threads(), pairs);
        const int thread = omp_get_thread_num();
        const int begin = thread < threads ? pairs * thread / threads : pairs;
        const int end = thread < threads ? pairs * (thread + 1) / threads : pairs;
        const auto first_colour = [&](int pair) { sweep.plane(cells.k1 + 2 * pair, kept); };
        const auto second_colour = [&](int pair) {
            if (const int k = cells.k1 + 2 * pair + 1; k <= cells.k2) {
                sweep.plane(k, kept);
            }
        };
        if (begin < end) {
            first_colour(begin);
            progress.publish(thread, 1);
            for (int pair = begin + 1; pair < end; ++pair) {
                first_colour(pair);
                second_colour(pair - 1);
            }
            // The last plane of a thread lies below the first plane of the next thread.
            if (end < pairs) {
                progress.wait_for(thread + 1, 1);
            }
            second_colour(end - 1);
        }
    }
}

}  // namespace torvex
