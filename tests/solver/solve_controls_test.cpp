// What a direction is solved by, and its boost.

#include "solver/solve_controls.hpp"

#include <gtest/gtest.h>

#include "solver/solve_record.hpp"

namespace torvex {
namespace {

TEST(SolveControls, BeginAsTheCaseSays) {
    CaseSettings s;
    s.URFU = 0.11F;
    s.URFV = 0.12F;
    s.URFW = 0.13F;
    s.URFP = 0.14F;
    s.URFK = 0.15F;
    s.URFE = 0.16F;
    s.URFVIS = 0.17F;
    s.NSWPU = 1;
    s.NSWPV = 2;
    s.NSWPW = 3;
    s.NSWPP = 4;
    s.NSWPK = 5;
    s.NSWPE = 6;
    const SolveControls c = solve_controls(s);
    EXPECT_EQ(c.URFU, 0.11F);
    EXPECT_EQ(c.URFV, 0.12F);
    EXPECT_EQ(c.URFW, 0.13F);
    EXPECT_EQ(c.URFP, 0.14F);
    EXPECT_EQ(c.URFK, 0.15F);
    EXPECT_EQ(c.URFE, 0.16F);
    EXPECT_EQ(c.URFVIS, 0.17F);
    EXPECT_EQ(c.NSWPU, 1);
    EXPECT_EQ(c.NSWPV, 2);
    EXPECT_EQ(c.NSWPW, 3);
    EXPECT_EQ(c.NSWPP, 4);
    EXPECT_EQ(c.NSWPK, 5);
    EXPECT_EQ(c.NSWPE, 6);
}

TEST(SolveControls, BoostDoublesUpToTheCeilings) {
    CaseSettings s;
    s.URFU = s.URFV = s.URFW = s.URFP = s.URFK = s.URFE = s.URFVIS = 0.25F;
    s.URFU_MAX = 0.4F;
    s.URFV_MAX = 0.5F;
    s.URFW_MAX = 0.6F;
    s.URFP_MAX = 0.3F;
    s.URFK_MAX = 0.9F;
    s.URFE_MAX = 0.45F;
    s.URFVIS_MAX = 0.9F;
    SolveControls c = solve_controls(s);
    boost(c, s);
    EXPECT_EQ(c.URFU, 0.4F);
    EXPECT_EQ(c.URFV, 0.5F);
    EXPECT_EQ(c.URFW, 0.5F);
    EXPECT_EQ(c.URFP, 0.3F);
    EXPECT_EQ(c.URFK, 0.5F);
    EXPECT_EQ(c.URFE, 0.45F);
    EXPECT_EQ(c.URFVIS, 0.25F);
    EXPECT_EQ(s.URFW, 0.25F) << "the case stays as it is";
    boost(c, s);
    EXPECT_EQ(c.URFW, 0.6F);
    EXPECT_EQ(c.URFK, 0.9F);
}

TEST(SolveLine, NamesTheSumsByTheLabel) {
    const SolveRecord record{.n = 12, .r0 = 28.0F, .r1 = 10.0F, .a = 0.25F};
    EXPECT_EQ(solve_line("   u", record),
              "   u: n= 12, ru0= 0.2800000E+02, ru1= 0.1000000E+02, a= 0.2500000E+00");
    EXPECT_EQ(solve_line("  klm", record),
              "  klm: n= 12, rk0= 0.2800000E+02, rk1= 0.1000000E+02, a= 0.2500000E+00");
}

}  // namespace
}  // namespace torvex
