#include "nest/nest_balance.hpp"

#include <gmock/gmock.h>

#include "nest/nest_case.hpp"

namespace torvex {
namespace {

using test::NestCase;
using ::testing::HasSubstr;
using ::testing::Not;

// Planes of 400 m by 1000 m. In through i = 1 at 5 m/s, out through ni at 4 m/s, in through the
// south side at 0.5 m/s, out through the north side at 0.25 m/s, w is no flow through upright
// planes.
struct Balance : public ::testing::Test {
    Balance() {
        const GridGeometry& g = c.child;
        for (int k = 1; k <= g.nk; ++k) {
            for (int j = 1; j <= g.nj; ++j) {
                c.flow.u(1, j, k) = 5.0F;
                c.flow.u(g.ni, j, k) = 4.0F;
                c.flow.w(1, j, k) = 3.0F;
            }
            for (int i = 2; i <= g.nx; ++i) {
                c.flow.v(i, 1, k) = 0.5F;
                c.flow.v(i, g.nj, k) = 0.25F;
            }
        }
    }
    NestCase c;
};

TEST_F(Balance, CountsTheFourPlanes) {
    const NestBalance b = nest_balance(c.child, c.flow);
    EXPECT_NEAR(b.inflow, 5.0 * 4.0e5, 1.0);
    EXPECT_NEAR(b.outflow, (4.0 + 0.25 - 0.5) * 4.0e5, 1.0);
    EXPECT_NEAR(b.outflow_plane, 4.0e5, 0.1);
    EXPECT_NEAR(b.surplus(), 1.25 * 4.0e5, 1.0);
}

TEST_F(Balance, OutflowTakesTheSurplus) {
    balance_boundaries(c.pass(), c.flow);
    EXPECT_NEAR(c.flow.u(c.child.ni, 3, 3), 5.25F, 1.0e-5F);
    EXPECT_EQ(c.flow.u(1, 3, 3), 5.0F);
    const NestBalance after = nest_balance(c.child, c.flow);
    EXPECT_LT(std::fabs(after.surplus()) / after.inflow, 1.0e-6);
    EXPECT_THAT(c.log.kept(), HasSubstr(" WD 270.0: nest: inflow  0.2000E+07, outflow  0.1500E+07, "
                                        "correction  0.1250E+01\n"));
    EXPECT_THAT(c.log.kept(), Not(HasSubstr("Warning:")));
}

TEST_F(Balance, WithoutTheCorrectionTheLogWarns) {
    c.settings.nest.nest_bc_ofix = false;
    const Field3 u = c.flow.u;
    ::testing::internal::CaptureStderr();
    balance_boundaries(c.pass(), c.flow);
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr("differ by 0.2500E+00 of"));
    for (std::size_t n = 0; n < u.size(); ++n) {
        ASSERT_EQ(c.flow.u.data()[n], u.data()[n]);
    }
    EXPECT_THAT(c.log.kept(), HasSubstr("correction  0.0000E+00\n"));
    EXPECT_THAT(c.log.kept(), HasSubstr("differ by 0.2500E+00 of the inflow"));
}

}  // namespace
}  // namespace torvex
