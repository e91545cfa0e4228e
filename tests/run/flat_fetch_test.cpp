// Whole cases over level ground of even roughness, six kilometres long: what the log law at the
// ground takes from the wind, seen from the balance of the whole domain.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

constexpr double kappa = 0.41;
constexpr double z0_ground = 0.03;
constexpr double z0_tunnel = 0.002;

struct Fetch {
    std::string model = "1";
    int tunnel_mode = 0;
    double c_mu() const { return model == "2" ? 0.094 : 0.09; }
};

CaseItems fetch_case(const Fetch& fetch, const std::string& solver) {
    return hill_case(
        {{"NML_CASEFILE", "WE_LENGTH = 200, NS_LENGTH = 200"},
         {"NML_CASEFILE", "MIN_DXY = 50, MAX_DXY = 100, MIN_DXY_RAD = 140"},
         {"NML_BOUNDARY_TREATMENT", "ADD_R = 20, UP_BR = 1, DOWN_BR = 1, SIDE_BR = 0.7"},
         {"NML_BOUNDARY_TREATMENT", "WIND_TUNNEL_MODE = " + std::to_string(fetch.tunnel_mode)},
         {"NML_BOUNDARY_TREATMENT", "WIND_TUNNEL_Z0 = 0.002"},
         {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + fetch.model},
         {"NML_NUMERICAL_SOLVER", "MAXIT = 600, " + solver}});
}

// Friction velocity of the log law between a wall and the centre of the cell beside it.
double friction_velocity(double speed, double distance, double z0) {
    return kappa * speed / std::log(distance / z0);
}

class FlatFetch : public WholeCase {};

// Everything that brings momentum along the wind into the domain [N], and what the walls take by
// the log law, the stress den u* c_mu^(1/4) sqrt(k).
class MomentumBalance {
 public:
    MomentumBalance(const Solution& s, const Fetch& fetch)
        : g_(s.grid), f_(s.flow), c_mu_(fetch.c_mu()) {
        for (int j = 2; j <= g_.ny; ++j) {
            for (int k = 2; k <= g_.nz; ++k) {
                ends(j, k);
            }
            for (int i = 2; i <= g_.nx; ++i) {
                walls += stress(i, j, 2, z(2) - z_node(1), z0_ground) * dx(i) * dy(j);
                if (fetch.tunnel_mode > 0) {
                    const double d = z_node(g_.nz) - z(g_.nz);
                    walls += stress(i, j, g_.nz, d, z0_tunnel) * dx(i) * dy(j);
                }
            }
        }
        for (int k = 2; k <= g_.nz && fetch.tunnel_mode > 1; ++k) {
            for (int i = 2; i <= g_.nx; ++i) {
                const double area = dx(i) * dz(k);
                walls += stress(i, 2, k, dy(2) / 2, z0_tunnel) * area;
                walls += stress(i, g_.ny, k, dy(g_.ny) / 2, z0_tunnel) * area;
            }
        }
    }

    double convection = 0, pressure = 0, viscous = 0;
    double walls = 0;

    // In parts of what the walls take.
    double left_over() const { return (convection + pressure + viscous - walls) / walls; }

 private:
    static double d(float x) { return static_cast<double>(x); }
    double dx(int i) const { return d(g_.xn(i, 1, 1)) - d(g_.xn(i - 1, 1, 1)); }
    double dy(int j) const { return d(g_.yn(1, j, 1)) - d(g_.yn(1, j - 1, 1)); }
    double dz(int k) const { return z_node(k) - z_node(k - 1); }
    double z_node(int k) const { return d(g_.zn(1, 1, k)); }
    double z(int k) const { return (z_node(k) + z_node(k - 1)) / 2; }

    // Inflow and outflow face of row (j,k). The upwind value leaves; the normal viscous stress is
    // twice the viscosity times the stretching.
    void ends(int j, int k) {
        const double area = dy(j) * dz(k);
        convection +=
            d(f_.flxU(1, j, k)) * d(f_.u(1, j, k)) - d(f_.flxU(g_.nx, j, k)) * d(f_.u(g_.nx, j, k));
        pressure += area * (d(f_.p(1, j, k)) - d(f_.p(g_.ni, j, k)));
        const double out = (d(f_.u(g_.ni, j, k)) - d(f_.u(g_.nx, j, k))) / (dx(g_.nx) / 2);
        const double in = (d(f_.u(2, j, k)) - d(f_.u(1, j, k))) / (dx(2) / 2);
        viscous += 2 * area * (d(f_.vis(g_.ni, j, k)) * out - d(f_.vis(1, j, k)) * in);
    }

    double stress(int i, int j, int k, double distance, double z0) const {
        return friction_velocity(d(f_.u(i, j, k)), distance, z0) * std::pow(c_mu_, 0.25) *
               std::sqrt(d(f_.tke(i, j, k)));
    }

    const GridGeometry& g_;
    const FlowState& f_;
    double c_mu_;
};

