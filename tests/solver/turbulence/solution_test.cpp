// What the turbulence equations do once they are assembled: relaxation, residuals, sweeps, report
// and clipping.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include "mesh/test_meshes.hpp"
#include "solver/fields.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_case.hpp"

namespace torvex::test {
namespace {

// Columns of two cells, the lower one beside the ground: pinned in ted, free in tke above.
struct TwoLayers : TurbulenceCase {
    explicit TwoLayers(int model = 1)
        : TurbulenceCase(with_metrics(uniform_mesh({3, 3, 3}, 4, 4, 5)), model) {
        flow.vis.fill(0.7F);
        flow.u.fill(3.0F);
        flow.v.fill(4.0F);
        flow.tke.fill(1.0F);
        flow.ted.fill(0.2F);
        if (flow.tkl.size() > 0) {
            flow.tkl.fill(1.0F);
        }
        flow.flxU.fill(2.0F);
    }
    // Products of row (i,j,k) with the neighbours as they stand, and the source.
    double right_side(const Field3& x, int i, int j, int k) const {
        const LinearSystem& eq = flow.eq;
        return double(eq.ae(i, j, k)) * double(x(i + 1, j, k)) +
               double(eq.aw(i, j, k)) * double(x(i - 1, j, k)) +
               double(eq.an(i, j, k)) * double(x(i, j + 1, k)) +
               double(eq.as(i, j, k)) * double(x(i, j - 1, k)) +
               double(eq.at(i, j, k)) * double(x(i, j, k + 1)) +
               double(eq.ab(i, j, k)) * double(x(i, j, k - 1)) + eq.su(i, j, k);
    }
    double residual(const Field3& x, int i, int j, int k) const {
        return right_side(x, i, j, k) - double(flow.eq.ap(i, j, k)) * double(x(i, j, k));
    }
};

// cmu34/0.41 ln(2 d/z0)/(2 d) of d = 2.5, z0 = 0.03, tke = 1.
constexpr double prescribed = 0.410070;

TEST(PinnedCell, TakesThePrescribedDissipationInOneSweep) {
    TwoLayers c;
    SolverContext ctx = c.context();
    CALCED(ctx, 1, 1);
    EXPECT_NEAR(double(c.flow.ted(2, 2, 2)), prescribed, 1e-6);
    EXPECT_EQ(c.flow.eq.sp(2, 2, 2), -1.0e25);
}

TEST(PinnedCell, MovesHalfWayWithHalfRelaxation) {
    TwoLayers c;
    c.settings.URFE = 0.5F;
    SolverContext ctx = c.context();
    CALCED(ctx, 1, 1);
    EXPECT_NEAR(double(c.flow.ted(2, 2, 2)), 0.5 * prescribed + 0.5 * 0.2, 1e-6);
    CALCED(ctx, 2, 1);
    EXPECT_NEAR(double(c.flow.ted(2, 2, 2)), 0.75 * prescribed + 0.25 * 0.2, 1e-6);
}

TEST(PinnedCell, CountsInTheReferenceSumOnly) {
    TwoLayers c;
    c.settings.NSWPE = 0;
    SolverContext ctx = c.context();
    CALCED(ctx, 1, 1);
    double resid = 0;
    double scale = 0;
    for (int k = 2; k <= 3; ++k) {
        for (int j = 2; j <= 3; ++j) {
            for (int i = 2; i <= 3; ++i) {
                resid += k == 2 ? 0.0 : std::abs(c.residual(c.flow.ted, i, j, k));
                scale += std::abs(double(c.flow.eq.ap(i, j, k)) * double(c.flow.ted(i, j, k)));
            }
        }
    }
    EXPECT_GT(scale, 7e24);
    EXPECT_NEAR(double(c.flow.scale_e) / scale, 1.0, 1e-5);
    EXPECT_GT(resid, 1e-3);
    EXPECT_NEAR(double(c.flow.resid_e) / resid, 1.0, 1e-4);
}

TEST(Relaxation, DividesTheCentreAndAddsTheOldValue) {
    TwoLayers one;
    one.settings.NSWPK = 0;
    SolverContext ctx1 = one.context();
    CALCKE(ctx1, 1, 2);
    TwoLayers half;
    half.settings.NSWPK = 0;
    half.settings.URFK = 0.4F;
    SolverContext ctx2 = half.context();
    CALCKE(ctx2, 1, 2);
    const LinearSystem& eq = one.flow.eq;
    const auto sum = double(eq.ae(2, 2, 3) + eq.aw(2, 2, 3) + eq.an(2, 2, 3) + eq.as(2, 2, 3) +
                            eq.at(2, 2, 3) + eq.ab(2, 2, 3));
    const double ap = sum - eq.sp(2, 2, 3);
    EXPECT_LT(eq.sp(2, 2, 3), 0.0);
    EXPECT_NEAR(double(eq.ap(2, 2, 3)), ap, 1e-5 * ap);
    EXPECT_NEAR(double(half.flow.eq.ap(2, 2, 3)), ap / 0.4, 1e-5 * ap);
    EXPECT_NEAR(half.flow.eq.su(2, 2, 3), eq.su(2, 2, 3) + 0.6 * ap / 0.4 * 1.0, 1e-5 * ap);
}

TEST(Sweeps, OverrelaxTkeAndTklAndNotTed) {
    TwoLayers c(4);
    c.settings.NSWPK = c.settings.NSWPE = 0;

    // The last cell of the last row is swept last: it sees all others as they stay.
    CALCKE(c.context(), 1, 1);
    const auto before = double(c.flow.tke(3, 3, 3));
    c.settings.NSWPK = c.settings.NSWPE = 1;
    const SolverContext ctx = c.context();
    CALCKE(ctx, 1, 1);
    double exact = c.right_side(c.flow.tke, 3, 3, 3) / double(c.flow.eq.ap(3, 3, 3));
    // The east, north and top neighbours hold the cell's value before the sweep, in both.
    EXPECT_NEAR(double(c.flow.tke(3, 3, 3)), before + 1.1 * (exact - before), 1e-5);
    EXPECT_GT(std::abs(exact - before), 1e-3);

    CALCED(ctx, 1, 1);
    exact = c.right_side(c.flow.ted, 3, 3, 3) / double(c.flow.eq.ap(3, 3, 3));
    EXPECT_NEAR(double(c.flow.ted(3, 3, 3)), exact, 1e-6);
    EXPECT_GT(std::abs(exact - 0.2), 1e-3);

    CALCKLM(ctx, 1, 1);
    exact = c.right_side(c.flow.tkl, 3, 3, 3) / double(c.flow.eq.ap(3, 3, 3));
    EXPECT_NEAR(double(c.flow.tkl(3, 3, 3)), 1.0 + 1.1 * (exact - 1.0), 1e-5);
    EXPECT_GT(std::abs(exact - 1.0), 1e-3);
}

// The lines that the outer iteration makes of the records of a call.
struct Reported : TwoLayers {
    Reported() : TwoLayers(4) {}
    void tell(std::string_view label, const SolveRecords& records) {
        for (const SolveRecord& record : records) {
            text += solve_line(label, record) + '\n';
        }
    }
    std::string text;
};

TEST(Report, WithoutSweepsShowsTheOldReference) {
    Reported c;
    c.settings.NSWPK = c.settings.NSWPE = 0;
    c.flow.resid_k = 123.0F;
    c.flow.resid_e = 0.5F;
    c.flow.resid_klm = 2.0e-12F;
    SolverContext ctx = c.context();
    c.tell("   k", CALCKE(ctx, 3, 2));
    c.tell("   e", CALCED(ctx, 3, 2));
    c.tell("  klm", CALCKLM(ctx, 3, 2));
    EXPECT_EQ(c.text,
              "   k: n=  1, rk0= 0.1230000E+03, rk1= 0.0000000E+00, a= 0.0000000E+00\n"
              "   e: n=  1, re0= 0.5000000E+00, re1= 0.0000000E+00, a= 0.0000000E+00\n"
              "  klm: n=  1, rk0= 0.2000000E-11, rk1= 0.0000000E+00, a= 0.0000000E+00\n");
}

TEST(Report, CountsOneMoreWhenTheSweepsRunOut) {
    Reported c;
    c.settings.NSWPK = 12;
    // Nothing falls below a tenth of this.
    c.flow.resid_k = 1e-30F;
    SolverContext ctx = c.context();
    c.tell("   k", CALCKE(ctx, 3, 2));
    EXPECT_EQ(c.text.substr(0, 15), "   k: n= 13, rk");
}

TEST(Report, StopsAtTheFirstSweepBelowATenth) {
    Reported c;
    c.settings.NSWPK = 12;
    c.flow.resid_k = 1e30F;
    SolverContext ctx = c.context();
    c.tell("   k", CALCKE(ctx, 3, 2));
    EXPECT_EQ(c.text.substr(0, 15), "   k: n=  1, rk");
}

TEST(Report, AReferenceOfZeroRunsAllSweeps) {
    Reported c;
    c.settings.NSWPE = 4;
    c.flow.resid_e = 0.0F;
    SolverContext ctx = c.context();
    c.tell("   e", CALCED(ctx, 3, 2));
    EXPECT_EQ(c.text.substr(0, 15), "   e: n=  5, re");
}

TEST(Residual, IsTakenAtMultiplesOfTheIntervalOnly) {
    TwoLayers c(4);
    c.flow.resid_k = c.flow.scale_k = 11.0F;
    c.flow.resid_e = c.flow.scale_e = 12.0F;
    c.flow.resid_klm = c.flow.scale_klm = 13.0F;
    SolverContext ctx = c.context();
    const auto run = [&](int iter) {
        CALCKE(ctx, iter, 5);
        CALCED(ctx, iter, 5);
        CALCKLM(ctx, iter, 5);
    };
    for (const int iter : {1, 4, 6, 9}) {
        run(iter);
        EXPECT_EQ(c.flow.resid_k, 11.0F);
        EXPECT_EQ(c.flow.scale_k, 11.0F);
        EXPECT_EQ(c.flow.resid_e, 12.0F);
        EXPECT_EQ(c.flow.scale_e, 12.0F);
        EXPECT_EQ(c.flow.resid_klm, 13.0F);
        EXPECT_EQ(c.flow.scale_klm, 13.0F);
    }
    run(10);
    EXPECT_NE(c.flow.resid_k, 11.0F);
    EXPECT_NE(c.flow.scale_k, 11.0F);
    EXPECT_NE(c.flow.resid_e, 12.0F);
    EXPECT_NE(c.flow.scale_e, 12.0F);
    EXPECT_NE(c.flow.resid_klm, 13.0F);
    EXPECT_NE(c.flow.scale_klm, 13.0F);
}

TEST(Residual, IsThatBeforeTheSweeps) {
    TwoLayers c;
    c.settings.NSWPK = 0;
    SolverContext ctx = c.context();
    CALCKE(ctx, 1, 1);
    double resid = 0;
    double scale = 0;
    for (int k = 2; k <= 3; ++k) {
        for (int j = 2; j <= 3; ++j) {
            for (int i = 2; i <= 3; ++i) {
                resid += std::abs(c.residual(c.flow.tke, i, j, k));
                scale += std::abs(double(c.flow.eq.ap(i, j, k)) * double(c.flow.tke(i, j, k)));
            }
        }
    }
    EXPECT_NEAR(double(c.flow.resid_k) / resid, 1.0, 1e-4);
    EXPECT_NEAR(double(c.flow.scale_k) / scale, 1.0, 1e-5);
    const float without_sweeps = c.flow.resid_k;
    TwoLayers again;
    again.settings.NSWPK = 5;
    SolverContext ctx2 = again.context();
    CALCKE(ctx2, 1, 1);
    EXPECT_EQ(again.flow.resid_k, without_sweeps);
}

// --- clipping

// Fields in places where the equations do not write them, or only clip them.
TEST(Clip, RaisesTkeInsideAndOnTheInflowAndSouthPlanesOnly) {
    TwoLayers c(4);
    c.settings.NSWPK = 0;
    SolverContext ctx = c.context(1);
    for (Field3* energy : {&c.flow.tke, &c.flow.tkl}) {
        energy->fill(-1.0F);
        if (energy == &c.flow.tke) {
            CALCKE(ctx, 1, 2);
        } else {
            CALCKLM(ctx, 1, 2);
        }
        for (int k = 1; k <= 4; ++k) {
            for (int j = 1; j <= 4; ++j) {
                for (int i = 1; i <= 4; ++i) {
                    const bool clipped = i <= 3 && j <= 3 && k >= 2 && k <= 3;
                    EXPECT_EQ((*energy)(i, j, k), clipped ? 1.0e-15F : -1.0F)
                        << i << " " << j << " " << k;
                }
            }
        }
    }
}

TEST(Clip, LeavesTedAlone) {
    TwoLayers c;
    c.settings.NSWPE = 0;
    c.flow.ted.fill(-1.0F);
    SolverContext ctx = c.context();
    CALCED(ctx, 1, 2);
    for (std::size_t n = 0; n < c.flow.ted.size(); ++n) {
        EXPECT_EQ(c.flow.ted.data()[n], -1.0F);
    }
}

TEST(Clip, KeepsWhatIsNotANumber) {
    TwoLayers c;
    c.settings.NSWPK = 0;
    c.flow.tke(1, 2, 3) = std::numeric_limits<float>::quiet_NaN();
    c.flow.tke(2, 2, 3) = std::numeric_limits<float>::quiet_NaN();
    SolverContext ctx = c.context();
    CALCKE(ctx, 1, 1);
    EXPECT_TRUE(std::isnan(c.flow.tke(1, 2, 3)));
    EXPECT_TRUE(std::isnan(c.flow.tke(2, 2, 3)));
    EXPECT_TRUE(std::isnan(c.flow.resid_k));
    c.settings.NSWPK = 2;
    CALCKE(ctx, 2, 1);
    EXPECT_TRUE(std::isnan(c.flow.tke(2, 2, 3)));
    EXPECT_TRUE(std::isnan(c.flow.resid_k));
}

}  // namespace
}  // namespace torvex::test
