#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "base/edit.hpp"
#include "solver/balance.hpp"
#include "solver/constants.hpp"
#include "solver/pressure_boundary.hpp"
#include "solver/pressure_run.hpp"

namespace torvex {
namespace {

using plain::Face;

// The numbers of a report line.
struct Report {
    int n;
    float r0, r1, a;
};

std::string text(const Report& r, const std::string& name) {
    return name + ": n=" + edit::I(r.n, 3) + ", rp0=" + edit::E(r.r0, 14, 7) +
           ", rp1=" + edit::E(r.r1, 14, 7) + ", a=" + edit::E(r.a, 14, 7) + "\n";
}

// The line is checked in full: the numbers are taken out of their columns and put back.
Report parse(const std::string& line, const std::string& name) {
    Report r{};
    if (line.size() != 70) {
        ADD_FAILURE() << line;
        return r;
    }
    r.n = std::stoi(line.substr(8, 3));
    r.r0 = std::stof(line.substr(17, 14));
    r.r1 = std::stof(line.substr(37, 14));
    r.a = std::stof(line.substr(55, 14));
    EXPECT_EQ(line, text(r, name));
    return r;
}

PressureCase balanced_random(Planes n, unsigned seed) {
    PressureCase c = random_case(shaken_hill(n, seed), seed);
    balance_outflow(c);
    return c;
}

void expect_same_bits(const FlowState& a, const FlowState& b) {
    EXPECT_EQ(bits(a.u), bits(b.u));
    EXPECT_EQ(bits(a.v), bits(b.v));
    EXPECT_EQ(bits(a.w), bits(b.w));
    EXPECT_EQ(bits(a.p), bits(b.p));
    EXPECT_EQ(bits(a.pp), bits(b.pp));
    EXPECT_EQ(bits(a.flxU), bits(b.flxU));
    EXPECT_EQ(bits(a.flxV), bits(b.flxV));
    EXPECT_EQ(bits(a.flxW), bits(b.flxW));
    EXPECT_EQ(a.resid_m, b.resid_m);
}

TEST(Calcp, changes_nothing_where_nothing_is_to_correct) {
    PressureRun run(resting_case(uniform_mesh({7, 6, 5}, 4.0F, 2.0F, 0.5F)));
    set_velocity(run.c.s, 8.0F, 0.0F, 0.0F);
    run.c.s.p.fill(3.25F);
    run.c.s.pp.fill(17.0F);  // of the iteration before
    const PressureCase before = run.c;
    run.step();
    const FlowState& s = run.c.s;
    for_interior(run.c.g, [&](int i, int j, int k) { EXPECT_EQ(s.eq.su(i, j, k), 0.0); });
    EXPECT_EQ(s.resid_m, 0.0F);
    EXPECT_EQ(bits(s.u), bits(before.s.u));
    EXPECT_EQ(bits(s.v), bits(before.s.v));
    EXPECT_EQ(bits(s.w), bits(before.s.w));
    EXPECT_EQ(bits(s.p), bits(before.s.p));
    for_interior(run.c.g, [&](int i, int j, int k) {
        EXPECT_EQ(s.pp(i, j, k), 0.0F);
        EXPECT_EQ(s.flxU(i, j, k), 8.0F * 2.0F * 0.5F);
    });
    // Nothing over nothing is no number, and the cycles run out.
    EXPECT_EQ(run.console, "   p: n= 11, rp0= 0.0000000E+00, rp1= 0.0000000E+00, a=" +
                               edit::E(std::numeric_limits<float>::quiet_NaN(), 14, 7) + "\n");
}

TEST(Calcp, leaves_a_uniform_flow_alone_on_a_shaken_mesh) {
    PressureRun run(resting_case(with_flat_top(shaken_hill({12, 10, 8}, 1U)), 1.2F));
    set_velocity(run.c.s, 8.0F, -3.0F, 0.0F);
    run.c.s.p.fill(2.0F);
    run.step();
    double through = 0;
    for_interior(run.c.g, [&](int i, int j, int k) {
        through += plain::throughput(run.c.g, run.c.s.den, fluxes(run.c.s), {i, j, k});
        EXPECT_NEAR(run.c.s.u(i, j, k), 8.0F, 1e-4F);
        EXPECT_NEAR(run.c.s.v(i, j, k), -3.0F, 1e-4F);
        EXPECT_NEAR(run.c.s.w(i, j, k), 0.0F, 1e-4F);
        EXPECT_NEAR(run.c.s.p(i, j, k), 2.0F, 1e-3F);
    });
    EXPECT_LT(run.c.s.resid_m, 1e-6 * through);
}

TEST(Calcp, holds_the_reference_cell_the_top_and_the_boundary_fluxes) {
    PressureRun run(balanced_random({9, 8, 7}, 2U));
    run.c.s.w(4, 4, run.c.g.nk) = 1e6F;
    run.c.s.flxW.fill(5.0F);
    const PressureCase before = run.c;
    for (int n = 1; n <= 3; ++n) {
        run.step(n);
        const GridGeometry& g = run.c.g;
        const FlowState& s = run.c.s;
        EXPECT_EQ(s.p(2, 2, 2), before.s.p(2, 2, 2));
        EXPECT_NE(s.p(5, 5, 5), before.s.p(5, 5, 5));
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                EXPECT_EQ(s.flxW(i, j, g.nz), 0.0F);
                EXPECT_NEAR(s.flxW(i, j, 1),
                            plain::boundary_flux(g, before.s, {i, j, 1}, Face::top, {i, j, 1}),
                            2e-6);
            }
        }
        for (int k = 2; k <= g.nz; ++k) {
            for (int j = 2; j <= g.ny; ++j) {
                EXPECT_NEAR(s.flxU(1, j, k),
                            plain::boundary_flux(g, before.s, {1, j, k}, Face::east, {1, j, k}),
                            2e-6);
                EXPECT_NEAR(
                    s.flxU(g.nx, j, k),
                    plain::boundary_flux(g, before.s, {g.nx, j, k}, Face::east, {g.ni, j, k}),
                    2e-6);
            }
        }
    }
}

