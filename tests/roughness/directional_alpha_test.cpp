#include "roughness/directional_alpha.hpp"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "roughness/roughness_cases.hpp"

namespace torvex {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::vector<float> directions{0.0F, 180.0F, 360.2F};
const std::vector<float> alphas{0.2F, 0.3F, 0.2F};

TEST(InterpolatedAlpha, IsLinearBetweenTheEntries) {
    EXPECT_FLOAT_EQ(interpolated_alpha(directions, alphas, 0.0F).value(), 0.2F);
    EXPECT_FLOAT_EQ(interpolated_alpha(directions, alphas, 45.0F).value(), 0.225F);
    EXPECT_FLOAT_EQ(interpolated_alpha(directions, alphas, 180.0F).value(), 0.3F);
    EXPECT_FLOAT_EQ(interpolated_alpha(directions, alphas, 270.0F).value(),
                    static_cast<float>(0.3 - 0.1 * 90.0 / 180.2));
}

TEST(InterpolatedAlpha, HoldsAtTheLastEntry) {
    EXPECT_FLOAT_EQ(interpolated_alpha(directions, alphas, 360.2F).value(), 0.2F);
    EXPECT_FALSE(interpolated_alpha(directions, alphas, std::nextafter(360.2F, 400.0F)));
}

TEST(InterpolatedAlpha, FailsBelowTheFirstEntry) {
    EXPECT_FALSE(interpolated_alpha(directions, alphas, -0.1F));
    EXPECT_FALSE(interpolated_alpha(directions, alphas, std::numeric_limits<float>::quiet_NaN()));
}

TEST(InterpolatedAlpha, FindsEveryIntervalOfALongTable) {
    std::vector<float> d;
    std::vector<float> a;
    for (int n = 0; n <= 36; ++n) {
        d.push_back(static_cast<float>(10 * n));
        a.push_back(static_cast<float>(n * n));
    }
    for (int n = 0; n < 36; ++n) {
        const auto middle = static_cast<float>(10 * n + 5);
        EXPECT_FLOAT_EQ(interpolated_alpha(d, a, middle).value(),
                        0.5F * static_cast<float>(n * n + (n + 1) * (n + 1)));
        EXPECT_FLOAT_EQ(interpolated_alpha(d, a, static_cast<float>(10 * n)).value(),
                        static_cast<float>(n * n));
    }
}

TEST(InterpolatedAlpha, FailsWhereDirectionsDoNotRise) {
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float second : {0.0F, -5.0F, 360.2F, 400.0F, nan}) {
        const std::vector<float> d{0.0F, second, 360.2F};
        EXPECT_FALSE(interpolated_alpha(d, alphas, 10.0F)) << second;
    }
}

TEST(InterpolatedAlpha, FailsWithoutAnInterval) {
    const std::vector<float> one{0.0F};
    EXPECT_FALSE(interpolated_alpha({}, {}, 0.0F));
    EXPECT_FALSE(interpolated_alpha(one, one, 0.0F));
    EXPECT_FALSE(interpolated_alpha(directions, one, 0.0F));
}

class DirectionalAlpha : public test::RoughnessTest {
 protected:
    DirectionalAlpha() {
        settings.USE_DIRECTIONAL_ALPHA = true;
        settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS(1) = 1;
        settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS(2) = 2;
        settings.alpha_direction = {0.0F, 360.2F};
        settings.alpha_value = {0.2F, 0.2F};
        upwind.z_up = 0.03F;
    }
    // A table of one entry, closed as the reader of tables does.
    void one_entry(float direction, float alpha) {
        settings.alpha_direction = {direction, 360.0F + alpha};
        settings.alpha_value = {alpha, alpha};
    }
    void take() { take_directional_alpha(pass(), upwind); }
    std::vector<std::string> messages() const { return test::told(log); }

    UpwindRoughness upwind;
};

