#include "run/momentum_balance.hpp"

#include <cmath>

#include "results/result_files.hpp"

namespace torvex::test {

LevelMesh::LevelMesh(const std::string& file) {
    const Extents n = read_extents(file, {1, 1, 1});
    for (Field3* field : {&xn_, &yn_, &zn_}) {
        field->allocate(n.ni, n.nj, n.nk);
    }
    read_xyz(file, xn_, yn_, zn_);
    nx = n.ni;
    ny = n.nj;
    nz = n.nk;
}

namespace {

double log_law_shear(const LevelMesh& m, const FlowState& s, int i, int j) {
    constexpr double C_mu = 0.09;
    constexpr double kappa = 0.41;
    constexpr double z0 = 0.03;
    const double friction = std::pow(C_mu, 0.25) * std::sqrt(wide(s.tke(i, j, 2))) * kappa;
    return friction / std::log(m.h(2) / z0) * wide(s.u(i, j, 2)) * m.dx(i) * m.dy(j);
}

}  // namespace

MomentumBalance momentum_balance(const LevelMesh& m, const FlowState& s,
                                 const std::function<double(int, int, int)>& drag_density) {
    MomentumBalance b;
    const int nx = m.nx;
    for (int k = 2; k <= m.nz; ++k) {
        for (int j = 2; j <= m.ny; ++j) {
            const double A = m.dy(j) * m.dz(k);
            const auto u = [&](int i) { return wide(s.u(i, j, k)); };
            const double in = wide(s.flxU(1, j, k)) * u(1);
            const double out = wide(s.flxU(nx, j, k)) * u(nx);
            const double pressure = (wide(s.p(1, j, k)) - wide(s.p(nx + 1, j, k))) * A;
            const double stress_in = 2 * wide(s.vis(1, j, k)) * (u(2) - u(1)) / (0.5 * m.dx(2)) * A;
            const double stress_out =
                2 * wide(s.vis(nx + 1, j, k)) * (u(nx + 1) - u(nx)) / (0.5 * m.dx(nx)) * A;
            b.in += in;
            b.lost += in - out + pressure + stress_out - stress_in;
        }
    }
    m.for_cells([&](int i, int j, int k) {
        if (k == 2) {
            b.lost -= log_law_shear(m, s, i, j);
        }
        const double V = std::hypot(wide(s.u(i, j, k)), wide(s.v(i, j, k)), wide(s.w(i, j, k)));
        b.drag += drag_density(i, j, k) * V * wide(s.u(i, j, k)) * m.dx(i) * m.dy(j) * m.dz(k);
        b.imbalance +=
            std::abs(wide(s.flxU(i, j, k)) - wide(s.flxU(i - 1, j, k)) + wide(s.flxV(i, j, k)) -
                     wide(s.flxV(i, j - 1, k)) + wide(s.flxW(i, j, k)) - wide(s.flxW(i, j, k - 1)));
    });
    return b;
}

double unsolved_momentum(const MomentumBalance& b, double resid_u) {
    constexpr double wind = 10.0;
    return resid_u * b.in + b.imbalance * wind;
}

}  // namespace torvex::test
