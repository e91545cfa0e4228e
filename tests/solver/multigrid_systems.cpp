#include "solver/multigrid_systems.hpp"

#include <cmath>
#include <random>

#include "solver/multigrid_exchange.hpp"

namespace torvex {

namespace {

template <class Action>
void for_all(const FaceCase& c, const Action& action) {
    for (int k = 2; k <= c.nk + 1; ++k) {
        for (int j = 2; j <= c.nj + 1; ++j) {
            for (int i = 2; i <= c.ni + 1; ++i) {
                action(i, j, k);
            }
        }
    }
}

double product(const FaceCase& c, const Field3& x, int i, int j, int k) {
    const double p = double(x(i, j, k));
    const auto drop = [&](int di, int dj, int dk) { return p - double(x(i + di, j + dj, k + dk)); };
    return double(c.a_e(i, j, k)) * drop(1, 0, 0) + double(c.a_e(i - 1, j, k)) * drop(-1, 0, 0) +
           double(c.a_n(i, j, k)) * drop(0, 1, 0) + double(c.a_n(i, j - 1, k)) * drop(0, -1, 0) +
           double(c.a_t(i, j, k)) * drop(0, 0, 1) + double(c.a_t(i, j, k - 1)) * drop(0, 0, -1);
}

}  // namespace

FaceCase::FaceCase(int ni_, int nj_, int nk_)
    : ni(ni_),
      nj(nj_),
      nk(nk_),
      a_e(ni + 2, nj + 2, nk + 2),
      a_n(ni + 2, nj + 2, nk + 2),
      a_t(ni + 2, nj + 2, nk + 2),
      su(ni + 2, nj + 2, nk + 2) {}

void FaceCase::manufacture(const Field3& x) {
    for_all(*this, [&](int i, int j, int k) { su(i, j, k) = float(product(*this, x, i, j, k)); });
}

double FaceCase::residual(const Field3& x) const {
    double mean = 0;
    for_all(*this, [&](int i, int j, int k) { mean += double(su(i, j, k)); });
    mean /= double(ni) * nj * nk;
    double sum = 0;
    for_all(*this, [&](int i, int j, int k) {
        sum += std::abs(double(su(i, j, k)) - mean - product(*this, x, i, j, k));
    });
    return sum;
}

double FaceCase::source() const {
    double sum = 0;
    for_all(*this, [&](int i, int j, int k) { sum += std::abs(double(su(i, j, k))); });
    return sum;
}

FaceCase random_faces(int ni, int nj, int nk, const Along& along, float contrast, unsigned seed) {
    FaceCase c(ni, nj, nk);
    std::mt19937 random(seed);
    const auto number = [&] {  // 0..1, the same on every machine
        return float(random() >> 8U) / float(1U << 24U);
    };
    const auto coefficient = [&](float size, bool inside) {
        const float a = size * std::pow(contrast, number());
        return inside ? a : 0.0F;
    };
    for_all(c, [&](int i, int j, int k) {
        c.a_e(i, j, k) = coefficient(along.i, i <= ni);
        c.a_n(i, j, k) = coefficient(along.j, j <= nj);
        c.a_t(i, j, k) = coefficient(along.k, k <= nk);
        c.su(i, j, k) = 2 * number() - 1;
    });
    return c;
}

Field3 field_of(const FaceCase& c, const std::function<double(int i, int j, int k)>& x) {
    Field3 field(c.ni + 2, c.nj + 2, c.nk + 2);
    for_all(c, [&](int i, int j, int k) { field(i, j, k) = float(x(i - 1, j - 1, k - 1)); });
    return field;
}

MultigridMeshes slabs_of(const FaceCase& c) {
    const CellRange cells{2, 2, 2, c.ni + 1, c.nj + 1, c.nk + 1};
    MultigridMeshes meshes;
    meshes.allocate(c.ni, c.nj, c.nk);
    MultigridLevel& finest = meshes.level.front();
    set_coefficients(meshes, [&](int j) {
        load_faces(cells, {c.a_e, c.a_n, c.a_t}, j, finest);
        load_cells(cells, c.su, j, finest, finest.r);
    });
    return meshes;
}

plain::Mesh plain_of(const FaceCase& c) {
    plain::Mesh m(c.ni, c.nj, c.nk);
    for_all(c, [&](int i, int j, int k) {
        m.ae.set(i - 1, j - 1, k - 1) = double(c.a_e(i, j, k));
        m.an.set(i - 1, j - 1, k - 1) = double(c.a_n(i, j, k));
        m.at.set(i - 1, j - 1, k - 1) = double(c.a_t(i, j, k));
        m.r.set(i - 1, j - 1, k - 1) = double(c.su(i, j, k));
    });
    return m;
}

}  // namespace torvex