// Every step against the plain formulas, with the pp that came out.
TEST(Calcp, follows_the_plain_steps) {
    for (const Planes n : {Planes{9, 8, 7}, Planes{2, 6, 5}, Planes{6, 2, 5}, Planes{6, 5, 2}}) {
        PressureRun run(balanced_random(n, 3U));
        const PressureCase before = run.c;
        run.step();
        const GridGeometry& g = run.c.g;
        const FlowState& s = run.c.s;
        double imbalances = 0;
        for_interior(g, [&](int i, int j, int k) {
            const plain::Cell cell{i, j, k};
            // pressures reach some units and d about one: the limits are a few roundings of them
            const double limit =
                4e-6 * (1.0 + std::abs(double(s.pp(i, j, k))) + std::abs(double(s.pp(2, 2, 2))));
            const plain::Vector change = plain::velocity_change(g, before.s, s.pp, cell);
            EXPECT_NEAR(s.u(i, j, k), double(before.s.u(i, j, k)) + change.x, limit);
            EXPECT_NEAR(s.v(i, j, k), double(before.s.v(i, j, k)) + change.y, limit);
            EXPECT_NEAR(s.w(i, j, k), double(before.s.w(i, j, k)) + change.z, limit);
            EXPECT_NEAR(
                s.p(i, j, k),
                double(before.s.p(i, j, k)) + 0.2 * (double(s.pp(i, j, k)) - double(s.pp(2, 2, 2))),
                limit);
            const bool corrected = i < g.nx && j < g.ny && k < g.nz;
            const auto flux = [&](const Field3& flx, Face face, bool between_cells) {
                if (between_cells) {
                    EXPECT_NEAR(
                        flx(i, j, k),
                        plain::interpolated_flux(g, before.s, cell, face) +
                            (corrected ? plain::flux_change(g, before.s, s.pp, cell, face) : 0.0),
                        limit)
                        << i << ' ' << j << ' ' << k;
                }
            };
            flux(s.flxU, Face::east, i < g.nx);
            flux(s.flxV, Face::north, j < g.ny);
            flux(s.flxW, Face::top, k < g.nz);
            imbalances += std::abs(s.eq.su(i, j, k));
        });
        EXPECT_NEAR(s.resid_m, imbalances, 1e-5 * imbalances);
        Field3 p = before.s.p;
        for_interior(g, [&](int i, int j, int k) { p(i, j, k) = s.p(i, j, k); });
        bc_p(g, p);
        EXPECT_EQ(bits(p), bits(s.p));
        Field3 pp = s.pp;
        bc_pp(g, pp);
        EXPECT_EQ(bits(pp), bits(s.pp));
    }
}

