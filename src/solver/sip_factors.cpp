// The incomplete factors of the strongly implicit procedure (Stone 1968), in terms of the positive
// neighbour coefficients:
//
//   lb  = -ab / (1 + alpha (un(k-1) + ue(k-1)))        P1 = lb un(k-1) + lw un(i-1)
//   lw  = -aw / (1 + alpha (un(i-1) + ut(i-1)))        P2 = lb ue(k-1) + ls ue(j-1)
//   ls  = -as / (1 + alpha (ue(j-1) + ut(j-1)))        P3 = lw ut(i-1) + ls ut(j-1)
//   lpr = 1 / (ap + alpha (P1 + P2 + P3) - lb ut(k-1) - lw ue(i-1) - ls un(j-1))
//   un  = (-an - alpha P1) lpr,   ue = (-ae - alpha P2) lpr,   ut = (-at - alpha P3) lpr
//
// reads   ae..ab, ap; un, ue, ut of the cells before
// writes  lb, lw, ls, lpr, un, ue, ut
// plain   tests/solver/plain_solvers: plain_sip
//
// Every cell waits for two divisions of its west neighbour. Several rows advance together, each one
// cell behind the row south of it, so that the waits overlap. On its way the walk asks for the
// cells of the rows behind these.

#include "solver/sip_factors.hpp"

#include <algorithm>
#include <cstddef>

#include "solver/fetch_ahead.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

struct Factors {
    float *lb, *lw, *ls, *lpr, *un, *ue, *ut;
};

void factor_cell(const Factors& f, const CoefficientRow& c, std::ptrdiff_t m, std::ptrdiff_t row,
                 std::ptrdiff_t plane, float alpha) {
    const std::ptrdiff_t west = m - 1;
    const std::ptrdiff_t south = m - row;
    const std::ptrdiff_t below = m - plane;
    const float lb = -c.ab[m] / (1.0F + alpha * (f.un[below] + f.ue[below]));
    const float lw = -c.aw[m] / (1.0F + alpha * (f.un[west] + f.ut[west]));
    const float ls = -c.as[m] / (1.0F + alpha * (f.ue[south] + f.ut[south]));
    const float p1 = lb * f.un[below] + lw * f.un[west];
    const float p2 = lb * f.ue[below] + ls * f.ue[south];
    const float p3 = lw * f.ut[west] + ls * f.ut[south];
    const float lpr = 1.0F / (c.ap[m] + alpha * (p1 + p2 + p3) - lb * f.ut[below] -
                              lw * f.ue[west] - ls * f.un[south]);
    f.lb[m] = lb;
    f.lw[m] = lw;
    f.ls[m] = ls;
    f.lpr[m] = lpr;
    f.un[m] = (-c.an[m] - alpha * p1) * lpr;
    f.ue[m] = (-c.ae[m] - alpha * p2) * lpr;
    f.ut[m] = (-c.at[m] - alpha * p3) * lpr;
}

}  // namespace

void sip_factor_rows(const CellRange& cells, int j, int rows, int k, float alpha, RcmWork& work,
                     const LinearSystem& eq) {
    constexpr int together = 8;
    const std::ptrdiff_t row = eq.ap.ni();
    const std::ptrdiff_t plane = row * eq.ap.nj();
    const int n = cells_i(cells);
    const std::ptrdiff_t behind = together * row;
    for (int first = 0; first < rows; first += together) {
        const int i = cells.i1;
        const int lanes = std::min(together, rows - first);
        const CoefficientRow c = coefficient_row(eq, i, j + first, k, work.matrix);
        const Factors f{&work.lb(i, j + first, k), &work.lw(i, j + first, k),
                        &work.ls(i, j + first, k), &work.lpr(i, j + first, k),
                        &work.un(i, j + first, k), &work.ue(i, j + first, k),
                        &work.ut(i, j + first, k)};
        for (int step = 0; step < n + lanes - 1; ++step) {
            if (step * together % line_cells == 0) {
                fetch_cells(behind + step * together, 1, c.ae, c.aw, c.an, c.as, c.at, c.ab, c.ap,
                            f.lb, f.lw, f.ls, f.lpr, f.un, f.ue, f.ut);
            }
            const int lowest = std::max(0, step - n + 1);
            const int highest = std::min(lanes - 1, step);
            for (int lane = lowest; lane <= highest; ++lane) {
                factor_cell(f, c, step - lane + lane * row, row, plane, alpha);
            }
        }
    }
}

}  // namespace torvex
