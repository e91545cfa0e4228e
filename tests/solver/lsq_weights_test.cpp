// The small least-squares system of RCM.

#include "solver/lsq_weights.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace torvex {
namespace {

LeastSquares system_of(float a, float b, float c, float r1, float r2) {
    LeastSquares s;
    s.gram(1, 1) = a;
    s.gram(1, 2) = s.gram(2, 1) = b;
    s.gram(2, 2) = c;
    s.rhsL(1) = r1;
    s.rhsL(2) = r2;
    return s;
}

TEST(LsqWeights, OneCorrectionGetsTheLineSearchFactor) {
    LeastSquares s = system_of(8, 0, 1, 12, 3);
    lsq_weights(1, 1.0F, s);
    EXPECT_FLOAT_EQ(s.beta(1), 1.5F);
    EXPECT_EQ(s.beta(2), 0.0F);
}

// 4 b1 + b2 = 1, b1 + 3 b2 = 2: b1 = 1/11, b2 = 7/11.
TEST(LsqWeights, SolvesTwoUnknowns) {
    for (const float omega : {1.0F, 1.2F}) {
        LeastSquares s = system_of(4, 1, 3, 1, 2);
        lsq_weights(2, omega, s);
        EXPECT_NEAR(s.beta(1), 1.0 / 11, 1e-4);
        EXPECT_NEAR(s.beta(2), 7.0 / 11, 1e-4);
    }
}

// gram = V'V with the columns of V (1,0,0,0), (1,1,0,0), (1,1,1,0), (1,1,1,1) has full rank, and
// the right side gram (1,-2,3,-4)' that solution. Gauss-Seidel needs more than 100 rounds for its
// last digits: the residual is small then, which is what counts.
TEST(LsqWeights, SolvesFourUnknowns) {
    LeastSquares s;
    const float exact[4] = {1, -2, 3, -4};
    for (int a = 1; a <= 4; ++a) {
        for (int b = 1; b <= 4; ++b) {
            s.gram(a, b) = float(std::min(a, b));
            s.rhsL(a) += s.gram(a, b) * exact[b - 1];
        }
    }
    lsq_weights(4, 1.0F, s);
    for (int a = 1; a <= 4; ++a) {
        EXPECT_NEAR(s.beta(a), exact[a - 1], 2e-3);
    }
}

TEST(LsqWeights, StartsFromZeroWhateverStoodThere) {
    LeastSquares s = system_of(8, 0, 1, 12, 3);
    s.beta(1) = std::numeric_limits<float>::quiet_NaN();
    lsq_weights(1, 1.0F, s);
    EXPECT_FLOAT_EQ(s.beta(1), 1.5F);
}

TEST(LsqWeights, NothingToDoLeavesZero) {
    LeastSquares s = system_of(0, 0, 0, 0, 0);
    lsq_weights(2, 1.0F, s);
    EXPECT_EQ(s.beta(1), 0.0F);
    EXPECT_EQ(s.beta(2), 0.0F);
    s = system_of(1e-6F, 0, 1e-6F, 4e-5F, -5e-5F);  // sum of |residual| 9e-5
    lsq_weights(2, 1.0F, s);
    EXPECT_EQ(s.beta(1), 0.0F);
    EXPECT_EQ(s.beta(2), 0.0F);
    s = system_of(1e-6F, 0, 1e-6F, 6e-5F, -5e-5F);  // 1.1e-4
    lsq_weights(2, 1.0F, s);
    EXPECT_FLOAT_EQ(s.beta(1), 60.0F);
}

TEST(LsqWeights, LeavesAloneWhatHasNoDiagonal) {
    LeastSquares s = system_of(0, 0, 2, 5, 3);
    lsq_weights(2, 1.0F, s);
    EXPECT_EQ(s.beta(1), 0.0F);
    EXPECT_FLOAT_EQ(s.beta(2), 1.5F);
    s = system_of(-1, 0, 2, 5, 3);
    lsq_weights(2, 1.0F, s);
    EXPECT_EQ(s.beta(1), 0.0F);
}

// omega = 2 in one unknown goes back and forth between 0 and twice the solution: after the last,
// even, round it stands at 0. A half-way factor shows that rounds are made at all.
TEST(LsqWeights, EndsAfterAHundredRounds) {
    LeastSquares s = system_of(1, 0, 0, 1, 0);
    lsq_weights(1, 2.0F, s);
    EXPECT_EQ(s.beta(1), 0.0F);
    // 1 - beta shrinks by 0.99 a round: 0.99^100 = 0.36603 is left.
    lsq_weights(1, 0.01F, s);
    EXPECT_NEAR(s.beta(1), 1 - 0.36603, 1e-5);
}

}  // namespace
}  // namespace torvex
