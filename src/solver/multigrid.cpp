// Flexible conjugate gradients with a multigrid cycle B as preconditioner. From r = su - mean(su):
//
//   z = B r,  w = A z
//   beta = -(z.q)/(p.q),   p = z + beta p,  q = w + beta q = A p      (beta = 0 at first)
//   alpha = (p.r)/(p.q),   x = x + alpha p, r = r - alpha q
//
// until sum |r| < stop_ratio sum |su|, su before its mean is taken off. A and B only nearly commute
// with transposition in single precision, hence the flexible beta.
//
// reads   the coefficients of the faces, su
// writes  pp in the interior
// ref     Notay (2000)
// plain   tests/solver/reference/plain_multigrid
//
// r is orthogonal to the last p, so that p.r = z.r and p.q = z.w - (z.q)^2/(last p.q): all products
// are known as soon as the cycle ends, and are formed with its last stage. A solution so costs
// three passes a cycle over the finest mesh: half a cycle, the other half with w, and the step. x
// lags a step behind, since the step has the last p in hand anyway.

#include "solver/multigrid.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "solver/multigrid_exchange.hpp"
#include "solver/multigrid_products.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

// of_slab(j) for all slabs of a mesh, in parallel; what it returns stands in their order.
template <class OfSlabs>
auto for_slabs(const MultigridLevel& level, const OfSlabs& of_slab) {
    std::vector<decltype(of_slab(1))> results(static_cast<std::size_t>(level.nj));
    const bool shared_out = level.shared_out();
#pragma omp parallel for schedule(static) if (shared_out)
    for (int j = 1; j <= level.nj; ++j) {
        results[static_cast<std::size_t>(j - 1)] = of_slab(j);
    }
    return results;
}

double total(const std::vector<double>& of_slabs) {
    double sum = 0;
    for (const double x : of_slabs) {
        sum += x;
    }
    return sum;
}
SourceSums total(const std::vector<SourceSums>& of_slabs) {
    SourceSums sums;
    for (const SourceSums& x : of_slabs) {
        sums.of_values += x.of_values;
        sums.of_sizes += x.of_sizes;
    }
    return sums;
}
Products total(const std::vector<Products>& of_slabs) {
    Products sums;
    for (const Products& x : of_slabs) {
        sums.zr += x.zr;
        sums.zw += x.zw;
        sums.zq += x.zq;
    }
    return sums;
}

bool is_zero(const CellRange& cells, const Field3& x) {
    for (int k = cells.k1; k <= cells.k2; ++k) {
        for (int j = cells.j1; j <= cells.j2; ++j) {
            for (int i = cells.i1; i <= cells.i2; ++i) {
                if (x(i, j, k) != 0.0F) {
                    return false;
                }
            }
        }
    }
    return true;
}

}  // namespace

// Anew also behind a solution that was not finite, whose numbers would live on beside the cells.
void Multigrid::allocate(const CellRange& cells) {
    const int ni = cells_i(cells);
    const int nj = cells_j(cells);
    const int nk = cells_k(cells);
    if (!meshes_.level.empty() && std::isfinite(residual_)) {
        const MultigridLevel& made = meshes_.level.front();
        if (made.ni == ni && made.nj == nj && made.nk == nk) {
            return;
        }
    }
    meshes_.allocate(ni, nj, nk);
    for (Field3* x : {&p_, &q_, &w_, &x_}) {
        meshes_.level.front().allocate(*x);
    }
}

// Coefficients of all meshes, and r = su.
template <class T>
Multigrid::Source Multigrid::load(const CellRange& cells, const FaceCoefficients& a,
                                  const Array3<T>& su) {
    allocate(cells);
    MultigridLevel& finest = meshes_.level.front();
    std::vector<SourceSums> sums(static_cast<std::size_t>(finest.nj));
    set_coefficients(meshes_, [&](int j) {
        load_faces(cells, a, j, finest);
        sums[static_cast<std::size_t>(j - 1)] = load_cells(cells, su, j, finest, finest.r);
    });
    const SourceSums all = total(sums);
    return {.sum = all.of_values, .r0 = all.of_sizes};
}