// The wind that comes in has a power law and more turbulence than the ground makes: over the first
// two kilometres it gets used to the ground. From there on only the stress that grows upwards slows
// it, u*^2 over the depth it has reached, and the speed changes by a few per cent. In the cells on
// the ground tke then has little but the two wall terms, production and sink, which balance where
// c_mu^(1/4) sqrt(k) is the friction velocity of the log law.
TEST_F(FlatFetch, TheProfileStaysOnceItHasMetTheGround) {
    for (const std::string model : {"1", "2"}) {
        SCOPED_TRACE("model " + model);
        const Fetch fetch{model};
        const Solution s = converged(fetch_case(fetch, "CC_OUT_U = 0.0001"));
        const auto first = static_cast<double>(s.grid.xn(1, 1, 1));
        const auto last = static_cast<double>(s.grid.xn(s.grid.nx, 1, 1));
        ASSERT_GT(last - first, 6000);
        const Column start = column_at(s, first, 0);
        const Column met = column_at(s, first + 2000, 0);
        const Column end = column_at(s, last, 0);
        const auto u = [&](const Column& at, double z) { return value_above(s, s.flow.u, at, z); };
        for (const double z : {10.0, 30.0, 100.0}) {
            EXPECT_NEAR(u(end, z) / u(met, z), 1.0, 0.04) << z << " m";
        }
        EXPECT_NEAR(u(end, 100) / u(start, 100), 1.0, 0.06);

        for (int i = met.i; i <= end.i; ++i) {
            const Column at{i, met.j};
            const double law = friction_velocity(static_cast<double>(s.flow.u(i, at.j, 2)),
                                                 height(s, at, 2), z0_ground);
            const double energy = std::pow(fetch.c_mu(), 0.25) *
                                  std::sqrt(static_cast<double>(s.flow.tke(i, at.j, 2)));
            EXPECT_NEAR(law / energy, 1.0, 0.01) << "column " << i;
        }
        if (model == "2") {
            // The mixing length of the k-l model goes on with the log law above the first cell.
            const double law = friction_velocity(static_cast<double>(s.flow.u(end.i, end.j, 2)),
                                                 height(s, end, 2), z0_ground) /
                               kappa * std::log(10 / z0_ground);
            EXPECT_NEAR(u(end, 10) / law, 1.0, 0.02);
        }
    }
}

// The mean of the log law's dissipation over the cell beside a wall.
double wall_dissipation(double energy, double distance, double z0, double c_mu) {
    return std::pow(c_mu, 0.75) * std::pow(energy, 1.5) * std::log(2 * distance / z0) /
           (kappa * 2 * distance);
}

// The walls of a tunnel: the wind rests on them, and ted beside them is that of the log law over
// WIND_TUNNEL_Z0. Cells on two walls are left out.
void expect_walls(const Solution& s, int mode) {
    const GridGeometry& g = s.grid;
    const FlowState& f = s.flow;
    const auto expect_ted = [&](int i, int j, int k, double distance) {
        const auto energy = static_cast<double>(f.tke(i, j, k));
        EXPECT_NEAR(static_cast<double>(f.ted(i, j, k)) /
                        wall_dissipation(energy, distance, z0_tunnel, 0.09),
                    1.0, 0.01)
            << i << ", " << j << ", " << k;
    };
    for (int j = 3; j < g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            EXPECT_EQ(f.u(i, j, g.nk), 0.0F);
            EXPECT_EQ(f.v(i, j, g.nk), 0.0F);
            EXPECT_EQ(f.w(i, j, g.nk), 0.0F);
            const Column at{i, j};
            expect_ted(i, j, g.nz, height(s, at, g.nk) - height(s, at, g.nz));
        }
    }
    for (int k = 3; k < g.nz && mode == 2; ++k) {
        for (int i = 2; i <= g.nx; ++i) {
            for (const auto& [cell, wall] : {std::pair{2, 1}, std::pair{g.ny, g.nj}}) {
                EXPECT_EQ(f.u(i, wall, k), 0.0F);
                EXPECT_EQ(f.v(i, wall, k), 0.0F);
                EXPECT_EQ(f.w(i, wall, k), 0.0F);
                const auto distance =
                    static_cast<double>(std::abs(g.yc(i, cell, k) - g.yc(i, wall, k)));
                expect_ted(i, cell, k, distance);
            }
        }
    }
}

// Every face within the domain passes on what it takes, so that at convergence the walls must take
// what inflow, outflow and pressure bring. (The deferred convection is left out: beside a boundary
// its two sides differ.)
TEST_F(FlatFetch, WallsTakeTheMomentumThatTheWindLoses) {
    for (const Fetch& fetch : {Fetch{"1", 0}, Fetch{"2", 0}, Fetch{"1", 1}, Fetch{"1", 2}}) {
        SCOPED_TRACE("model " + fetch.model + ", mode " + std::to_string(fetch.tunnel_mode));
        const Solution s = converged(fetch_case(fetch, "RATIO = 0, CC_OUT_U = 0.0001"));
        const MomentumBalance balance(s, fetch);
        EXPECT_NEAR(balance.left_over(), 0.0, 0.002);
        EXPECT_NEAR(mass_imbalance(s), 0.0, 1e-4);
        if (fetch.tunnel_mode > 0) {
            expect_walls(s, fetch.tunnel_mode);
        }
    }
}

}  // namespace
}  // namespace torvex::test
