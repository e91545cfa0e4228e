#include "solver/reference/plain_line_sweeps.hpp"

#include <cmath>
#include <cstddef>
#include <vector>

namespace torvex {

namespace {

// su and the four neighbours beside the line.
template <class Phi>
double known(const LinearSystem& eq, const Field3& su, const Phi& phi, int i, int j, int k) {
    return double(su(i, j, k)) + double(eq.ae(i, j, k)) * double(phi(i + 1, j, k)) +
           double(eq.aw(i, j, k)) * double(phi(i - 1, j, k)) +
           double(eq.an(i, j, k)) * double(phi(i, j + 1, k)) +
           double(eq.as(i, j, k)) * double(phi(i, j - 1, k));
}

// Elimination from the top, the other way than a solver that begins at the ground.
void solve_line(const LinearSystem& eq, const Field3& su, Array3<double>& phi, int i, int j) {
    const int nz = eq.ap.nk() - 1;
    std::vector<double> factor(static_cast<std::size_t>(nz) + 2);
    std::vector<double> value(static_cast<std::size_t>(nz) + 2);
    const auto at = [](int k) { return static_cast<std::size_t>(k); };
    value[at(nz + 1)] = phi(i, j, nz + 1);
    for (int k = nz; k >= 2; --k) {
        const auto above = double(eq.at(i, j, k));
        const double pivot = double(eq.ap(i, j, k)) - above * factor[at(k + 1)];
        factor[at(k)] = double(eq.ab(i, j, k)) / pivot;
        value[at(k)] = (known(eq, su, phi, i, j, k) + above * value[at(k + 1)]) / pivot;
    }
    for (int k = 2; k <= nz; ++k) {
        phi(i, j, k) = value[at(k)] + factor[at(k)] * phi(i, j, k - 1);
    }
}

}  // namespace

void plain_line_sweeps(const LinearSystem& eq, const Field3& su, Array3<double>& phi, int sweeps) {
    for (int half = 0; half < 2 * sweeps; ++half) {
        for (int j = 2; j < eq.ap.nj(); ++j) {
            for (int i = 2; i < eq.ap.ni(); ++i) {
                if ((i + j) % 2 == half % 2) {
                    solve_line(eq, su, phi, i, j);
                }
            }
        }
    }
}

double plain_line_residual(const LinearSystem& eq, const Field3& su, const Field3& phi) {
    double sum = 0;
    for (int k = 2; k < eq.ap.nk(); ++k) {
        for (int j = 2; j < eq.ap.nj(); ++j) {
            for (int i = 2; i < eq.ap.ni(); ++i) {
                sum += std::abs(known(eq, su, phi, i, j, k) +
                                double(eq.at(i, j, k)) * double(phi(i, j, k + 1)) +
                                double(eq.ab(i, j, k)) * double(phi(i, j, k - 1)) -
                                double(eq.ap(i, j, k)) * double(phi(i, j, k)));
            }
        }
    }
    return sum;
}

}  // namespace torvex