// r = su - A pp. The sum of A pp is 0.
Multigrid::Source Multigrid::start_from(const CellRange& cells, const Field3& pp, Source source) {
    MultigridLevel& finest = meshes_.level.front();
    for_slabs(finest, [&](int j) { return load_cells(cells, pp, j, finest, finest.z); });
    for_slabs(finest, [&](int j) { return multiply(finest, j, nullptr, w_); });
    source.r0 = total(
        for_slabs(finest, [&](int j) { return take_first_step(finest, j, 1.0F, w_, finest.r); }));
    return source;
}

// Cycle n and the step that follows, where there is a direction to go.
void Multigrid::cycle_and_step(int n) {
    MultigridLevel& finest = meshes_.level.front();
    std::vector<Products> of_slabs(static_cast<std::size_t>(finest.nj));
    v_cycle(meshes_, [&](int j) {
        of_slabs[static_cast<std::size_t>(j - 1)] = multiply(finest, j, n == 1 ? nullptr : &q_, w_);
    });
    const Products products = total(of_slabs);
    const double beta = n == 1 ? 0.0 : -products.zq / pq_;
    const double pq = products.zw + beta * products.zq;
    if (pq <= 0) {
        return;
    }
    const float last = alpha_;
    pq_ = pq;
    alpha_ = static_cast<float>(products.zr / pq);
    steps_ = n;
    if (n == 1) {
        std::swap(p_, finest.z);
        std::swap(q_, w_);
        residual_ = total(for_slabs(
            finest, [&](int j) { return take_first_step(finest, j, alpha_, q_, finest.r); }));
        return;
    }
    const Step step{.number = n, .last = last, .alpha = alpha_, .beta = static_cast<float>(beta)};
    const Directions directions{finest.z, w_, p_, q_, x_, finest.r};
    residual_ =
        total(for_slabs(finest, [&](int j) { return take_step(finest, j, step, directions); }));
}

SolveRecord Multigrid::conjugate_gradients(const Source& source, const MultigridLimits& limits) {
    MultigridLevel& finest = meshes_.level.front();
    const double cells = static_cast<double>(finest.ni) * finest.nj * finest.nk;
    const auto mean = static_cast<float>(source.sum / cells);
    steps_ = 0;
    residual_ =
        total(for_slabs(finest, [&](int j) { return take_off(finest, j, mean, finest.r); }));
    SolveRecord result{.n = 0, .r0 = static_cast<float>(source.r0)};
    const auto is_enough = [&] {
        result.r1 = static_cast<float>(residual_);
        result.a = residual_ == 0 ? 0.0F : static_cast<float>(residual_ / source.r0);
        return residual_ == 0 || limits.stop_ratio > result.a;
    };
    if (is_enough()) {
        return result;
    }
    for (int n = 1; n <= limits.cycles; ++n) {
        cycle_and_step(n);
        if (is_enough()) {
            result.n = n;
            return result;
        }
        if (steps_ < n || !std::isfinite(residual_)) {
            break;
        }
    }
    result.n = std::max(0, limits.cycles) + 1;
    return result;
}

void Multigrid::store(const CellRange& cells, Storing storing, Field3& pp) const {
    const Solution solution{
        .x = steps_ > 1 ? &x_ : nullptr, .p = steps_ > 0 ? &p_ : nullptr, .factor = alpha_};
    const MultigridLevel& finest = meshes_.level.front();
    for_slabs(finest, [&](int j) {
        store_cells(cells, solution, storing, j, finest, pp);
        return 0;
    });
}

SolveRecord Multigrid::solve(const FaceSystem& system, Field3& pp, const MultigridLimits& limits) {
    const CellRange cells{2, 2, 2, pp.ni() - 1, pp.nj() - 1, pp.nk() - 1};
    if (is_empty(cells)) {
        return {.n = 0};
    }
    const Source source = load(cells, {system.a_e, system.a_n, system.a_t}, system.su);
    const SolveRecord result = conjugate_gradients(source, limits);
    store(cells, Storing::assign, pp);
    return result;
}

SolveRecord Multigrid::operator()(const CellRange& cells, LinearSystem& eq, Field3& pp,
                                  int cycles) {
    if (is_empty(cells)) {
        return {.n = 0};
    }
    Source source = load(cells, {eq.ae, eq.an, eq.at}, eq.su);
    if (!is_zero(cells, pp)) {
        source = start_from(cells, pp, source);
    }
    const SolveRecord result = conjugate_gradients(source, {.cycles = cycles});
    store(cells, Storing::add, pp);
    return result;
}

}  // namespace torvex
