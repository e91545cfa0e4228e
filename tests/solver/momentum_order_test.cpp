// Order of accuracy of the assembled operator: the residual of a field given in closed form over
// the volume of the cell, against the terms of the equation at its centre.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

#include "solver/momentum_assembly.hpp"
#include "solver/momentum_case.hpp"

namespace torvex {
namespace {

using test::MomentumCase;

// A sheared box of n cells along each edge; the edges are
constexpr Position edge_i{1.0, 0.0, 0.3};
constexpr Position edge_j{0.25, 1.0, 0.0};
constexpr Position edge_k{0.2, 0.1, 1.0};

GridGeometry sheared_box(int n) {
    return mapped_mesh({n + 1, n + 1, n + 1}, [](double s, double t, double q) {
        Position r{};
        for (std::size_t c = 0; c < 3; ++c) {
            r.at(c) = edge_i.at(c) * s + edge_j.at(c) * t + edge_k.at(c) * q;
        }
        return r;
    });
}

// Velocity and viscosity, and their derivatives in closed form: u_c = sin(a_c.r + b_c).
constexpr std::array<Position, 3> wave{{{2.0, 1.0, 1.5}, {1.0, -2.0, 1.0}, {-1.5, 1.0, 2.0}}};
constexpr std::array<double, 3> phase{0.3, 1.1, -0.4};
const Position viscosity_slope{0.3, -0.2, 0.4};

double argument(std::size_t c, const Position& r) {
    return wave.at(c)[0] * r[0] + wave.at(c)[1] * r[1] + wave.at(c)[2] * r[2] + phase.at(c);
}
double velocity(std::size_t c, const Position& r) {
    return std::sin(argument(c, r));
}
double slope(std::size_t c, std::size_t m, const Position& r) {
    return wave.at(c).at(m) * std::cos(argument(c, r));
}
double curvature(std::size_t c, std::size_t m, std::size_t n, const Position& r) {
    return -wave.at(c).at(m) * wave.at(c).at(n) * velocity(c, r);
}
double viscosity(const Position& r) {
    return 1.5 + viscosity_slope[0] * r[0] + viscosity_slope[1] * r[1] + viscosity_slope[2] * r[2];
}

// div (mu (grad u_a + d U/da))
double viscous(std::size_t a, const Position& r) {
    double sum = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        sum += viscosity_slope.at(c) * (slope(a, c, r) + slope(c, a, r)) +
               viscosity(r) * (curvature(a, c, c, r) + curvature(c, a, c, r));
    }
    return sum;
}

void fill(MomentumCase& c) {
    c.fill(c.s.u, [](Position r) { return velocity(0, r); });
    c.fill(c.s.v, [](Position r) { return velocity(1, r); });
    c.fill(c.s.w, [](Position r) { return velocity(2, r); });
}

// Root mean square of (neighbours - ap phi + su)/vol less the exact terms, over the cells that lie
// within the middle half of the box along each edge.
template <Component A, class Exact>
double error(MomentumCase& c, const Exact& exact) {
    assemble_momentum<Component::u>(c.context(), c.work.momentum);
    if constexpr (A != Component::u) {
        assemble_momentum<A>(c.context(), c.work.momentum);
    }
    const LinearSystem& eq = c.s.eq;
    const Field3& phi = A == Component::u ? c.s.u : (A == Component::v ? c.s.v : c.s.w);
    const int n = c.g.nx - 1;
    double sum = 0;
    int count = 0;
    for (int k = 2 + n / 4; k <= 1 + n - n / 4; ++k) {
        for (int j = 2 + n / 4; j <= 1 + n - n / 4; ++j) {
            for (int i = 2 + n / 4; i <= 1 + n - n / 4; ++i) {
                const auto step = [&](float coefficient, float neighbour) {
                    return double(coefficient) * (double(neighbour) - double(phi(i, j, k)));
                };
                const double residual = step(eq.ae(i, j, k), phi(i + 1, j, k)) +
                                        step(eq.aw(i, j, k), phi(i - 1, j, k)) +
                                        step(eq.an(i, j, k), phi(i, j + 1, k)) +
                                        step(eq.as(i, j, k), phi(i, j - 1, k)) +
                                        step(eq.at(i, j, k), phi(i, j, k + 1)) +
                                        step(eq.ab(i, j, k), phi(i, j, k - 1)) + eq.su(i, j, k);
                const Position r{double(c.g.xc(i, j, k)), double(c.g.yc(i, j, k)),
                                 double(c.g.zc(i, j, k))};
                const double difference = residual / double(c.g.vol(i, j, k)) - exact(r);
                sum += difference * difference;
                ++count;
            }
        }
    }
    return std::sqrt(sum / count);
}

template <Component A>
double viscous_error(int n) {
    MomentumCase c(sheared_box(n));
    fill(c);
    c.fill(c.s.vis, viscosity);
    constexpr auto a = static_cast<std::size_t>(A);
    return error<A>(c, [](const Position& r) { return viscous(a, r); });
}

template <Component A>
void expect_viscous_order() {
    const double coarse = viscous_error<A>(8);
    const double fine = viscous_error<A>(16);
    const double order = std::log2(coarse / fine);
    EXPECT_GT(order, 1.9) << coarse << " " << fine;
    EXPECT_LT(order, 2.3) << coarse << " " << fine;
    EXPECT_LT(fine, 0.05);
}

TEST(MomentumOrder, ViscousTermsAreOfSecondOrderOnAShearedMesh) {
    expect_viscous_order<Component::u>();
    expect_viscous_order<Component::v>();
    expect_viscous_order<Component::w>();
}

// Carried by a uniform wind c: -den c.grad u_a. The volume flux of a face is its area times c.
const Position wind{1.0, -0.6, 0.4};

template <Component A>
double convection_error(int n, float ratio, float eta) {
    MomentumCase c(sheared_box(n));
    fill(c);
    c.settings.RATIO = ratio;
    c.settings.ETA = eta;
    const auto through = [](const Field3& x, const Field3& y, const Field3& z) {
        return static_cast<float>(wind[0] * double(x(3, 3, 3)) + wind[1] * double(y(3, 3, 3)) +
                                  wind[2] * double(z(3, 3, 3)));
    };
    c.s.flxU.fill(through(c.g.xix, c.g.xiy, c.g.xiz));
    c.s.flxV.fill(through(c.g.etx, c.g.ety, c.g.etz));
    c.s.flxW.fill(through(c.g.zex, c.g.zey, c.g.zez));
    constexpr auto a = static_cast<std::size_t>(A);
    return error<A>(c, [](const Position& r) {
        return -(wind[0] * slope(a, 0, r) + wind[1] * slope(a, 1, r) + wind[2] * slope(a, 2, r));
    });
}

template <Component A>
double convection_order(float ratio, float eta) {
    return std::log2(convection_error<A>(12, ratio, eta) / convection_error<A>(24, ratio, eta));
}

TEST(MomentumOrder, UpwindConvectionIsOfFirstOrder) {
    for (const double order :
         {convection_order<Component::u>(0.0F, 0.5F), convection_order<Component::v>(0.0F, 0.5F),
          convection_order<Component::w>(0.0F, 0.5F)}) {
        EXPECT_GT(order, 0.85);
        EXPECT_LT(order, 1.2);
    }
}

TEST(MomentumOrder, DeferredConvectionLiftsIt) {
    for (const float eta : {0.0F, 0.5F, 1.0F}) {
        for (const double order :
             {convection_order<Component::u>(1.0F, eta), convection_order<Component::v>(1.0F, eta),
              convection_order<Component::w>(1.0F, eta)}) {
            EXPECT_GT(order, 1.8) << eta;
        }
    }
    EXPECT_LT(convection_error<Component::u>(24, 1.0F, 0.5F),
              0.2 * convection_error<Component::u>(24, 0.0F, 0.5F));
}

// -grad p of a wave.
TEST(MomentumOrder, PressureGradientIsOfSecondOrder) {
    const auto pressure_error = [](int n) {
        MomentumCase c(sheared_box(n));
        c.fill(c.s.p, [](Position r) { return velocity(2, r); });
        return error<Component::w>(c, [](const Position& r) { return -slope(2, 2, r); });
    };
    const double order = std::log2(pressure_error(8) / pressure_error(16));
    EXPECT_GT(order, 1.9);
    EXPECT_LT(order, 2.3);
}

}  // namespace
}  // namespace torvex
