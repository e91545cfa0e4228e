// CALCU, CALCV, CALCW as a whole, and what follows their assembly: relaxation, reference sums,
// inner sweeps, report.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <omp.h>

#include <array>
#include <cmath>
#include <limits>

#include "solver/calcu.hpp"
#include "solver/calcv.hpp"
#include "solver/calcw.hpp"
#include "solver/constants.hpp"
#include "solver/momentum_case.hpp"
#include "solver/momentum_solution.hpp"
#include "solver/reference/plain_momentum.hpp"

namespace torvex {
namespace {

using test::deviation;
using test::MomentumCase;
using testing::HasSubstr;

GridGeometry shaken(Planes n) {
    GridGeometry g = sheared_mesh(n);
    shake(g, {0.1, 0.1, 0.1}, 9);
    return g;
}

void all_three(MomentumCase& c, int iter, int interval) {
    c.tell("   u", CALCU(c.context(), iter, interval));
    c.tell("   v", CALCV(c.context(), iter, interval));
    c.tell("   w", CALCW(c.context(), iter, interval));
}

void expect_like_plain(const MomentumCase& c, const plain::Momentum& p) {
    const std::array velocity{&c.s.u, &c.s.v, &c.s.w};
    for (std::size_t n = 0; n < 3; ++n) {
        EXPECT_LT(deviation(*velocity.at(n), p.velocity.at(n)), 1e-5);
    }
    const std::array gradient{&c.s.dUxi, &c.s.dUet, &c.s.dUze, &c.s.dVxi, &c.s.dVet,
                              &c.s.dVze, &c.s.dWxi, &c.s.dWet, &c.s.dWze};
    for (std::size_t n = 0; n < 9; ++n) {
        EXPECT_LT(deviation(*gradient.at(n), p.gradient.at(n)), 1e-5);
    }
    const std::array resid{c.s.resid_u, c.s.resid_v, c.s.resid_w};
    const std::array scale{c.s.scale_u, c.s.scale_v, c.s.scale_w};
    for (std::size_t n = 0; n < 3; ++n) {
        EXPECT_NEAR(double(resid.at(n)), p.resid.at(n), 1e-5 * p.resid.at(n));
        EXPECT_NEAR(double(scale.at(n)), p.scale.at(n), 1e-5 * p.scale.at(n));
    }
    EXPECT_LT(deviation(c.s.eq.ap, p.ap), 1e-5);
}

TEST(MomentumEquations, LikeThePlainForm) {
    for (int mode = 0; mode <= 2; ++mode) {
        for (const int skip : {0, 1}) {
            for (const bool canopy : {false, true}) {
                SCOPED_TRACE(testing::Message() << "mode " << mode << ", skip_sides " << skip
                                                << ", canopy " << canopy);
                MomentumCase c(shaken({9, 7, 6}));
                c.fill_at_random(21);
                c.set_density(1.2F);
                c.settings.WIND_TUNNEL_MODE = mode;
                c.settings.canopy.canopy_mode = canopy ? 1 : 0;
                c.settings.URFU = 0.4F;
                c.settings.URFV = 0.6F;
                c.settings.URFW = 0.7F;
                c.skip_sides = skip;
                plain::Momentum p = plain::start(c.settings, c.g, c.s);
                for (int iter = 2; iter <= 3; ++iter) {
                    all_three(c, iter, 2);
                    for (int component = 0; component < 3; ++component) {
                        plain::equation(p, component, iter, 2, skip);
                    }
                }
                expect_like_plain(c, p);
            }
        }
    }
}

TEST(MomentumEquations, LikeThePlainFormOnASingleCell) {
    MomentumCase c(shaken({2, 2, 2}));
    c.fill_at_random(2);
    plain::Momentum p = plain::start(c.settings, c.g, c.s);
    all_three(c, 1, 1);
    for (int component = 0; component < 3; ++component) {
        plain::equation(p, component, 1, 1, 0);
    }
    expect_like_plain(c, p);
}

TEST(MomentumEquations, SameBitsForAnyNumberOfThreads) {
    const int before = omp_get_max_threads();
    FlowState first;
    for (const int threads : {1, 2, 3, 5}) {
        omp_set_num_threads(threads);
        MomentumCase c(shaken({12, 8, 9}));
        c.fill_at_random(6);
        c.settings.WIND_TUNNEL_MODE = 2;
        c.settings.canopy.canopy_mode = 1;
        all_three(c, 4, 4);
        all_three(c, 5, 4);
        if (threads == 1) {
            first = std::move(c.s);
            continue;
        }
        for (const auto field : {&FlowState::u, &FlowState::v, &FlowState::w, &FlowState::dUxi,
                                 &FlowState::dVet, &FlowState::dWze}) {
            EXPECT_TRUE(test::same_bits(first.*field, c.s.*field)) << threads;
        }
        EXPECT_TRUE(test::same_bits(first.eq.su, c.s.eq.su)) << threads;
        EXPECT_EQ(first.resid_u, c.s.resid_u);
        EXPECT_EQ(first.resid_w, c.s.resid_w);
        EXPECT_EQ(first.scale_v, c.s.scale_v);
    }
    omp_set_num_threads(before);
}

TEST(MomentumEquations, MetricOverApIsZeroOnTheBoundary) {
    MomentumCase c(shaken({4, 5, 4}));
    c.fill_at_random(2);
    all_three(c, 1, 1);
    for (const auto field : {&FlowState::dUxi, &FlowState::dVet, &FlowState::dWze}) {
        const Field3& x = c.s.*field;
        EXPECT_EQ(x(1, 3, 3), 0.0F);
        EXPECT_EQ(x(c.g.ni, 3, 3), 0.0F);
        EXPECT_EQ(x(3, 1, 3), 0.0F);
        EXPECT_EQ(x(3, c.g.nj, 3), 0.0F);
        EXPECT_EQ(x(3, 3, 1), 0.0F);
        EXPECT_EQ(x(3, 3, c.g.nk), 0.0F);
        EXPECT_NE(x(3, 3, 3), 0.0F);
    }
}

// The second equation sees the new u: with a strong source in u the stress in v follows.
TEST(MomentumEquations, VSeesTheNewU) {
    MomentumCase a(shaken({6, 6, 6}));
    a.fill_at_random(2);
    CALCU(a.context(), 1, 1);
    const Field3 new_u = a.s.u;
    CALCV(a.context(), 1, 1);
    MomentumCase b(shaken({6, 6, 6}));
    b.fill_at_random(2);
    const Field3 old_u = b.s.u;
    CALCU(b.context(), 1, 1);
    b.s.u = old_u;
    CALCV(b.context(), 1, 1);
    EXPECT_GT(deviation(new_u, old_u), 1e-3);
    EXPECT_GT(deviation(a.s.v, b.s.v), 1e-4);
}

// Coefficients 1 to 6, sp = -3, URF = 0.5: ap = (21 + 3)/0.5; no net outflow in it.
TEST(MomentumRelaxation, OfOneCell) {
    MomentumCase c(uniform_mesh({4, 4, 4}, 2.0F, 3.0F, 4.0F));
    float value = 1.0F;
    for (Field3* x : {&c.s.eq.ae, &c.s.eq.aw, &c.s.eq.an, &c.s.eq.as, &c.s.eq.at, &c.s.eq.ab}) {
        x->fill(value);
        value += 1.0F;
    }
    c.s.eq.sp.fill(-3.0);
    c.s.flxU.fill(5.0F);
    c.s.flxU(3, 3, 3) = 9.0F;
    const auto expect = [&](Component component, Field3& phi, const Field3& d, double area) {
        phi.fill(0.25F);
        c.s.eq.su.fill(1.0);
        relax_momentum(c.context(), component);
        EXPECT_EQ(c.s.eq.ap(3, 3, 3), 48.0F);
        EXPECT_EQ(c.s.eq.su(3, 3, 3), 1.0 + 0.5 * 48.0 * 0.25);
        EXPECT_NEAR(double(d(3, 3, 3)), area / 48.0, 1e-6);
        EXPECT_EQ(c.s.eq.su(1, 3, 3), 1.0);
    };
    expect(Component::u, c.s.u, c.s.dUxi, 12.0);
    expect(Component::v, c.s.v, c.s.dVet, 8.0);
    expect(Component::w, c.s.w, c.s.dWze, 6.0);
    EXPECT_EQ(c.s.dUet(3, 3, 3), 0.0F);
    c.settings.URFW = 0.8F;
    expect(Component::v, c.s.v, c.s.dVet, 8.0);
    relax_momentum(c.context(), Component::w);
    EXPECT_FLOAT_EQ(c.s.eq.ap(3, 3, 3), 30.0F);
}

// A system by hand: ap = 2, ae = 1, su = 3, phi = 1 inside and 4 on the boundary.
void make_small_system(MomentumCase& c) {
    LinearSystem& eq = c.s.eq;
    for (Field3* x : {&eq.aw, &eq.an, &eq.as, &eq.at, &eq.ab}) {
        x->fill(0.0F);
    }
    eq.ae.fill(1.0F);
    eq.ap.fill(2.0F);
    eq.su.fill(3.0);
    eq.sp.fill(0.0);
    for (Field3* x : {&c.s.u, &c.s.v, &c.s.w}) {
        x->fill(4.0F);
        test::for_interior(c.g, [&](int i, int j, int k) { (*x)(i, j, k) = 1.0F; });
    }
}

// Two cells along i in each of four lines: r = phi_e + 3 - 2 phi = 2 and 5.
TEST(MomentumSums, ResidualAndScale) {
    MomentumCase c(uniform_mesh({3, 3, 3}, 1.0F, 1.0F, 1.0F));
    make_small_system(c);
    reference_sums(c.context(), Component::u);
    EXPECT_FLOAT_EQ(c.s.resid_u, 4 * 7.0F);
    const float speed = 8 * 2 * std::sqrt(3.0F);
    EXPECT_FLOAT_EQ(c.s.scale_u, speed);
    reference_sums(c.context(), Component::v);
    EXPECT_FLOAT_EQ(c.s.scale_v, 2 * speed);
    reference_sums(c.context(), Component::w);
    EXPECT_FLOAT_EQ(c.s.scale_w, 2 * speed);
    EXPECT_FLOAT_EQ(c.s.resid_v, 28.0F);
    EXPECT_FLOAT_EQ(c.s.resid_w, 28.0F);
}

TEST(MomentumSums, PinnedCellsAreLeftOut) {
    MomentumCase c(uniform_mesh({3, 3, 3}, 1.0F, 1.0F, 1.0F));
    make_small_system(c);
    c.s.eq.sp(3, 2, 2) = -BIG;
    c.s.eq.su(3, 2, 2) = BIG * 7.0;
    c.s.eq.sp(2, 3, 3) = static_cast<double>(static_cast<float>(-BIG));
    c.s.eq.su(2, 3, 3) = 1e30;
    for (const Component component : {Component::u, Component::v, Component::w}) {
        reference_sums(c.context(), component);
    }
    EXPECT_FLOAT_EQ(c.s.resid_u, 28.0F - 5.0F - 2.0F);
    EXPECT_FLOAT_EQ(c.s.resid_v, 21.0F);
    EXPECT_FLOAT_EQ(c.s.resid_w, 21.0F);
}

// A pinned cell goes to its value and stays out of the reported sums too.
TEST(MomentumSolution, PinnedCellTakesItsValue) {
    MomentumCase c(uniform_mesh({4, 4, 4}, 1.0F, 1.0F, 1.0F));
    make_small_system(c);
    for (Field3* x : {&c.s.eq.aw, &c.s.eq.an, &c.s.eq.as, &c.s.eq.at, &c.s.eq.ab}) {
        x->fill(1.0F);
    }
    c.s.eq.sp(3, 3, 3) = -BIG;
    c.s.eq.su(3, 3, 3) = BIG * 7.0;
    c.settings.URFU = 1.0F;
    c.settings.NSWPU = 40;
    relax_momentum(c.context(), Component::u);
    reference_sums(c.context(), Component::u);
    EXPECT_LT(c.s.resid_u, 1e4F);
    c.tell("   u", {solve_momentum(c.context(), Component::u)});
    EXPECT_NEAR(c.s.u(3, 3, 3), 7.0F, 1e-5F);
}

// Between monitor steps neither sum is touched, and the sweeps are measured against the value that
// stands there, normalised or not.
TEST(MomentumSolution, StaleReference) {
    MomentumCase c(shaken({6, 5, 5}));
    c.fill_at_random(4);
    c.s.resid_u = 1.0e20F;
    c.s.scale_u = 12.0F;
    c.tell("   u", CALCU(c.context(), 7, 5));
    EXPECT_EQ(c.s.resid_u, 1.0e20F);
    EXPECT_EQ(c.s.scale_u, 12.0F);
    EXPECT_THAT(c.report, HasSubstr("   u: n=  1, ru0= 0.1000000E+21, ru1="));
    c.tell("   u", CALCU(c.context(), 10, 5));
    EXPECT_LT(c.s.resid_u, 1.0e6F);
    EXPECT_NE(c.s.scale_u, 12.0F);
    EXPECT_GT(c.s.resid_u, 0.0F);
}

TEST(MomentumSolution, IterationZeroCountsAsAMultiple) {
    MomentumCase c(shaken({6, 5, 5}));
    c.fill_at_random(4);
    c.tell("   u", CALCU(c.context(), 0, 5));
    EXPECT_GT(c.s.resid_u, 0.0F);
}

// A sweep runs from west to east: the first cell becomes (1 + 3)/2 = 2 and the last (4 + 3)/2
// = 3.5, after which the first has the residual 3.5 + 3 - 4 = 2.5 in each of the four lines.
TEST(MomentumSolution, ReportAfterOneSweep) {
    MomentumCase c(uniform_mesh({3, 3, 3}, 1.0F, 1.0F, 1.0F));
    make_small_system(c);
    c.s.resid_u = c.s.resid_v = c.s.resid_w = 28.0F;
    c.settings.NSWPU = c.settings.NSWPV = c.settings.NSWPW = 1;
    c.tell("   u", {solve_momentum(c.context(), Component::u)});
    c.tell("   v", {solve_momentum(c.context(), Component::v)});
    c.tell("   w", {solve_momentum(c.context(), Component::w)});
    EXPECT_FLOAT_EQ(c.s.u(3, 2, 2), 3.5F);
    EXPECT_FLOAT_EQ(c.s.u(2, 2, 2), 2.0F);
    EXPECT_EQ(c.report,
              "   u: n=  2, ru0= 0.2800000E+02, ru1= 0.1000000E+02, a= 0.3571429E+00\n"
              "   v: n=  2, rv0= 0.2800000E+02, rv1= 0.1000000E+02, a= 0.3571429E+00\n"
              "   w: n=  2, rw0= 0.2800000E+02, rw1= 0.1000000E+02, a= 0.3571429E+00\n");
}

// The second sweep solves the small system: n is the sweep at which the loop stopped.
TEST(MomentumSolution, StopsBelowATenth) {
    MomentumCase c(uniform_mesh({3, 3, 3}, 1.0F, 1.0F, 1.0F));
    make_small_system(c);
    c.s.resid_u = 28.0F;
    c.settings.NSWPU = 10;
    c.tell("   u", {solve_momentum(c.context(), Component::u)});
    EXPECT_EQ(c.report, "   u: n=  2, ru0= 0.2800000E+02, ru1= 0.0000000E+00, a= 0.0000000E+00\n");
}

TEST(MomentumSolution, NoSweeps) {
    for (const int count : {0, -4}) {
        MomentumCase c(uniform_mesh({3, 3, 3}, 1.0F, 1.0F, 1.0F));
        make_small_system(c);
        const Field3 before = c.s.v;
        c.s.resid_v = 0.5F;
        c.settings.NSWPV = count;
        c.tell("   v", {solve_momentum(c.context(), Component::v)});
        EXPECT_TRUE(test::same_bits(before, c.s.v));
        EXPECT_EQ(c.report,
                  "   v: n=  1, rv0= 0.5000000E+00, rv1= 0.0000000E+00, a= 0.0000000E+00\n");
    }
}

// With a reference of 0 the ratio is infinite or not a number, and all sweeps are made.
TEST(MomentumSolution, ReferenceOfZeroRunsToTheCount) {
    MomentumCase c(uniform_mesh({3, 3, 3}, 1.0F, 1.0F, 1.0F));
    make_small_system(c);
    c.s.resid_w = 0.0F;
    c.settings.NSWPW = 4;
    c.tell("   w", {solve_momentum(c.context(), Component::w)});
    EXPECT_THAT(c.report, HasSubstr("   w: n=  5, rw0= 0.0000000E+00, rw1= "));
    EXPECT_THAT(c.report, HasSubstr("NaN"));
}

TEST(MomentumEquations, SweepsByEquation) {
    MomentumCase c(shaken({6, 5, 5}));
    c.fill_at_random(4);
    c.s.resid_u = c.s.resid_v = c.s.resid_w = 1e-20F;
    c.settings.NSWPU = 1;
    c.settings.NSWPV = 2;
    c.settings.NSWPW = 12;
    all_three(c, 1, 2);
    EXPECT_THAT(c.report, HasSubstr("   u: n=  2, "));
    EXPECT_THAT(c.report, HasSubstr("   v: n=  3, "));
    EXPECT_THAT(c.report, HasSubstr("   w: n= 13, "));
}

TEST(MomentumEquations, BadValueReachesTheResidual) {
    for (const auto field : {&FlowState::p, &FlowState::vis, &FlowState::flxU, &FlowState::u}) {
        MomentumCase c(shaken({6, 5, 5}));
        c.fill_at_random(4);
        (c.s.*field)(3, 3, 3) = std::numeric_limits<float>::quiet_NaN();
        all_three(c, 1, 1);
        EXPECT_TRUE(std::isnan(c.s.resid_u));
        EXPECT_TRUE(std::isnan(c.s.resid_v));
        EXPECT_TRUE(std::isnan(c.s.resid_w));
    }
}

// Drag alone: den gp_d |U| vol on a unit cell, in the ground cell too and from the first iteration
// on, whatever the iteration from which the sources of turbulence act.
TEST(MomentumCanopy, ImplicitDrag) {
    MomentumCase c(uniform_mesh({4, 4, 4}, 1.0F, 1.0F, 2.0F));
    c.set_density(1.2F);
    c.s.u.fill(2.0F);
    c.s.v.fill(-1.0F);
    c.s.w.fill(2.0F);
    c.s.gp_d.allocate(c.g.ni, c.g.nj, c.g.nk);
    c.s.gp_d.fill(0.25F);
    c.s.canopy_source_factor = 0.0F;
    c.settings.canopy.start_cal_src = 100;
    c.settings.URFU = c.settings.URFV = c.settings.URFW = 1.0F;
    c.settings.NSWPU = c.settings.NSWPV = c.settings.NSWPW = 0;
    const double drag = 2.0 * 1.2 * 0.25 * 3.0;
    CALCU(c.context(), 1, 1);
    EXPECT_EQ(c.s.eq.sp(3, 3, 3), 0.0);
    c.settings.canopy.canopy_mode = 1;
    const auto expect = [&](const char* which) {
        EXPECT_NEAR(c.s.eq.sp(3, 3, 3), -drag, 1e-6) << which;
        EXPECT_NEAR(c.s.eq.sp(3, 3, 2), -drag, 1e-6) << which;
        EXPECT_NEAR(double(c.s.eq.ap(3, 3, 3)), drag, 1e-6) << which;
        EXPECT_EQ(c.s.eq.sp(1, 3, 3), 0.0);
        EXPECT_EQ(c.s.eq.sp(3, 3, c.g.nk), 0.0);
    };
    CALCU(c.context(), 1, 1);
    expect("u");
    CALCV(c.context(), 1, 1);
    expect("v");
    CALCW(c.context(), 1, 1);
    expect("w");
    c.s.gp_d.fill(0.0F);
    CALCU(c.context(), 1, 1);
    EXPECT_EQ(c.s.eq.sp(3, 3, 3), 0.0);
}

TEST(MomentumCanopy, NoDragWithoutCanopyData) {
    MomentumCase c(uniform_mesh({4, 4, 4}, 1.0F, 1.0F, 2.0F));
    c.s.u.fill(2.0F);
    c.settings.canopy.canopy_mode = 1;
    CALCU(c.context(), 1, 1);
    EXPECT_EQ(c.s.eq.sp(3, 3, 3), 0.0);
}

}  // namespace
}  // namespace torvex
