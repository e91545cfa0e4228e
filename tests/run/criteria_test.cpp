// The criteria in proportion to the mesh, their cap, and how they are told.

#include "run/criteria.hpp"

#include <gtest/gtest.h>

#include "support/case_text.hpp"

namespace torvex {
namespace {

CaseSettings with_criteria(float value, float limit) {
    CaseSettings s;
    s.CC_OUT_M = s.CC_OUT_U = s.CC_OUT_V = s.CC_OUT_W = s.CC_OUT_TKE = s.CC_OUT_TED = value;
    s.OUT_CC_LIMIT = limit;
    return s;
}

struct Scaling {
    int ni, nj, nk;
    float limit;
    float S;
    float criterion;  // what 0.001 becomes
};

TEST(Criteria, GrowWithMeshesAbove300000Cells) {
    for (const Scaling& c :
         {Scaling{100, 50, 50, 0.01F, 1.0F, 0.001F},               // 250000
          Scaling{100, 60, 50, 0.01F, 1.0F, 0.001F},               // 300000
          Scaling{100, 100, 60, 0.01F, 2.0F, 0.002F},              // 600000
          Scaling{100, 100, 60, 0.0015F, 2.0F, 0.0015F},           // capped
          Scaling{200, 200, 100, 0.01F, 13.333333F, 0.01F},        // 4000000, capped
          Scaling{200, 200, 100, 0.0F, 13.333333F, 0.013333333F},  // a limit of 0 is none
          Scaling{0, 0, 0, 0.01F, 1.0F, 0.001F}, Scaling{1, 1, 1, 0.0005F, 1.0F, 0.0005F}}) {
        CaseSettings s = with_criteria(0.001F, c.limit);
        EXPECT_FLOAT_EQ(scale_criteria(s, c.ni, c.nj, c.nk), c.S);
        EXPECT_FLOAT_EQ(s.CC_OUT_M, c.criterion);
        EXPECT_FLOAT_EQ(s.CC_OUT_U, c.criterion);
        EXPECT_FLOAT_EQ(s.CC_OUT_V, c.criterion);
        EXPECT_FLOAT_EQ(s.CC_OUT_W, c.criterion);
        EXPECT_FLOAT_EQ(s.CC_OUT_TKE, c.criterion);
        EXPECT_FLOAT_EQ(s.CC_OUT_TED, c.criterion);
    }
}

TEST(Criteria, EachIsScaledOnItsOwn) {
    CaseSettings s = with_criteria(0.001F, 0.01F);
    s.CC_OUT_U = 0.004F;
    s.CC_OUT_TED = 0.5F;
    scale_criteria(s, 100, 100, 60);
    EXPECT_FLOAT_EQ(s.CC_OUT_M, 0.002F);
    EXPECT_FLOAT_EQ(s.CC_OUT_U, 0.008F);
    EXPECT_FLOAT_EQ(s.CC_OUT_TED, 0.01F);
}

TEST(Criteria, AreToldOnConsoleAndLog) {
    CaseSettings s = with_criteria(0.001F, 0.01F);
    s.CC_OUT_M = 0.002F;
    s.CC_OUT_U = 0.5F;
    s.CC_OUT_W = 0.001234F;
    RunLog log;
    ::testing::internal::CaptureStdout();
    report_criteria(s, 13.333333F, log);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "   - Convergence Criteria are set as:\n"
              "     > M: 0.2000E-02\n"
              "     > U: 0.5000E+00\n"
              "     > V: 0.1000E-02\n"
              "     > W: 0.1234E-02\n"
              "     > relaxation coefficient(limit):     13.333(   0.01000)\n");
    EXPECT_EQ(test::without_dates(log.kept()),
              "<date> Outer iteration convergence criteria are set as:\n"
              "                    M: 0.2000E-02, U: 0.5000E+00, V: 0.1000E-02, W: 0.1234E-02\n"
              "                    SCALE:    13.333, LIMIT:   0.01000\n");
}

}  // namespace
}  // namespace torvex
