#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "mesh/test_meshes.hpp"
#include "solver/fields.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_case.hpp"

namespace torvex::test {
namespace {

// A linear flow u = A x, with A by rows, on a skewed mesh, where linear fields have exact
// gradients. The eddy viscosity is 0.6, the density 1.2.
struct LinearFlow : TurbulenceCase {
    LinearFlow(int model, const double (&A)[3][3])
        : TurbulenceCase(with_metrics(sheared_mesh({7, 6, 8})), model) {
        const auto component = [&](const double* a) {
            return field_of(grid, [this, a](int i, int j, int k) {
                return a[0] * double(grid.xc(i, j, k)) + a[1] * double(grid.yc(i, j, k)) +
                       a[2] * double(grid.zc(i, j, k));
            });
        };
        flow.u = component(A[0]);
        flow.v = component(A[1]);
        flow.w = component(A[2]);
        flow.den.fill(1.2F);
        flow.vis.fill(0.6F + settings.VISCOS);
        flow.tke.fill(1.0F);
        settings.NSWPK = 0;
        SolverContext ctx = context();
        CALCKE(ctx, 1, 2);
    }

    void expect_gen(double expected, double accuracy) const {
        for (int k = 2; k <= grid.nz; ++k) {
            for (int j = 2; j <= grid.ny; ++j) {
                for (int i = 2; i <= grid.nx; ++i) {
                    EXPECT_NEAR(double(flow.gen(i, j, k)), expected, accuracy)
                        << i << " " << j << " " << k;
                }
            }
        }
    }
};

constexpr double nu = 0.6 / 1.2;  // eddy viscosity over density

// du/dx = 0.3 = -dv/dy: S^2 = 2*0.3^2 + 2*0.3^2 and no vorticity.
constexpr double plane_strain[3][3] = {{0.3, 0, 0}, {0, -0.3, 0}, {0, 0, 0}};

TEST(Production, StrainWithoutVorticityFeedsOnlyThePlainForm) {
    LinearFlow(1, plane_strain).expect_gen(nu * 0.36, 1e-5);
    LinearFlow(2, plane_strain).expect_gen(nu * 0.36, 1e-5);
    LinearFlow(4, plane_strain).expect_gen(nu * 0.36, 1e-5);
    // Zero but for the rounding of the gradients, which a root amplifies.
    LinearFlow(3, plane_strain).expect_gen(0.0, 3e-6);
}

// du/dz = 0.5: S^2 = W^2 = 0.25.
constexpr double pure_shear[3][3] = {{0, 0, 0.5}, {0, 0, 0}, {0, 0, 0}};

TEST(Production, PureShearFeedsBothFormsAlike) {
    LinearFlow(1, pure_shear).expect_gen(nu * 0.25, 1e-5);
    LinearFlow(3, pure_shear).expect_gen(nu * 0.25, 1e-5);
}

// Turning as a solid body strains nothing.
constexpr double rotation[3][3] = {{0, -0.4, 0.2}, {0.4, 0, -0.1}, {-0.2, 0.1, 0}};

TEST(Production, SolidRotationFeedsNothing) {
    LinearFlow(1, rotation).expect_gen(0.0, 1e-6);
    LinearFlow(3, rotation).expect_gen(0.0, 3e-6);
}

// Nine different gradients:
//   S^2 = 2(0.1^2 + 0.5^2 + 0.6^2) + (0.2+0.4)^2 + (0.6+0.8)^2 + (0.7+0.3)^2 = 4.56
//   W^2 = (0.2-0.4)^2 + (0.6-0.8)^2 + (0.7-0.3)^2 = 0.24
constexpr double general[3][3] = {{0.1, 0.2, 0.3}, {0.4, 0.5, 0.6}, {0.7, 0.8, -0.6}};

TEST(Production, EveryGradientHasItsPlace) {
    LinearFlow(1, general).expect_gen(nu * 4.56, 3e-5);
    LinearFlow(3, general).expect_gen(nu * std::sqrt(4.56 * 0.24), 3e-5);
}

TEST(Production, KlEquationTakesThePlainFormAndLeavesItInGen) {
    LinearFlow c(4, plane_strain);
    c.flow.gen.fill(-1.0F);
    c.flow.tkl.fill(1.0F);
    SolverContext ctx = c.context();
    CALCKLM(ctx, 1, 2);
    c.expect_gen(nu * 0.36, 1e-5);
    // Whatever the model key says elsewhere.
    c.settings.TURBULENCE_MODEL = 3;
    c.flow.gen.fill(-1.0F);
    CALCKLM(ctx, 1, 2);
    c.expect_gen(nu * 0.36, 1e-5);
}

// Sources in a cell off the walls of a flow that does not diffuse across.
struct SourceCase : TurbulenceCase {
    explicit SourceCase(int model, float mut)
        : TurbulenceCase(with_metrics(uniform_mesh({5, 5, 6}, 2, 3, 4)), model) {
        flow.vis.fill(settings.VISCOS + mut);
        flow.den.fill(1.5F);
        flow.tke.fill(2.0F);
        flow.ted.fill(0.3F);
        settings.NSWPK = settings.NSWPE = 0;
    }
    double su() const { return flow.eq.su(3, 3, 4); }
    double sp() const { return flow.eq.sp(3, 3, 4); }
    static constexpr double vol = 24;
};

TEST(EnergySource, IsProductionAndTheSinkThroughTheEddyViscosity) {
    SourceCase c(1, 0.5F);
    // u = 0.7 z at a density of 1.5: gen = (0.5/1.5) 0.49.
    c.flow.u = field_of(c.grid, [&](int i, int j, int k) { return 0.7F * c.grid.zc(i, j, k); });
    SolverContext ctx = c.context();
    CALCKE(ctx, 1, 2);
    EXPECT_NEAR(c.su(), c.vol * 1.5 * (0.5 / 1.5) * 0.49, 1e-4);
    EXPECT_NEAR(c.sp(), -c.vol * 0.09 * 1.5 * 1.5 * 2.0 / 0.5, 1e-4);
    // A negative energy still breaks itself down.
    c.flow.tke.fill(-2.0F);
    CALCKE(ctx, 1, 2);
    EXPECT_NEAR(c.sp(), -c.vol * 0.09 * 1.5 * 1.5 * 2.0 / 0.5, 1e-4);
}

TEST(EnergySource, KlEquationHasItsOwnConstant) {
    SourceCase c(4, 0.5F);
    c.flow.tkl.fill(3.0F);
    SolverContext ctx = c.context();
    CALCKLM(ctx, 1, 2);
    EXPECT_NEAR(c.sp(), -c.vol * 0.094 * 1.5 * 1.5 * 3.0 / 0.5, 1e-4);
}

TEST(DissipationSource, IsThatOfTheStandardModel) {
    SourceCase c(1, 0.5F);
    c.flow.gen.fill(0.8F);
    SolverContext ctx = c.context();
    CALCED(ctx, 1, 2);
    // eps/k = 0.09*1.5*2/0.5: CE1 den gen eps/k and CE2 den eps/k.
    const double over_k = 0.09 * 1.5 * 2.0 / 0.5;
    EXPECT_NEAR(c.su(), c.vol * 1.5 * 1.44 * 0.8 * over_k, 1e-3);
    EXPECT_NEAR(c.sp(), -c.vol * 1.5 * 1.92 * over_k, 1e-3);
}

TEST(Sources, AreFiniteWithoutEddyViscosity) {
    SourceCase c(4, 0.0F);
    c.flow.vis.fill(c.settings.VISCOS);
    c.flow.tkl.fill(2.0F);
    SolverContext ctx = c.context();
    CALCKE(ctx, 1, 2);
    EXPECT_NEAR(c.sp() / (-c.vol * 0.09 * 1.5 * 1.5 * 2.0 / 1e-15), 1.0, 1e-5);
    CALCED(ctx, 1, 2);
    EXPECT_NEAR(c.sp() / (-c.vol * 1.5 * 1.5 * 0.09 * 1.92 * 2.0 / 1e-15), 1.0, 1e-5);
    CALCKLM(ctx, 1, 2);
    EXPECT_NEAR(c.sp() / (-c.vol * 0.094 * 1.5 * 1.5 * 2.0 / 1e-15), 1.0, 1e-5);
}

TEST(Sources, ShowAVolumeOrDensityOfZeroInTheResidual) {
    SourceCase c(1, 0.5F);
    c.flow.den.fill(0.0F);
    c.flow.u = random_field(c.grid, 0, 5, 3);
    c.settings.NSWPK = 1;
    SolverContext ctx = c.context();
    CALCKE(ctx, 1, 1);
    EXPECT_FALSE(std::isfinite(c.flow.resid_k));
}

}  // namespace
}  // namespace torvex::test
