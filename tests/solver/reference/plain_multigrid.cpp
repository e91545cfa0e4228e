#include "solver/reference/plain_multigrid.hpp"

#include <cmath>

namespace torvex::plain {

namespace {

template <class Action>
void for_columns(const Mesh& m, const Action& action) {
    for (int j = 1; j <= m.nj; ++j) {
        for (int i = 1; i <= m.ni; ++i) {
            action(i, j);
        }
    }
}

template <class Action>
void for_all(const Mesh& m, const Action& action) {
    for (int k = 1; k <= m.nk; ++k) {
        for_columns(m, [&](int i, int j) { action(i, j, k); });
    }
}

// Conductance between the middles of two aggregates, along one line of cells.
double in_series(double before, double face, bool behind_is_pair, double behind) {
    if (before == 0 || face == 0 || (behind_is_pair && behind == 0)) {
        return 0;
    }
    return 1 / (0.5 / before + 1 / face + (behind_is_pair ? 0.5 / behind : 0));
}

void sweep(Mesh& m, int colour, double shift) {
    for_columns(m, [&](int i, int j) {
        if ((i + j) % 2 == colour) {
            solve_line(m, i, j, shift);
        }
    });
}

// Weight of aggregate I of n/2 in cell i of n, in one direction.
double weight(int i, int n, int I) {
    const int aggregates = (n + 1) / 2;
    const int own = (i + 1) / 2;
    const bool alone = i == n && i % 2 == 1;
    const int beside = i % 2 == 1 ? own - 1 : own + 1;
    const bool has_beside = !alone && beside >= 1 && beside <= aggregates;
    if (I == own) {
        return has_beside ? 0.75 : 1.0;
    }
    return has_beside && I == beside ? 0.25 : 0.0;
}

}  // namespace

Mesh::Mesh(int ni_, int nj_, int nk_)
    : ni(ni_),
      nj(nj_),
      nk(nk_),
      ae(ni, nj, nk),
      an(ni, nj, nk),
      at(ni, nj, nk),
      r(ni, nj, nk),
      z(ni, nj, nk) {}

double product(const Mesh& m, const Values& x, int i, int j, int k) {
    const double c = x(i, j, k);
    return m.ae(i, j, k) * (c - x(i + 1, j, k)) + m.ae(i - 1, j, k) * (c - x(i - 1, j, k)) +
           m.an(i, j, k) * (c - x(i, j + 1, k)) + m.an(i, j - 1, k) * (c - x(i, j - 1, k)) +
           m.at(i, j, k) * (c - x(i, j, k + 1)) + m.at(i, j, k - 1) * (c - x(i, j, k - 1));
}

void solve_line(Mesh& m, int i, int j, double shift) {
    std::vector<double> pivot(std::size_t(m.nk) + 2);
    std::vector<double> y(std::size_t(m.nk) + 2);
    for (int k = 1; k <= m.nk; ++k) {
        const auto n = std::size_t(k);
        const double ae = m.ae(i, j, k);
        const double aw = m.ae(i - 1, j, k);
        const double an = m.an(i, j, k);
        const double as = m.an(i, j - 1, k);
        const double ab = m.at(i, j, k - 1);
        const double ap = (ae + aw + an + as) * (1 + shift) + m.at(i, j, k) + ab;
        const double f = m.r(i, j, k) + ae * m.z(i + 1, j, k) + aw * m.z(i - 1, j, k) +
                         an * m.z(i, j + 1, k) + as * m.z(i, j - 1, k);
        pivot[n] = ap - (k > 1 ? ab * ab / pivot[n - 1] : 0);
        y[n] = f + (k > 1 ? ab / pivot[n - 1] * y[n - 1] : 0);
        if (pivot[n] < 1e-10 * ap) {  // the level of a line without neighbours
            pivot[n] = 1;
            y[n] = 0;
        }
    }
    for (int k = m.nk; k >= 1; --k) {
        const auto n = std::size_t(k);
        m.z.set(i, j, k) = (y[n] + m.at(i, j, k) * m.z(i, j, k + 1)) / pivot[n];
    }
}

Mesh coarse_mesh(const Mesh& fine) {
    Mesh coarse((fine.ni + 1) / 2, (fine.nj + 1) / 2, fine.nk);
    for_all(fine, [&](int i, int j, int k) {
        const int I = (i + 1) / 2;
        const int J = (j + 1) / 2;
        coarse.at.set(I, J, k) += fine.at(i, j, k);
        if (i % 2 == 0 && i < fine.ni) {
            coarse.ae.set(I, J, k) += in_series(fine.ae(i - 1, j, k), fine.ae(i, j, k),
                                                i + 2 <= fine.ni, fine.ae(i + 1, j, k));
        }
        if (j % 2 == 0 && j < fine.nj) {
            coarse.an.set(I, J, k) += in_series(fine.an(i, j - 1, k), fine.an(i, j, k),
                                                j + 2 <= fine.nj, fine.an(i, j + 1, k));
        }
    });
    return coarse;
}

void restrict_residual(const Mesh& fine, Mesh& coarse) {
    for_all(coarse, [&](int i, int j, int k) { coarse.r.set(i, j, k) = 0; });
    for_all(fine, [&](int i, int j, int k) {
        coarse.r.set((i + 1) / 2, (j + 1) / 2, k) +=
            fine.r(i, j, k) - product(fine, fine.z, i, j, k);
    });
}

void prolong(const Mesh& coarse, Mesh& fine) {
    for_all(fine, [&](int i, int j, int k) {
        const int I = (i + 1) / 2;
        const int J = (j + 1) / 2;
        for (int b = J - 1; b <= J + 1; ++b) {
            for (int a = I - 1; a <= I + 1; ++a) {
                fine.z.set(i, j, k) +=
                    weight(i, fine.ni, a) * weight(j, fine.nj, b) * coarse.z(a, b, k);
            }
        }
    });
}

void v_cycle(Mesh& m) {
    for_all(m, [&](int i, int j, int k) { m.z.set(i, j, k) = 0; });
    if (m.ni * m.nj <= 3) {
        for (int n = 0; n < 12; ++n) {
            sweep(m, 0, 1e-5);
            sweep(m, 1, 1e-5);
        }
        return;
    }
    sweep(m, 0, 1e-6);
    sweep(m, 1, 1e-6);
    Mesh coarse = coarse_mesh(m);
    restrict_residual(m, coarse);
    v_cycle(coarse);
    prolong(coarse, m);
    sweep(m, 1, 1e-6);
    sweep(m, 0, 1e-6);
}

}  // namespace torvex::plain
