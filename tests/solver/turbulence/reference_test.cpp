// The turbulence equations against their plain form in double precision, on a shaken mesh with
// random fields. What is compared is relative to the largest value of its field.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "solver/fields.hpp"
#include "solver/reference/plain_turbulence.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_case.hpp"

namespace torvex::test {
namespace {

using plain::Variable;

constexpr double tolerance = 1e-5;

struct Kind {
    Variable variable;
    int model;
    int mode;
    int skip_sides;
    int canopy;
};

void PrintTo(const Kind& kind, std::ostream* out) {
    constexpr std::array names{"tke", "ted", "tkl"};
    *out << names.at(static_cast<std::size_t>(kind.variable)) << " model " << kind.model
         << " tunnel " << kind.mode << " skip " << kind.skip_sides << " canopy " << kind.canopy;
}

struct RandomCase : TurbulenceCase {
    explicit RandomCase(const Kind& kind) : TurbulenceCase(shaken_block(), kind.model) {
        make_random(*this, 100);
        settings.WIND_TUNNEL_MODE = kind.mode;
        settings.canopy.canopy_mode = kind.canopy;
        flow.canopy_source_factor = 1.0F;
        settings.URFK = 0.6F;
        settings.URFE = 0.7F;
        // gen comes from the energy equation; here it is given.
        if (kind.variable == Variable::ted) {
            flow.gen = random_field(grid, 0, 2, 77);
        }
    }
};

void run(TurbulenceCase& c, const Kind& kind, int iter, int interval) {
    SolverContext ctx = c.context(kind.skip_sides);
    switch (kind.variable) {
        case Variable::tke:
            CALCKE(ctx, iter, interval);
            break;
        case Variable::ted:
            CALCED(ctx, iter, interval);
            break;
        case Variable::tkl:
            CALCKLM(ctx, iter, interval);
    }
}

// Largest difference over the largest value; all cells, or those inside, whose value is not
// touched by a pinned cell's 1e25.
template <class Fast>
double difference(const GridGeometry& g, const Fast& fast, const plain::Array& slow, bool inner) {
    double scale = 0;
    double largest = 0;
    const int low = inner ? 2 : 1;
    for (int k = low; k <= (inner ? g.nz : g.nk); ++k) {
        for (int j = low; j <= (inner ? g.ny : g.nj); ++j) {
            for (int i = low; i <= (inner ? g.nx : g.ni); ++i) {
                const double expected = slow(i, j, k);
                const auto actual = static_cast<double>(fast(i, j, k));
                if (std::abs(expected) > 1e20) {
                    EXPECT_NEAR(actual / expected, 1.0, tolerance) << i << " " << j << " " << k;
                    continue;
                }
                scale = std::max(scale, std::abs(expected));
                // A value that is not a number must not vanish in a maximum.
                const double error = std::abs(actual - expected);
                largest = std::isnan(error) ? error : std::max(largest, error);
            }
        }
    }
    return scale == 0 ? largest : largest / scale;
}

class AgainstPlainForm : public testing::TestWithParam<Kind> {};

TEST_P(AgainstPlainForm, SystemAndSolutionAgree) {
    const Kind kind = GetParam();
    for (const int sweeps : {0, 1, 4}) {
        SCOPED_TRACE("sweeps " + std::to_string(sweeps));
        RandomCase c(kind);
        c.settings.NSWPK = c.settings.NSWPE = sweeps;
        plain::State s = plain::copy_of(c.flow);
        const plain::Outcome out =
            plain::solve(kind.variable, c.settings, c.grid, s, {3, 1, kind.skip_sides});
        run(c, kind, 3, 1);
        const LinearSystem& eq = c.flow.eq;
        EXPECT_LT(difference(c.grid, eq.ae, s.ae, true), tolerance);
        EXPECT_LT(difference(c.grid, eq.aw, s.aw, true), tolerance);
        EXPECT_LT(difference(c.grid, eq.an, s.an, true), tolerance);
        EXPECT_LT(difference(c.grid, eq.as, s.as, true), tolerance);
        EXPECT_LT(difference(c.grid, eq.at, s.at, true), tolerance);
        EXPECT_LT(difference(c.grid, eq.ab, s.ab, true), tolerance);
        EXPECT_LT(difference(c.grid, eq.ap, s.ap, true), tolerance);
        EXPECT_LT(difference(c.grid, eq.su, s.su, true), tolerance);
        EXPECT_LT(difference(c.grid, eq.sp, s.sp, true), tolerance);
        EXPECT_LT(difference(c.grid, c.flow.gen, s.gen, true), tolerance);
        EXPECT_LT(difference(c.grid, c.flow.tke, s.tke, false), tolerance);
        EXPECT_LT(difference(c.grid, c.flow.ted, s.ted, false), tolerance);
        if (kind.variable == Variable::tkl) {
            EXPECT_LT(difference(c.grid, c.flow.tkl, s.tkl, false), tolerance);
            EXPECT_NEAR(double(c.flow.resid_klm) / out.r0, 1.0, tolerance);
            EXPECT_NEAR(double(c.flow.scale_klm) / s.scale_klm, 1.0, tolerance);
        } else if (kind.variable == Variable::ted) {
            EXPECT_NEAR(double(c.flow.resid_e) / out.r0, 1.0, tolerance);
            EXPECT_NEAR(double(c.flow.scale_e) / s.scale_e, 1.0, tolerance);
        } else {
            EXPECT_NEAR(double(c.flow.resid_k) / out.r0, 1.0, tolerance);
            EXPECT_NEAR(double(c.flow.scale_k) / s.scale_k, 1.0, tolerance);
        }
    }
}

std::vector<Kind> kinds() {
    std::vector<Kind> all;
    for (const int mode : {0, 1, 2}) {
        for (const int skip : {0, 1}) {
            for (const int model : {1, 2, 3, 4}) {
                all.push_back({Variable::tke, model, mode, skip, 0});
            }
            all.push_back({Variable::ted, 1, mode, skip, 0});
            all.push_back({Variable::tkl, 4, mode, skip, 1});
        }
        all.push_back({Variable::tke, 1, mode, 0, 1});
        all.push_back({Variable::ted, 1, mode, 0, 1});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(Kinds, AgainstPlainForm, testing::ValuesIn(kinds()));

TEST(TurbulenceEquations, AreTheSameBitsForAnyNumberOfThreads) {
    for (const Kind kind : {Kind{Variable::tke, 3, 2, 0, 1}, Kind{Variable::ted, 1, 1, 0, 1},
                            Kind{Variable::tkl, 4, 0, 0, 0}}) {
        RandomCase one(kind);
        one.settings.NSWPK = one.settings.NSWPE = 3;
        {
            const Threads threads(1);
            run(one, kind, 1, 1);
        }
        for (const int n : {2, 3, 5, 8, 20}) {
            SCOPED_TRACE(n);
            RandomCase again(kind);
            again.settings.NSWPK = again.settings.NSWPE = 3;
            const Threads threads(n);
            run(again, kind, 1, 1);
            EXPECT_TRUE(same_bits(again.flow.tke, one.flow.tke));
            EXPECT_TRUE(same_bits(again.flow.ted, one.flow.ted));
            EXPECT_TRUE(same_bits(again.flow.gen, one.flow.gen));
            EXPECT_TRUE(same_bits(again.flow.eq.ap, one.flow.eq.ap));
            EXPECT_TRUE(same_bits(again.flow.eq.ab, one.flow.eq.ab));
            EXPECT_TRUE(same_bits(again.flow.eq.at, one.flow.eq.at));
            EXPECT_TRUE(again.flow.resid_k == one.flow.resid_k);
            EXPECT_TRUE(again.flow.resid_e == one.flow.resid_e);
            EXPECT_TRUE(again.flow.resid_klm == one.flow.resid_klm);
            if (kind.variable == Variable::tkl) {
                EXPECT_TRUE(same_bits(again.flow.tkl, one.flow.tkl));
            }
        }
    }
}

TEST(TurbulenceEquations, KlEnergySeesTheTotalViscosityOnly) {
    const Kind kind{Variable::tkl, 4, 0, 0, 0};
    RandomCase one(kind);
    RandomCase other(kind);
    other.flow.viskl = random_field(other.grid, 20, 30, 5);
    run(one, kind, 1, 1);
    run(other, kind, 1, 1);
    EXPECT_TRUE(same_bits(one.flow.tkl, other.flow.tkl));
    other.flow.vis = random_field(other.grid, 20, 30, 5);
    run(other, kind, 1, 1);
    EXPECT_FALSE(same_bits(one.flow.tkl, other.flow.tkl));
}

// The scratch of one mesh must not leak into the equations on the next.
TEST(TurbulenceEquations, ScratchFollowsTheMesh) {
    const Kind kind{Variable::tke, 1, 0, 0, 0};
    RandomCase fresh(kind);
    run(fresh, kind, 1, 1);
    TurbulenceCase used(with_metrics(uniform_mesh({30, 31, 5}, 1, 1, 1)), 1);
    make_random(used, 1);
    run(used, kind, 1, 1);
    RandomCase again(kind);
    again.work = std::move(used.work);
    run(again, kind, 1, 1);
    EXPECT_TRUE(same_bits(again.flow.tke, fresh.flow.tke));
}

}  // namespace
}  // namespace torvex::test