TEST_F(DirectionalAlpha, BecomesTheUpwindRoughnessAndIsTold) {
    take();
    EXPECT_NEAR(upwind.z_up, 0.1172758F, 1.0e-6F);
    EXPECT_FLOAT_EQ(upwind.alpha, 0.2F);
    EXPECT_THAT(messages(),
                ElementsAre(" WD 270_0: Interpolated directional alpha,  0.2000E+00 is used.",
                            " Bisectoin method is used to calculate z0",
                            "  0.1000E-03< z0 < 0.1000E+01  eps= 0.1000E-02 maxit=20",
                            " WD 270_0: Corresponding z0,  0.1173E+00 (m) is used."));
}

TEST_F(DirectionalAlpha, RecordsItsRounds) {
    take();
    const std::string text = directory.read("alpha2z0_convergence-270_0.txt");
    std::istringstream in(text);
    std::string line;
    int count = 0;
    while (std::getline(in, line)) {
        ++count;
        EXPECT_EQ(line.size(), 5U + 9U * 14U);
        std::istringstream columns(line);
        int it = 0;
        double lo = 0, hi = 0, mid = 0, a = 0, target = 0, error = 0, eps = 0, a_lo = 0, a_hi = 0;
        columns >> it >> lo >> hi >> mid >> a >> target >> error >> eps >> a_lo >> a_hi;
        ASSERT_TRUE(columns);
        EXPECT_EQ(it, count);
        EXPECT_NEAR(mid, 0.5 * (lo + hi), 1.0e-5);
        EXPECT_NEAR(error, std::abs(a - target), 1.5e-5);
        EXPECT_NEAR(target, 0.2, 1.0e-9);
        EXPECT_NEAR(eps, 0.001, 1.0e-9);
        EXPECT_LT(a_lo, a_hi);
    }
    EXPECT_EQ(count, 7);
    // lo, hi and their middle (0.50005), its alpha from the cubic in double precision.
    EXPECT_THAT(
        text, ::testing::StartsWith("    1   0.10000E-03   0.10000E+01   0.50005E+00   0.24450E+00"
                                    "   0.20000E+00   0.44498E-01   0.10000E-02"));
}

TEST_F(DirectionalAlpha, ReplacesTheRecordOfAnEarlierRun) {
    directory.write("alpha2z0_convergence-270_0.txt", std::string(5000, 'x'));
    take();
    EXPECT_EQ(directory.read("alpha2z0_convergence-270_0.txt").find('x'), std::string::npos);
}

TEST_F(DirectionalAlpha, WarnsWhereTheBracketDoesNotHoldTheTarget) {
    one_entry(0.0F, 0.3F);
    take();
    EXPECT_NEAR(upwind.z_up, 0.9999990F, 1.0e-7F);
    EXPECT_EQ(messages().back(), " WD 270_0: WARNING! Bisection method not converged.");
    EXPECT_EQ(messages().size(), 4U);
}

TEST_F(DirectionalAlpha, BadBracketLeavesTheRoughness) {
    settings.DIRECTIONAL_ALPHA_Z0_MIN = 2.0F;
    take();
    EXPECT_EQ(upwind.z_up, 0.03F);
    EXPECT_EQ(messages().back(), " WD 270_0: Corresponding z0,  0.3000E-01 (m) is used.");
    EXPECT_EQ(directory.read("alpha2z0_convergence-270_0.txt"), "");
}

TEST_F(DirectionalAlpha, WithoutARoundTheRoughnessIsZero) {
    settings.DIRECTIONAL_ALPHA_BS_MAXIT = 0;
    take();
    EXPECT_EQ(upwind.z_up, 0.0F);
    EXPECT_EQ(messages().back(), " WD 270_0: WARNING! Bisection method not converged.");
    EXPECT_EQ(directory.read("alpha2z0_convergence-270_0.txt"), "");
}

void expect_untouched(const UpwindRoughness& upwind, const RunLog& log,
                      const std::vector<std::string>& files) {
    EXPECT_EQ(upwind.z_up, 0.03F);
    EXPECT_EQ(upwind.alpha, 0.0F);
    EXPECT_EQ(log.kept(), "");
    EXPECT_THAT(files, IsEmpty());
}

TEST_F(DirectionalAlpha, SwitchAloneChangesNothing) {
    settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS.fill(-1);
    take();
    expect_untouched(upwind, log, files());
}

TEST_F(DirectionalAlpha, ListAloneChangesNothing) {
    settings.USE_DIRECTIONAL_ALPHA = false;
    take();
    expect_untouched(upwind, log, files());
}

