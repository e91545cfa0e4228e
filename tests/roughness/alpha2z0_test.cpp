#include "roughness/alpha2z0.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "base/shear_exponent.hpp"

namespace torvex {
namespace {

constexpr AlphaSearch usual{.z0_min = 1.0e-4F, .z0_max = 1.0F, .eps = 1.0e-3F, .maxit = 20};

double alpha_of(double z0) {
    const double L = std::log10(z0);
    return 0.27 + L * (0.09 + L * (0.018 + L * 0.0016));
}

// The root of alpha = target by Newton's method in L, in double precision.
double root(double target) {
    double L = -1.0;
    for (int n = 0; n < 100; ++n) {
        const double slope = 0.09 + L * (0.036 + L * 0.0048);
        L -= (0.27 + L * (0.09 + L * (0.018 + L * 0.0016)) - target) / slope;
    }
    return std::pow(10.0, L);
}

struct Search {
    AlphaStatus status;
    float z0;
    std::vector<AlphaRound> rounds;
};

Search search(float target, const AlphaSearch& how = usual, float z0_before = -7.0F) {
    Search result{.status = AlphaStatus::converged, .z0 = z0_before, .rounds = {}};
    result.status = alpha2z0(target, how, result.z0, result.rounds);
    return result;
}

TEST(AlphaOfZ0, IsTheCubicInTheLogarithm) {
    EXPECT_EQ(shear_exponent(1.0F), 0.27F);
    EXPECT_NEAR(shear_exponent(0.1F), 0.27 - 0.09 + 0.018 - 0.0016, 1.0e-7);
    EXPECT_NEAR(shear_exponent(0.03F), 0.169035, 1.0e-6);
    for (float z0 = 1.0e-5F; z0 < 10.0F; z0 *= 1.1F) {
        EXPECT_NEAR(shear_exponent(z0), alpha_of(static_cast<double>(z0)), 2.0e-7);
    }
}

TEST(AlphaOfZ0, RisesWithTheRoughness) {
    for (float z0 = 1.0e-5F; z0 < 10.0F; z0 *= 1.01F) {
        EXPECT_LT(shear_exponent(z0), shear_exponent(1.01F * z0));
    }
}

// Middles of a bracket halved n times are exact fractions of it: 1 - (1 - 1e-4) / 2^n at the top.
TEST(Alpha2z0, TargetAtTheTopOfTheBracket) {
    const Search s = search(0.27F);
    EXPECT_EQ(s.status, AlphaStatus::converged);
    EXPECT_EQ(s.rounds.size(), 6U);
    EXPECT_NEAR(s.z0, 1.0 - (1.0 - 1.0e-4) / 64.0, 1.0e-6);
    EXPECT_NEAR(s.z0, 0.9843766F, 1.0e-6F);
}

TEST(Alpha2z0, TargetInside) {
    const Search s = search(0.2F);
    EXPECT_EQ(s.status, AlphaStatus::converged);
    EXPECT_EQ(s.rounds.size(), 7U);
    EXPECT_NEAR(s.z0, 0.1172758F, 1.0e-6F);
}

TEST(Alpha2z0, TargetAboveTheBracket) {
    const Search s = search(0.3F);
    EXPECT_EQ(s.status, AlphaStatus::not_converged);
    EXPECT_EQ(s.rounds.size(), 20U);
    EXPECT_NEAR(s.z0, 0.9999990F, 1.0e-7F);
}

TEST(Alpha2z0, TargetBelowTheBracket) {
    const Search s = search(0.05F);
    EXPECT_EQ(s.status, AlphaStatus::not_converged);
    EXPECT_EQ(s.rounds.size(), 20U);
    EXPECT_NEAR(s.z0, 0.00010095F, 1.0e-8F);
}

TEST(Alpha2z0, InvertsOverTheWholeRange) {
    for (float z0 = 1.05e-4F; z0 < 0.999F; z0 *= 1.05F) {
        const float target = shear_exponent(z0);
        const Search s = search(target);
        ASSERT_EQ(s.status, AlphaStatus::converged) << z0;
        EXPECT_LE(std::abs(alpha_of(static_cast<double>(s.z0)) - static_cast<double>(target)),
                  1.0e-3 + 3.0e-7)
            << z0;
    }
}

TEST(Alpha2z0, NarrowToleranceFindsTheRoot) {
    const AlphaSearch narrow{.z0_min = 1.0e-4F, .z0_max = 1.0F, .eps = 1.0e-6F, .maxit = 60};
    for (const float target : {0.11F, 0.14F, 0.169035F, 0.2F, 0.25F}) {
        const Search s = search(target, narrow);
        EXPECT_EQ(s.status, AlphaStatus::converged);
        EXPECT_NEAR(static_cast<double>(s.z0) / root(static_cast<double>(target)), 1.0, 2.0e-4);
    }
}

TEST(Alpha2z0, RecordsEveryRound) {
    const Search s = search(0.2F);
    const AlphaRound& first = s.rounds.front();
    EXPECT_EQ(first.it, 1);
    EXPECT_EQ(first.lo, 1.0e-4F);
    EXPECT_EQ(first.hi, 1.0F);
    EXPECT_EQ(first.mid, (1.0F + 1.0e-4F) * 0.5F);
    EXPECT_NEAR(first.alpha, alpha_of(0.50005), 1.0e-6);
    EXPECT_EQ(first.target, 0.2F);
    EXPECT_NEAR(first.error, alpha_of(0.50005) - 0.2, 1.0e-6);
    EXPECT_EQ(first.eps, 1.0e-3F);
    EXPECT_NEAR(first.alpha_lo, alpha_of(1.0e-4), 1.0e-6);
    EXPECT_EQ(first.alpha_hi, 0.27F);
    for (std::size_t n = 1; n < s.rounds.size(); ++n) {
        const AlphaRound& before = s.rounds[n - 1];
        const AlphaRound& now = s.rounds[n];
        EXPECT_EQ(now.it, before.it + 1);
        const bool too_rough = before.alpha >= 0.2F;
        EXPECT_EQ(now.lo, too_rough ? before.lo : before.mid);
        EXPECT_EQ(now.hi, too_rough ? before.mid : before.hi);
        EXPECT_GT(before.error, 1.0e-3F) << "only the last round may be close enough";
    }
    EXPECT_LE(s.rounds.back().error, 1.0e-3F);
    EXPECT_EQ(s.rounds.back().mid, s.z0);
}

TEST(Alpha2z0, BracketUpsideDownLeavesTheValue) {
    const Search s = search(0.2F, {.z0_min = 0.5F, .z0_max = 0.1F, .eps = 1.0e-3F, .maxit = 20});
    EXPECT_EQ(s.status, AlphaStatus::bad_bracket);
    EXPECT_EQ(s.z0, -7.0F);
    EXPECT_TRUE(s.rounds.empty());
}

TEST(Alpha2z0, BracketWithoutARoughnessLengthLeavesTheValue) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float inf = std::numeric_limits<float>::infinity();
    const AlphaSearch brackets[] = {
        {.z0_min = nan, .z0_max = 1.0F, .eps = 1.0e-3F, .maxit = 20},
        {.z0_min = 0.1F, .z0_max = nan, .eps = 1.0e-3F, .maxit = 20},
        {.z0_min = 0.1F, .z0_max = inf, .eps = 1.0e-3F, .maxit = 20},
        {.z0_min = -inf, .z0_max = 1.0F, .eps = 1.0e-3F, .maxit = 20},
        {.z0_min = -2.0F, .z0_max = -1.0F, .eps = 1.0e-3F, .maxit = 20},
        {.z0_min = 0.0F, .z0_max = 0.0F, .eps = 1.0e-3F, .maxit = 20},
    };
    for (const AlphaSearch& bracket : brackets) {
        const Search s = search(0.2F, bracket);
        EXPECT_EQ(s.status, AlphaStatus::bad_bracket) << bracket.z0_min << " " << bracket.z0_max;
        EXPECT_EQ(s.z0, -7.0F);
    }
}

TEST(Alpha2z0, BracketFromZeroOrBelowIsSearchedAllTheSame) {
    for (const float z0_min : {0.0F, -1.0F}) {
        const Search s =
            search(0.2F, {.z0_min = z0_min, .z0_max = 1.0F, .eps = 1.0e-3F, .maxit = 40});
        EXPECT_EQ(s.status, AlphaStatus::converged);
        EXPECT_NEAR(alpha_of(static_cast<double>(s.z0)), 0.2, 1.1e-3);
    }
}

TEST(Alpha2z0, BracketOfOnePointIsTriedOnce) {
    const Search hit =
        search(shear_exponent(0.1F), {.z0_min = 0.1F, .z0_max = 0.1F, .eps = 1.0e-3F, .maxit = 20});
    EXPECT_EQ(hit.status, AlphaStatus::converged);
    EXPECT_EQ(hit.z0, 0.1F);
    const Search miss = search(0.25F, {.z0_min = 0.1F, .z0_max = 0.1F, .eps = 0.0F, .maxit = 20});
    EXPECT_EQ(miss.status, AlphaStatus::not_converged);
    EXPECT_EQ(miss.z0, 0.1F);
}

TEST(Alpha2z0, WithoutARoundTheValueIsZero) {
    for (const int maxit : {0, -3, std::numeric_limits<int>::min()}) {
        const Search s =
            search(0.2F, {.z0_min = 1.0e-4F, .z0_max = 1.0F, .eps = 1.0e-3F, .maxit = maxit});
        EXPECT_EQ(s.status, AlphaStatus::not_converged);
        EXPECT_EQ(s.z0, 0.0F);
        EXPECT_TRUE(s.rounds.empty());
    }
}

TEST(Alpha2z0, ToleranceOfZeroEndsOnExactEquality) {
    const AlphaSearch exact{.z0_min = 0.0F, .z0_max = 1.0F, .eps = 0.0F, .maxit = 20};
    const Search s = search(shear_exponent(0.375F), exact);
    EXPECT_EQ(s.status, AlphaStatus::converged);
    EXPECT_EQ(s.z0, 0.375F);
    EXPECT_EQ(s.rounds.size(), 3U);  // 0.5, 0.25, 0.375
}

TEST(Alpha2z0, SearchEndsWhereTheBracketCannotShrink) {
    constexpr int endless = std::numeric_limits<int>::max();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float z0_min : {0.0F, 1.0e-4F}) {
        for (const float target : {0.3F, 0.2F, -100.0F, nan}) {
            for (const float eps : {0.0F, -1.0F, nan}) {
                const Search s = search(
                    target, {.z0_min = z0_min, .z0_max = 1.0F, .eps = eps, .maxit = endless});
                EXPECT_LT(s.rounds.size(), 300U);
                EXPECT_TRUE(s.z0 >= 0.0F && s.z0 <= 1.0F);
            }
        }
    }
}

}  // namespace
}  // namespace torvex
