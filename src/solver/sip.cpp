// SIP: Stone's strongly implicit procedure (Stone 1968) for a seven-point system with the right
// side work.rhs.
//
// Each sweep, with r the residual of the current phi in single precision:
//
//   for k, j, i rising:   w = (r - lb w(k-1) - lw w(i-1) - ls w(j-1)) lpr
//   for k, j, i falling:  w = w - un w(j+1) - ue w(i+1) - ut w(k+1),   phi = phi + w
//
// reads   ae..ab, ap, work.rhs; of a symmetric matrix, as that of the pressure correction is, only
//         ae, an, at, those below and beside the range included, and ap
// writes  phi in the range, its neighbours outside the range are zero; work.w, the factors,
//         work.matrix
// plain   tests/solver/plain_solvers: plain_sip
//
// phi starts from zero, so that the first residual is the right side itself.
//
// Threads take bands of rows j and follow each other plane by plane: rising, a thread starts a
// plane when the thread south of it has finished that plane; falling, when the one north of it has.
// This is the only waiting. It also keeps the sweeps apart: a thread that rises again is behind its
// southern neighbour, which has fallen through everything, and it fell itself behind the northern
// one. The order of the arithmetic of a cell is that of the serial loops for any number of threads.

#include "solver/sip.hpp"

#include <omp.h>

#include <algorithm>

#include "solver/fetch_ahead.hpp"
#include "solver/plane_progress.hpp"
#include "solver/row_recurrence.hpp"
#include "solver/sip_factors.hpp"
#include "solver/symmetry.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

struct Sip {
    const CellRange& cells;
    const LinearSystem& eq;
    Field3& phi;
    RcmWork& work;
    float alpha;
};

void forward_row(const Sip& s, bool first_sweep, int j, int k) {
    const int i = s.cells.i1;
    const CoefficientRow c = coefficient_row(s.eq, i, j, k, s.work.matrix);
    const FieldRows x = field_rows(s.phi, i, j, k);
    const float* rhs = &s.work.rhs(i, j, k);
    const float* lb = &s.work.lb(i, j, k);
    const float* lw = &s.work.lw(i, j, k);
    const float* ls = &s.work.ls(i, j, k);
    const float* lpr = &s.work.lpr(i, j, k);
    const float* south = &s.work.w(i, j - 1, k);
    const float* bottom = &s.work.w(i, j, k - 1);
    float* w = &s.work.w(i, j, k);
    Block before = filled_block(w[-1]);
    const auto substitute = [&]<class V>(V r, int m) {
        const V pivot = load<V>(lpr + m);
        const V known =
            r - load<V>(lb + m) * load<V>(bottom + m) - load<V>(ls + m) * load<V>(south + m);
        store(w + m, solve_rising(known * pivot, -(load<V>(lw + m) * pivot), before).x);
    };
    if (first_sweep) {
        rising_cells(cells_i(s.cells), [&]<class V>(V, int m) {
            fetch_ahead(m, rhs, lb, lw, ls, lpr, w);
            substitute(load<V>(rhs + m), m);
        });
    } else {
        rising_cells(cells_i(s.cells), [&]<class V>(V, int m) {
            fetch_ahead(m, c, rhs, lb, lw, ls, lpr, w, x.top);
            substitute(c.products<V>(x, m) + load<V>(rhs + m), m);
        });
    }
}

void backward_row(const Sip& s, bool first_sweep, int j, int k) {
    const int i = s.cells.i1;
    const int n = cells_i(s.cells);
    const float* un = &s.work.un(i, j, k);
    const float* ue = &s.work.ue(i, j, k);
    const float* ut = &s.work.ut(i, j, k);
    const float* north = &s.work.w(i, j + 1, k);
    const float* top = &s.work.w(i, j, k + 1);
    float* w = &s.work.w(i, j, k);
    float* phi = &s.phi(i, j, k);
    Block before = filled_block(w[n]);
    falling_cells(n, [&]<class V>(V, int m) {
        fetch_ahead<Heading::falling>(m, un, ue, ut, w, phi);
        const V known = load<V>(w + m) - load<V>(un + m) * load<V>(north + m) -
                        load<V>(ut + m) * load<V>(top + m);
        const V x = solve_falling(known, -load<V>(ue + m), before);
        store(w + m, x);
        store(phi + m, first_sweep ? x : load<V>(phi + m) + x);
    });
}