// Where all faces of a cell are corrected or on the boundary, what remains of its imbalance is the
// residual of the equation; the last layers keep the fluxes they had.
TEST(Calcp, leaves_the_imbalance_that_the_solver_left) {
    PressureRun run(balanced_random({14, 12, 10}, 4U));
    run.step();
    const GridGeometry& g = run.c.g;
    const FlowState& s = run.c.s;
    const Report report = parse(run.console, "   p");
    Imbalance balance;
    BALANCE(g, s, balance);
    double inner = 0;
    double residuals = 0;
    for_interior(g, [&](int i, int j, int k) {
        const double r = plain::residual(g, s, s.pp, {i, j, k});
        residuals += std::abs(r);
        if (i < g.nx && j < g.ny && k < g.nz) {
            const double m = plain::imbalance(g, s.den, fluxes(s), {i, j, k});
            EXPECT_NEAR(m, -r, 2e-5) << i << ' ' << j << ' ' << k;
            EXPECT_NEAR(balance.balXi(i, j, k) + balance.balEt(i, j, k) + balance.balZe(i, j, k), m,
                        1e-5);
            inner += std::abs(m);
        }
    });
    EXPECT_NEAR(report.r1, residuals, 0.01 * residuals);
    EXPECT_LT(report.a, 0.1F);
    EXPECT_LT(inner, 1.01F * report.r1);
    EXPECT_LT(inner, 0.1F * s.resid_m);
}

// The residual after the one sweep, not the imbalance before it.
TEST(Calcp, reports_the_residual_after_the_sweep) {
    const PressureCase start = balanced_random({9, 8, 7}, 5U);
    PressureRun swept(start);
    swept.settings.NSWPP = 0;
    swept.step();
    const FlowState& s = swept.c.s;
    double after_sweep = 0;
    for_interior(swept.c.g, [&](int i, int j, int k) {
        after_sweep += std::abs(plain::residual(swept.c.g, s, s.pp, {i, j, k}));
    });
    const Report none = parse(swept.console, "   p");
    EXPECT_NEAR(none.r0, after_sweep, 1e-5 * after_sweep);
    EXPECT_LT(none.r0, 0.9F * s.resid_m);
    EXPECT_EQ(swept.console, "   p: n=  1, rp0=" + edit::E(none.r0, 14, 7) +
                                 ", rp1= 0.0000000E+00, a= 0.0000000E+00\n");

    PressureRun solved(start);
    solved.step();
    const Report all = parse(solved.console, "   p");
    EXPECT_EQ(all.r0, none.r0);
    EXPECT_NEAR(all.a, all.r1 / all.r0, 1e-6F);
    EXPECT_GE(all.n, 1);
    EXPECT_LE(all.n, 11);
}

// Gauss-Seidel from pp = 0 moves a cell by su/ap at least where nothing beside it has moved yet.
TEST(Calcp, corrects_with_the_one_sweep_alone_without_cycles) {
    PressureRun run(balanced_random({9, 8, 7}, 6U));
    run.settings.NSWPP = 0;
    run.step();
    const LinearSystem& eq = run.c.s.eq;
    // (2,2,2) is the first cell of the sweep.
    EXPECT_NEAR(run.c.s.pp(2, 2, 2), eq.su(2, 2, 2) / double(eq.ap(2, 2, 2)), 1e-6);
}

