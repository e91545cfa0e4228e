#include "solver/test_systems.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <random>

namespace torvex {

namespace {

CellRange all(const Field3& f) {
    return {1, 1, 1, f.ni(), f.nj(), f.nk()};
}

void sum_diagonal(LinearSystem& eq, float factor) {
    for_cells(all(eq.ap), [&](int i, int j, int k) {
        eq.ap(i, j, k) = factor * (eq.ae(i, j, k) + eq.aw(i, j, k) + eq.an(i, j, k) +
                                   eq.as(i, j, k) + eq.at(i, j, k) + eq.ab(i, j, k));
    });
}

// su such that `exact` solves the system.
void manufacture(LinearSystem& eq, const Field3& exact) {
    const CellRange cells = interior(exact.ni(), exact.nj(), exact.nk());
    for_cells(cells, [&](int i, int j, int k) {
        const auto x = [&](int di, int dj, int dk) {
            return double(exact(i + di, j + dj, k + dk));
        };
        eq.su(i, j, k) = double(eq.ap(i, j, k)) * x(0, 0, 0) - double(eq.ae(i, j, k)) * x(1, 0, 0) -
                         double(eq.aw(i, j, k)) * x(-1, 0, 0) -
                         double(eq.an(i, j, k)) * x(0, 1, 0) -
                         double(eq.as(i, j, k)) * x(0, -1, 0) -
                         double(eq.at(i, j, k)) * x(0, 0, 1) - double(eq.ab(i, j, k)) * x(0, 0, -1);
    });
}

}  // namespace

LinearSystem empty_system(int ni, int nj, int nk) {
    LinearSystem eq;
    for (Field3* f : {&eq.ae, &eq.aw, &eq.an, &eq.as, &eq.at, &eq.ab, &eq.res}) {
        f->allocate(ni, nj, nk);
    }
    eq.ap.allocate(ni, nj, nk, 1);
    eq.su.allocate(ni, nj, nk);
    eq.sp.allocate(ni, nj, nk);
    return eq;
}

CellRange interior(int ni, int nj, int nk) {
    return {2, 2, 2, ni - 1, nj - 1, nk - 1};
}

LinearSystem random_system(int ni, int nj, int nk, float dominance, std::uint32_t seed) {
    LinearSystem eq = empty_system(ni, nj, nk);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> coefficient(0.2F, 2.0F);
    std::uniform_real_distribution<double> source(-3.0, 3.0);
    for (Field3* f : {&eq.ae, &eq.aw, &eq.an, &eq.as, &eq.at, &eq.ab}) {
        std::generate_n(f->data(), f->size(), [&] { return coefficient(random); });
    }
    std::generate_n(eq.su.data(), eq.su.size(), [&] { return source(random); });
    sum_diagonal(eq, dominance);
    return eq;
}

Field3 random_field(int ni, int nj, int nk, std::uint32_t seed) {
    Field3 f(ni, nj, nk);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> value(-1.0F, 1.0F);
    std::generate_n(f.data(), f.size(), [&] { return value(random); });
    return f;
}

LinearSystem transport_system(const Field3& exact, float cx, float cy, float cz) {
    LinearSystem eq = empty_system(exact.ni(), exact.nj(), exact.nk());
    eq.ae.fill(1 + std::max(-cx, 0.0F));
    eq.aw.fill(1 + std::max(cx, 0.0F));
    eq.an.fill(1 + std::max(-cy, 0.0F));
    eq.as.fill(1 + std::max(cy, 0.0F));
    eq.at.fill(1 + std::max(-cz, 0.0F));
    eq.ab.fill(1 + std::max(cz, 0.0F));
    sum_diagonal(eq, 1);
    manufacture(eq, exact);
    return eq;
}

LinearSystem neumann_system(const Field3& exact) {
    LinearSystem eq = transport_system(exact, 0, 0, 0);
    const CellRange c = interior(exact.ni(), exact.nj(), exact.nk());
    for_cells(c, [&](int i, int j, int k) {
        eq.ae(i, j, k) = i == c.i2 ? 0.0F : 1.0F;
        eq.aw(i, j, k) = i == c.i1 ? 0.0F : 1.0F;
        eq.an(i, j, k) = j == c.j2 ? 0.0F : 1.0F;
        eq.as(i, j, k) = j == c.j1 ? 0.0F : 1.0F;
        eq.at(i, j, k) = k == c.k2 ? 0.0F : 1.0F;
        eq.ab(i, j, k) = k == c.k1 ? 0.0F : 1.0F;
    });
    sum_diagonal(eq, 1);
    manufacture(eq, exact);
    return eq;
}

Field3 smooth_field(int ni, int nj, int nk) {
    Field3 f(ni, nj, nk);
    for_cells(all(f), [&](int i, int j, int k) {
        f(i, j, k) =
            float(std::sin(0.7 * i) * std::cos(0.5 * j) + 0.3 * std::sin(0.9 * k + 0.2 * i));
    });
    return f;
}

Field3 direct_solution(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    const int mi = cells.i2 - cells.i1 + 1;
    const int mj = cells.j2 - cells.j1 + 1;
    const int mk = cells.k2 - cells.k1 + 1;
    const int cell_count = mi * mj * mk;
    const auto unknowns = static_cast<std::size_t>(cell_count);
    const auto number = [&](int i, int j, int k) {
        const int cell = i - cells.i1 + mi * (j - cells.j1 + mj * (k - cells.k1));
        return static_cast<std::size_t>(cell);
    };
    std::vector<std::vector<double>> a(unknowns, std::vector<double>(unknowns + 1));
    for_cells(cells, [&](int i, int j, int k) {
        std::vector<double>& row = a[number(i, j, k)];
        row[number(i, j, k)] += double(eq.ap(i, j, k));
        row[unknowns] += eq.su(i, j, k);
        const auto neighbour = [&](float c, int in, int jn, int kn) {
            if (in < cells.i1 || in > cells.i2 || jn < cells.j1 || jn > cells.j2 || kn < cells.k1 ||
                kn > cells.k2) {
                row[unknowns] += double(c) * double(phi(in, jn, kn));
            } else {
                row[number(in, jn, kn)] -= double(c);
            }
        };
        neighbour(eq.ae(i, j, k), i + 1, j, k);
        neighbour(eq.aw(i, j, k), i - 1, j, k);
        neighbour(eq.an(i, j, k), i, j + 1, k);
        neighbour(eq.as(i, j, k), i, j - 1, k);
        neighbour(eq.at(i, j, k), i, j, k + 1);
        neighbour(eq.ab(i, j, k), i, j, k - 1);
    });
    for (std::size_t p = 0; p < unknowns; ++p) {
        const auto largest_row =
            std::max_element(a.begin() + std::ptrdiff_t(p), a.end(),
                             [&](auto& x, auto& y) { return std::abs(x[p]) < std::abs(y[p]); });
        std::swap(a[p], *largest_row);
        for (std::size_t q = p + 1; q < unknowns; ++q) {
            if (const double f = a[q][p] / a[p][p]; f != 0) {
                for (std::size_t c = p; c <= unknowns; ++c) {
                    a[q][c] -= f * a[p][c];
                }
            }
        }
    }
    std::vector<double> x(unknowns);
    for (std::size_t p = unknowns; p-- > 0;) {
        double s = a[p][unknowns];
        for (std::size_t c = p + 1; c < unknowns; ++c) {
            s -= a[p][c] * x[c];
        }
        x[p] = s / a[p][p];
    }
    Field3 solution = phi;
    for_cells(cells, [&](int i, int j, int k) { solution(i, j, k) = float(x[number(i, j, k)]); });
    return solution;
}

double largest_difference(const CellRange& cells, const Field3& a, const Field3& b) {
    double most = 0;
    for_cells(cells, [&](int i, int j, int k) {
        const double d = std::abs(double(a(i, j, k)) - double(b(i, j, k)));
        most = std::isnan(d) ? HUGE_VAL : std::max(most, d);
    });
    return most;
}

double largest(const CellRange& cells, const Field3& a) {
    double most = 0;
    for_cells(cells,
              [&](int i, int j, int k) { most = std::max(most, std::abs(double(a(i, j, k)))); });
    return most;
}

bool same_bits(const Field3& a, const Field3& b) {
    return a.size() == b.size() &&
           std::equal(a.data(), a.data() + a.size(), b.data(), [](float x, float y) {
               return std::bit_cast<std::uint32_t>(x) == std::bit_cast<std::uint32_t>(y);
           });
}

bool same_outside(const CellRange& c, const Field3& a, const Field3& b) {
    Field3 inside_alike = b;
    for_cells(c, [&](int i, int j, int k) { inside_alike(i, j, k) = a(i, j, k); });
    return same_bits(a, inside_alike);
}

}  // namespace torvex