// One value in every cell that touches a face of the range from outside.
void clear_shell(const CellRange& c, Field3& field) {
    const auto clear = [&](const CellRange& box) {
        for (int k = box.k1; k <= box.k2; ++k) {
            for (int j = box.j1; j <= box.j2; ++j) {
                std::fill_n(&field(box.i1, j, k), cells_i(box), 0.0F);
            }
        }
    };
    clear({c.i1 - 1, c.j1, c.k1, c.i1 - 1, c.j2, c.k2});
    clear({c.i2 + 1, c.j1, c.k1, c.i2 + 1, c.j2, c.k2});
    clear({c.i1, c.j1 - 1, c.k1, c.i2, c.j1 - 1, c.k2});
    clear({c.i1, c.j2 + 1, c.k1, c.i2, c.j2 + 1, c.k2});
    clear({c.i1, c.j1, c.k1 - 1, c.i2, c.j2, c.k1 - 1});
    clear({c.i1, c.j1, c.k2 + 1, c.i2, c.j2, c.k2 + 1});
}

// The band of one thread.
class Band {
 public:
    Band(const Sip& sip, PlaneProgress& progress, int thread, int threads)
        : sip_(sip),
          progress_(progress),
          thread_(thread),
          threads_(threads),
          j1_(sip.cells.j1 + cells_j(sip.cells) * thread / threads),
          j2_(sip.cells.j1 + cells_j(sip.cells) * (thread + 1) / threads - 1) {}

    void factor() {
        rise([&](int k) {
            sip_factor_rows(sip_.cells, j1_, j2_ - j1_ + 1, k, sip_.alpha, sip_.work, sip_.eq);
        });
    }
    void sweep(bool first_sweep) {
        rise([&](int k) {
            for (int j = j1_; j <= j2_; ++j) {
                forward_row(sip_, first_sweep, j, k);
            }
        });
        fall([&](int k) {
            for (int j = j2_; j >= j1_; --j) {
                backward_row(sip_, first_sweep, j, k);
            }
        });
    }

 private:
    template <class Plane>
    void rise(const Plane& plane) {
        for (int k = sip_.cells.k1; k <= sip_.cells.k2; ++k) {
            follow(thread_ - 1, [&] { plane(k); });
        }
    }
    template <class Plane>
    void fall(const Plane& plane) {
        for (int k = sip_.cells.k2; k >= sip_.cells.k1; --k) {
            follow(thread_ + 1, [&] { plane(k); });
        }
    }
    template <class Work>
    void follow(int leader, const Work& work) {
        ++planes_;
        if (leader >= 0 && leader < threads_) {
            progress_.wait_for(leader, planes_);
        }
        work();
        progress_.publish(thread_, planes_);
    }

    const Sip& sip_;
    PlaneProgress& progress_;
    int thread_, threads_;
    int j1_, j2_;
    int planes_ = 0;
};

}  // namespace

void SIP(const CellRange& cells, Field3& phi, int nsweep, float alpha, int cycle, RcmWork& work,
         const LinearSystem& eq) {
    if (is_empty(cells)) {
        return;
    }
    clear_shell(cells, phi);
    clear_shell(cells, work.w);
    if (cycle == 1) {
        clear_shell(cells, work.un);
        clear_shell(cells, work.ue);
        clear_shell(cells, work.ut);
        work.matrix = is_symmetric(cells, eq) ? Matrix::symmetric : Matrix::general;
    }
    const Sip sip{cells, eq, phi, work, alpha};
    PlaneProgress progress(omp_get_max_threads());
#pragma omp parallel
    {
        const int threads = std::min(omp_get_num_threads(), cells_j(cells));
        if (const int thread = omp_get_thread_num(); thread < threads) {
            Band band(sip, progress, thread, threads);
            if (cycle == 1) {
                band.factor();
            }
            for (int sweep = 0; sweep < nsweep; ++sweep) {
                band.sweep(sweep == 0);
            }
        }
    }
}

}  // namespace torvex