// u - U = d grad phi, the slope of phi being 0 on all boundaries, is taken out again.
TEST(Calcp, removes_a_potential_perturbation) {
    PressureRun run(resting_case(stretched_mesh({13, 11, 9}, {1.0, 1.0, 0.6}, {1.05, 1.0, 1.1})));
    PressureCase& c = run.c;
    const GridGeometry& g = c.g;
    set_velocity(c.s, 5.0F, 0.0F, 0.0F);
    Field3 phi(g.ni, g.nj, g.nk);
    const double pi = std::numbers::pi;
    for_interior(g, [&](int i, int j, int k) {
        phi(i, j, k) =
            static_cast<float>(std::cos(pi * double(g.xc(i, j, k)) / double(g.xn(g.nx, 1, 1))) *
                               std::cos(2 * pi * double(g.yc(i, j, k)) / double(g.yn(1, g.ny, 1))) *
                               std::cos(pi * double(g.zc(i, j, k)) / double(g.zn(1, 1, g.nz))));
    });
    bc_pp(g, phi);
    double strongest = 0;
    for_interior(g, [&](int i, int j, int k) {
        const plain::Vector change = plain::velocity_change(g, c.s, phi, {i, j, k});
        c.s.u(i, j, k) -= static_cast<float>(change.x);
        c.s.v(i, j, k) -= static_cast<float>(change.y);
        c.s.w(i, j, k) -= static_cast<float>(change.z);
        strongest =
            std::max({strongest, std::abs(change.x), std::abs(change.y), std::abs(change.z)});
    });
    ASSERT_GT(strongest, 0.1);
    run.settings.URFP = 0.0F;  // the velocities alone, with no pressure to build up
    const auto left = [&] {
        double most = 0;
        for_interior(g, [&](int i, int j, int k) {
            most = std::max({most, std::abs(double(c.s.u(i, j, k)) - 5.0),
                             std::abs(double(c.s.v(i, j, k))), std::abs(double(c.s.w(i, j, k)))});
        });
        return most;
    };
    run.step();
    EXPECT_LT(left(), 0.3 * strongest);
    for (int n = 2; n <= 15; ++n) {
        run.step(n);
    }
    EXPECT_LT(left(), 1e-3 * strongest);
}

TEST(Calcp, weighs_mass_with_density) {
    PressureCase light = balanced_random({8, 7, 6}, 7U);
    light.s.den.fill(1.0F);
    PressureRun one(light);
    light.s.den.fill(1.2F);
    PressureRun heavy(light);
    one.settings.NSWPP = heavy.settings.NSWPP = 0;
    one.step();
    heavy.step();
    EXPECT_NEAR(heavy.c.s.resid_m, 1.2F * one.c.s.resid_m, 1e-5F * one.c.s.resid_m);
    for_interior(one.c.g, [&](int i, int j, int k) {
        EXPECT_NEAR(heavy.c.s.eq.ap(i, j, k), 1.2F * one.c.s.eq.ap(i, j, k),
                    1e-5F * one.c.s.eq.ap(i, j, k));
        // source and coefficients carry the density alike
        EXPECT_NEAR(heavy.c.s.pp(i, j, k), one.c.s.pp(i, j, k), 1e-5F);
        EXPECT_NEAR(heavy.c.s.u(i, j, k), one.c.s.u(i, j, k), 1e-5F);
    });
}

TEST(Calcp, depends_on_nothing_left_by_other_equations) {
    PressureRun clean(balanced_random({9, 8, 7}, 8U));
    PressureRun used(clean.c);
    FlowState& s = used.c.s;
    unsigned seed = 80;
    for (Field3* x :
         {&s.pp, &s.coefXi, &s.coefEt, &s.coefZe, &s.eq.ae, &s.eq.aw, &s.eq.an, &s.eq.as, &s.eq.at,
          &s.eq.ab, &s.eq.ap, &s.eq.res, &s.flxU, &s.flxV, &s.flxW}) {
        fill_random(*x, -100.0, 100.0, ++seed);
    }
    s.eq.su.fill(1e20);
    s.eq.sp.fill(-BIG);
    clean.step();
    used.step();
    for_interior(clean.c.g, [&](int i, int j, int k) {
        EXPECT_EQ(used.c.s.u(i, j, k), clean.c.s.u(i, j, k));
        EXPECT_EQ(used.c.s.p(i, j, k), clean.c.s.p(i, j, k));
        EXPECT_EQ(used.c.s.flxU(i, j, k), clean.c.s.flxU(i, j, k));
        EXPECT_EQ(used.c.s.flxV(i, j, k), clean.c.s.flxV(i, j, k));
        EXPECT_EQ(used.c.s.flxW(i, j, k), clean.c.s.flxW(i, j, k));
    });
    EXPECT_EQ(used.console, clean.console);
}