TEST_F(DirectionalAlpha, NegativeEntryEndsTheList) {
    settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS(1) = 5;
    settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS(2) = -1;
    settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS(3) = 1;
    take();
    expect_untouched(upwind, log, files());
}

TEST_F(DirectionalAlpha, ListMayBeFullAndHoldZeros) {
    settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS.fill(0);
    take();
    expect_untouched(upwind, log, files());
    settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS(360) = 1;
    take();
    EXPECT_NEAR(upwind.z_up, 0.1172758F, 1.0e-6F);
}

TEST_F(DirectionalAlpha, PreviewIsLeftAloneEvenIfListed) {
    iwd = preview_direction;
    settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS(1) = preview_direction;
    take();
    expect_untouched(upwind, log, files());
}

TEST_F(DirectionalAlpha, DirectionBelowTheTableGoesOnceRound) {
    // Entries 10, 200 and the closing one at 360.1; a wind from 0.05 is looked up at 360.05.
    settings.alpha_direction = {10.0F, 200.0F, 360.1F};
    settings.alpha_value = {0.1F, 0.25F, 0.1F};
    settings.WIND_DIRECTION_ANGLE(1) = 0.05F;
    take();
    EXPECT_NEAR(upwind.alpha, 0.25 - 0.15 * (360.05 - 200.0) / 160.1, 1.0e-6);
}

TEST_F(DirectionalAlpha, DirectionEqualToTheFirstEntryStaysThere) {
    settings.alpha_direction = {270.0F, 300.0F, 360.2F};
    settings.alpha_value = {0.2F, 0.1F, 0.2F};
    take();
    EXPECT_FLOAT_EQ(upwind.alpha, 0.2F);
}

TEST_F(DirectionalAlpha, TableOfOneEntryCoversFromThereOn) {
    one_entry(250.0F, 0.22F);
    take();
    EXPECT_FLOAT_EQ(upwind.alpha, 0.22F);
    // Below the entry the direction goes round to beyond 360.22.
    log.discard();
    settings.WIND_DIRECTION_ANGLE(1) = 100.0F;
    upwind.alpha = 0.15F;
    take();
    EXPECT_EQ(upwind.alpha, 0.15F);
    EXPECT_EQ(messages().front(),
              " WD 270_0: WARNING! Direction is outside the table of directional alpha.");
}

TEST_F(DirectionalAlpha, DirectionOutsideTheTableKeepsTheLastExponent) {
    take();
    const float first = upwind.z_up;
    log.discard();
    upwind.z_up = 0.5F;  // what the next direction has found for itself
    iwd = 2;
    tag = "090_0";
    settings.WIND_DIRECTION_ANGLE(2) = 90.0F;
    one_entry(100.0F, 0.25F);
    take();
    EXPECT_FLOAT_EQ(upwind.alpha, 0.2F);
    EXPECT_EQ(upwind.z_up, first);
    EXPECT_THAT(messages(),
                ElementsAre(" WD 090_0: WARNING! Direction is outside the table of directional "
                            "alpha.",
                            " WD 090_0: Interpolated directional alpha,  0.2000E+00 is used.",
                            HasSubstr("Bisectoin"), HasSubstr("< z0 <"),
                            " WD 090_0: Corresponding z0,  0.1173E+00 (m) is used."));
}

TEST_F(DirectionalAlpha, FirstDirectionOutsideTheTableHasTheExponentZero) {
    one_entry(300.0F, 0.25F);
    take();
    EXPECT_EQ(upwind.alpha, 0.0F);
    EXPECT_NEAR(upwind.z_up, 0.00010095F, 1.0e-8F);
    EXPECT_EQ(messages()[1], " WD 270_0: Interpolated directional alpha,  0.0000E+00 is used.");
    EXPECT_EQ(messages().back(), " WD 270_0: WARNING! Bisection method not converged.");
}

TEST_F(DirectionalAlpha, MissingTableIsNoCrash) {
    settings.alpha_direction.clear();
    settings.alpha_value.clear();
    take();
    EXPECT_EQ(upwind.alpha, 0.0F);
}

}  // namespace
}  // namespace torvex
