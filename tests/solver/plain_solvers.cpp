#include "solver/plain_solvers.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "solver/test_systems.hpp"

namespace torvex {

namespace {

float products(const LinearSystem& eq, const Field3& x, int i, int j, int k) {
    return eq.ae(i, j, k) * x(i + 1, j, k) + eq.aw(i, j, k) * x(i - 1, j, k) +
           eq.an(i, j, k) * x(i, j + 1, k) + eq.as(i, j, k) * x(i, j - 1, k) +
           eq.at(i, j, k) * x(i, j, k + 1) + eq.ab(i, j, k) * x(i, j, k - 1) -
           eq.ap(i, j, k) * x(i, j, k);
}

float residual(const LinearSystem& eq, const Field3& x, int i, int j, int k) {
    return float(double(products(eq, x, i, j, k)) + eq.su(i, j, k));
}

// Gauss-Seidel rounds on the normal equations of the stored corrections.
std::vector<float> weights(const std::vector<std::vector<float>>& gram,
                           const std::vector<float>& rhs) {
    const std::size_t m = rhs.size();
    std::vector<float> beta(m, 0.0F);
    const auto rest = [&](std::size_t a) {
        float r = rhs[a];
        for (std::size_t b = 0; b < m; ++b) {
            r -= gram[a][b] * beta[b];
        }
        return r;
    };
    for (int round = 0; round < 100; ++round) {
        float sum = 0;
        for (std::size_t a = 0; a < m; ++a) {
            sum += std::abs(rest(a));
        }
        if (sum < 0.0001F) {
            break;
        }
        for (std::size_t a = 0; a < m; ++a) {
            if (gram[a][a] > 0) {
                beta[a] += rest(a) / gram[a][a];
            }
        }
    }
    return beta;
}

}  // namespace

void plain_sweep_phi(const CellRange& c, LinearSystem& eq, Field3& phi, float relax) {
    for (int ck = 0; ck <= 1; ++ck) {
        for (int cj = 0; cj <= 1; ++cj) {
            for (int k = c.k1 + ck; k <= c.k2; k += 2) {
                for (int j = c.j1 + cj; j <= c.j2; j += 2) {
                    for (int i = c.i1; i <= c.i2; ++i) {
                        const float r = residual(eq, phi, i, j, k);
                        eq.res(i, j, k) = r;
                        phi(i, j, k) += relax * r / eq.ap(i, j, k);
                    }
                }
            }
        }
    }
}

void plain_sip(const CellRange& c, const LinearSystem& eq, const Field3& rhs, Field3& phi,
               int nsweep, float alpha) {
    const int ni = rhs.ni();
    const int nj = rhs.nj();
    const int nk = rhs.nk();
    Field3 lb(ni, nj, nk), lw(ni, nj, nk), ls(ni, nj, nk), lpr(ni, nj, nk);
    Field3 un(ni, nj, nk), ue(ni, nj, nk), ut(ni, nj, nk), w(ni, nj, nk);
    phi.allocate(ni, nj, nk);
    for_cells(c, [&](int i, int j, int k) {
        lb(i, j, k) = -eq.ab(i, j, k) / (1 + alpha * (un(i, j, k - 1) + ue(i, j, k - 1)));
        lw(i, j, k) = -eq.aw(i, j, k) / (1 + alpha * (un(i - 1, j, k) + ut(i - 1, j, k)));
        ls(i, j, k) = -eq.as(i, j, k) / (1 + alpha * (ue(i, j - 1, k) + ut(i, j - 1, k)));
        const float p1 = lb(i, j, k) * un(i, j, k - 1) + lw(i, j, k) * un(i - 1, j, k);
        const float p2 = lb(i, j, k) * ue(i, j, k - 1) + ls(i, j, k) * ue(i, j - 1, k);
        const float p3 = lw(i, j, k) * ut(i - 1, j, k) + ls(i, j, k) * ut(i, j - 1, k);
        lpr(i, j, k) =
            1 / (eq.ap(i, j, k) + alpha * (p1 + p2 + p3) - lb(i, j, k) * ut(i, j, k - 1) -
                 lw(i, j, k) * ue(i - 1, j, k) - ls(i, j, k) * un(i, j - 1, k));
        un(i, j, k) = (-eq.an(i, j, k) - alpha * p1) * lpr(i, j, k);
        ue(i, j, k) = (-eq.ae(i, j, k) - alpha * p2) * lpr(i, j, k);
        ut(i, j, k) = (-eq.at(i, j, k) - alpha * p3) * lpr(i, j, k);
    });
    for (int sweep = 0; sweep < nsweep; ++sweep) {
        w.fill(0);
        for_cells(c, [&](int i, int j, int k) {
            const float r = products(eq, phi, i, j, k) + rhs(i, j, k);
            w(i, j, k) = (r - lb(i, j, k) * w(i, j, k - 1) - lw(i, j, k) * w(i - 1, j, k) -
                          ls(i, j, k) * w(i, j - 1, k)) *
                         lpr(i, j, k);
        });
        for (int k = c.k2; k >= c.k1; --k) {
            for (int j = c.j2; j >= c.j1; --j) {
                for (int i = c.i2; i >= c.i1; --i) {
                    w(i, j, k) = w(i, j, k) - un(i, j, k) * w(i, j + 1, k) -
                                 ue(i, j, k) * w(i + 1, j, k) - ut(i, j, k) * w(i, j, k + 1);
                    phi(i, j, k) += w(i, j, k);
                }
            }
        }
    }
}

SolveRecord plain_rcm(const CellRange& c, const LinearSystem& eq, Field3& phi, int L, int ncycle,
                      float r0) {
    const int ni = phi.ni();
    const int nj = phi.nj();
    const int nk = phi.nk();
    std::vector<Field3> d, images;
    SolveRecord result{0, 1, 0};
    for (; result.n <= ncycle; ++result.n) {
        Field3 rhs(ni, nj, nk), dphi(ni, nj, nk), image(ni, nj, nk);
        for_cells(c, [&](int i, int j, int k) { rhs(i, j, k) = residual(eq, phi, i, j, k); });
        plain_sip(c, eq, rhs, dphi, 7, 0.9F);
        for_cells(c, [&](int i, int j, int k) { image(i, j, k) = -products(eq, dphi, i, j, k); });
        d.insert(d.begin(), dphi);
        images.insert(images.begin(), image);
        const auto m = static_cast<std::size_t>(std::min(L, result.n));
        d.resize(m);
        images.resize(m);
        std::vector<std::vector<float>> gram(m, std::vector<float>(m));
        std::vector<float> right(m);
        for (std::size_t a = 0; a < m; ++a) {
            for_cells(c, [&](int i, int j, int k) {
                for (std::size_t b = 0; b < m; ++b) {
                    gram[a][b] += images[a](i, j, k) * images[b](i, j, k);
                }
                right[a] += images[a](i, j, k) * rhs(i, j, k);
            });
        }
        const std::vector<float> beta = weights(gram, right);
        for_cells(c, [&](int i, int j, int k) {
            for (std::size_t a = 0; a < m; ++a) {
                phi(i, j, k) += beta[a] * d[a](i, j, k);
            }
        });
        result.r1 = 0;
        for_cells(c,
                  [&](int i, int j, int k) { result.r1 += std::abs(residual(eq, phi, i, j, k)); });
        result.a = result.r1 / r0;
        if (0.1F > result.a) {
            break;
        }
    }
    return result;
}

double exact_residual(const LinearSystem& eq, const Field3& x, int i, int j, int k) {
    const auto product = [](float a, float b) { return double(a) * double(b); };
    return product(eq.ae(i, j, k), x(i + 1, j, k)) + product(eq.aw(i, j, k), x(i - 1, j, k)) +
           product(eq.an(i, j, k), x(i, j + 1, k)) + product(eq.as(i, j, k), x(i, j - 1, k)) +
           product(eq.at(i, j, k), x(i, j, k + 1)) + product(eq.ab(i, j, k), x(i, j, k - 1)) -
           product(eq.ap(i, j, k), x(i, j, k)) + eq.su(i, j, k);
}

}  // namespace torvex