TEST(Calcp, shows_a_bad_velocity_in_resid_m) {
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        PressureRun run(balanced_random({9, 8, 7}, 9U));
        run.c.s.v(8, 7, 6) = bad;
        run.step();
        EXPECT_FALSE(std::isfinite(run.c.s.resid_m));
        EXPECT_FALSE(run.console.empty());
    }
}

TEST(Calcp, survives_a_mesh_of_one_cell) {
    PressureRun run(balanced_random({2, 2, 2}, 10U));
    run.settings.DOUBLE_CORRECTION = true;
    run.step();  // ap is 0: no number comes out, and no signal
    EXPECT_EQ(std::count(run.console.begin(), run.console.end(), '\n'), 2);
}

TEST(Calcp, second_corrector_reports_in_its_own_words) {
    PressureRun run(balanced_random({9, 8, 7}, 11U));
    run.settings.DOUBLE_CORRECTION = true;
    const float reference = run.c.s.p(2, 2, 2);
    run.step();
    const auto line = run.console.find('\n') + 1;
    const std::string first = run.console.substr(0, line);
    const std::string second = run.console.substr(line);
    parse(second, "  pp");
    EXPECT_EQ(run.c.s.p(2, 2, 2), reference);

    PressureRun once(balanced_random({9, 8, 7}, 11U));
    once.step();
    EXPECT_EQ(first, once.console);
    EXPECT_EQ(run.c.s.resid_m, once.c.s.resid_m);  // of the interpolated fluxes
}

TEST(Calcp, second_corrector_follows_the_plain_steps) {
    const PressureCase start = balanced_random({9, 8, 7}, 12U);
    PressureRun once(start);
    once.step();
    PressureRun twice(start);
    twice.settings.DOUBLE_CORRECTION = true;
    twice.step();
    const GridGeometry& g = start.g;
    const Field3& pp1 = once.c.s.pp;
    const FlowState& s = twice.c.s;
    const auto extra = [&](plain::Cell cell, Face face) {
        const bool between_cells =
            plain::next(cell, face).i <= g.nx && plain::next(cell, face).j <= g.ny &&
            plain::next(cell, face).k <= g.nz && cell.i >= 2 && cell.j >= 2 && cell.k >= 2;
        return between_cells ? plain::extra_flux(g, start.s, pp1, cell, face) : 0.0;
    };
    for_interior(g, [&](int i, int j, int k) {
        const plain::Cell cell{i, j, k};
        double source = 0;
        for (const Face face : {Face::east, Face::north, Face::top}) {
            const plain::Cell low = plain::previous(cell, face);
            source += plain::at_face(g, start.s.den, low, face) * extra(low, face) -
                      plain::at_face(g, start.s.den, cell, face) * extra(cell, face);
        }
        const double limit = 2e-5 * (1.0 + std::abs(double(pp1(i, j, k))));
        EXPECT_NEAR(s.eq.su(i, j, k), source, limit);
        EXPECT_EQ(s.eq.sp(i, j, k), 0.0);
        const plain::Vector change = plain::velocity_change(g, start.s, s.pp, cell);
        EXPECT_NEAR(s.u(i, j, k), double(once.c.s.u(i, j, k)) + change.x, limit);
        EXPECT_NEAR(s.v(i, j, k), double(once.c.s.v(i, j, k)) + change.y, limit);
        EXPECT_NEAR(s.w(i, j, k), double(once.c.s.w(i, j, k)) + change.z, limit);
        EXPECT_NEAR(
            s.p(i, j, k),
            double(once.c.s.p(i, j, k)) + 0.2 * (double(s.pp(i, j, k)) - double(s.pp(2, 2, 2))),
            limit);
        const bool corrected = i < g.nx && j < g.ny && k < g.nz;
        const auto flux = [&](const Field3& flx, const Field3& old, Face face) {
            EXPECT_NEAR(flx(i, j, k),
                        double(old(i, j, k)) + extra(cell, face) +
                            (corrected ? plain::flux_change(g, start.s, s.pp, cell, face) : 0.0),
                        limit)
                << i << ' ' << j << ' ' << k;
        };
        flux(s.flxU, once.c.s.flxU, Face::east);
        flux(s.flxV, once.c.s.flxV, Face::north);
        flux(s.flxW, once.c.s.flxW, Face::top);
    });
    // The equation is that of the first corrector.
    EXPECT_EQ(bits(s.eq.ae), bits(once.c.s.eq.ae));
    EXPECT_EQ(bits(s.eq.ap), bits(once.c.s.eq.ap));
}

TEST(Calcp, second_corrector_changes_nothing_on_an_orthogonal_mesh) {
    PressureCase start =
        random_case(stretched_mesh({9, 8, 7}, {1.0, 0.5, 0.4}, {1.1, 1.0, 1.2}), 13U);
    balance_outflow(start);
    PressureRun once(start);
    PressureRun twice(start);
    twice.settings.DOUBLE_CORRECTION = true;
    once.step();
    twice.step();
    for_interior(start.g, [&](int i, int j, int k) {
        EXPECT_NEAR(twice.c.s.u(i, j, k), once.c.s.u(i, j, k), 1e-5F);
        EXPECT_NEAR(twice.c.s.p(i, j, k), once.c.s.p(i, j, k), 1e-5F);
        EXPECT_NEAR(twice.c.s.flxW(i, j, k), once.c.s.flxW(i, j, k), 1e-5F);
    });
}

// With the fluxes that follow from the whole gradient of pp (the extra flux included), the mass of
// a cell on a sheared mesh is not balanced by the first corrector; the second one brings it down to
// what its solver leaves.
TEST(Calcp, second_corrector_balances_the_mass_of_oblique_cells) {
    PressureCase start = random_case(sheared_mesh({13, 12, 11}), 14U);
    balance_outflow(start);
    PressureRun once(start);
    PressureRun twice(start);
    once.settings.NSWPP = twice.settings.NSWPP = 200;
    twice.settings.DOUBLE_CORRECTION = true;
    once.step();
    twice.step();
    const GridGeometry& g = start.g;
    FlowState whole = once.c.s;
    for_interior(g, [&](int i, int j, int k) {
        const plain::Cell cell{i, j, k};
        const auto add = [&](Field3& flx, Face face, bool between_cells) {
            if (between_cells) {
                flx(i, j, k) +=
                    static_cast<float>(plain::extra_flux(g, start.s, once.c.s.pp, cell, face));
            }
        };
        add(whole.flxU, Face::east, i < g.nx);
        add(whole.flxV, Face::north, j < g.ny);
        add(whole.flxW, Face::top, k < g.nz);
    });
    double error_once = 0;
    double error_twice = 0;
    for_cells({2, 2, 2}, {g.nx - 1, g.ny - 1, g.nz - 1}, [&](int i, int j, int k) {
        error_once += std::abs(plain::imbalance(g, start.s.den, fluxes(whole), {i, j, k}));
        error_twice += std::abs(plain::imbalance(g, start.s.den, fluxes(twice.c.s), {i, j, k}));
    });
    EXPECT_LT(error_twice, 0.1 * error_once);
}

TEST(Calcp, has_the_same_bits_for_any_number_of_threads) {
    for (const bool second : {false, true}) {
        const PressureCase start = balanced_random({21, 9, 12}, 15U);
        PressureRun one(start);
        one.settings.DOUBLE_CORRECTION = second;
        with_threads(1, [&] { one.step(); });
        for (const int threads : {2, 3, 5}) {
            PressureRun many(start);
            many.settings.DOUBLE_CORRECTION = second;
            with_threads(threads, [&] { many.step(); });
            expect_same_bits(many.c.s, one.c.s);
            EXPECT_EQ(many.console, one.console);
        }
    }
}

}  // namespace
}  // namespace torvex
