// The power-law profile.

#include "solver/power_law.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace torvex {
namespace {

PowerLaw law_of(float z0) {
    return {shear_exponent(z0), gradient_height(z0)};
}

TEST(PowerLaw, OfOpenCountry) {
    const PowerLaw law = law_of(0.03F);
    EXPECT_NEAR(law.alpha, 0.169035F, 1e-6);
    EXPECT_NEAR(law.Zg, 387.324F, 1e-3);
    EXPECT_NEAR(speed_at(law, 10), 5.38964F, 1e-5);
    EXPECT_NEAR(energy_at(law, 10), 1.185565F, 2e-6);
}

TEST(PowerLaw, OfARoughnessOfOneMetreHasNoLogarithm) {
    EXPECT_EQ(shear_exponent(1), 0.27F);
    EXPECT_EQ(gradient_height(1), 550.0F);
}

TEST(PowerLaw, IsUniformFromTheGradientHeightOn) {
    for (const float z0 : {0.0001F, 0.03F, 1.0F, 9.0F}) {
        const PowerLaw law = law_of(z0);
        for (const float h : {law.Zg, 1.5F * law.Zg, 1.0e6F}) {
            EXPECT_EQ(speed_at(law, h), 10.0F);
            EXPECT_NEAR(energy_at(law, h), 0.454610F, 1e-6);
            EXPECT_EQ(energy_at(law, h), 0.83F * (0.7400828F * 0.7400828F));
        }
        // No step there: the fourth root of 0.3 is what the formula below comes to.
        const float below = std::nextafter(law.Zg, 0.0F);
        EXPECT_NEAR(speed_at(law, below), 10.0F, 1e-5);
        EXPECT_NEAR(energy_at(law, below), 0.454610F, 1e-6);
    }
}

// The polynomial and the powers in double precision, over the roughness of a map and all heights.
TEST(PowerLaw, AgreesWithItsFormulasInDoublePrecision) {
    for (int m = 0; m < 22; ++m) {
        const double z0 = 1.0e-4 * std::pow(1.7, m);
        const double L = std::log10(double(float(z0)));
        const double alpha = ((0.0016 * L + 0.018) * L + 0.09) * L + 0.27;
        const double Zg = 550 * std::exp(0.1 * std::log(double(float(z0))));
        const PowerLaw law = law_of(float(z0));
        EXPECT_NEAR(double(law.alpha), alpha, 3e-7);
        EXPECT_NEAR(double(law.Zg), Zg, 3e-7 * Zg);
        for (int n = 0; n < 40; ++n) {
            const double h = 0.01 * std::pow(1.3, n);
            if (h >= Zg) {
                break;
            }
            const double x = double(float(h)) / Zg;
            const double T = std::exp(-0.05 * std::log(x)) * std::exp(0.25 * std::log1p(-0.7 * x));
            EXPECT_NEAR(double(speed_at(law, float(h))), 10 * std::exp(alpha * std::log(x)), 2e-5);
            EXPECT_NEAR(double(energy_at(law, float(h))), 0.83 * T * T, 2e-6 * 0.83 * T * T);
        }
    }
}

// Logarithm and polynomial: the same in double precision and rounded once gives other bits.
TEST(PowerLaw, TakesTheExponentInSinglePrecision) {
    int other_bits = 0;
    for (int m = 0; m < 1000; ++m) {
        const float z0 = 1.0e-4F * std::pow(1.0115F, static_cast<float>(m));
        const float L = log10f(z0);
        const float L2 = L * L;
        const float L3 = L * L2;
        EXPECT_EQ(shear_exponent(z0), 0.27F + 0.09F * L + 0.018F * L2 + 0.0016F * L3);
        const double M = std::log10(double(z0));
        const double alpha = 0.27 + 0.09 * M + 0.018 * M * M + 0.0016 * M * M * M;
        other_bits += shear_exponent(z0) != float(alpha) ? 1 : 0;
    }
    EXPECT_GT(other_bits, 0);
}

// The energy has no bound towards the ground: (h/Zg)^-0.1.
TEST(PowerLaw, RaisesTheEnergyTowardsTheGround) {
    const PowerLaw law = law_of(0.03F);
    EXPECT_NEAR(energy_at(law, 1.0e-6F) / energy_at(law, 1.0e-5F), std::pow(10.0F, 0.1F), 1e-4);
}

}  // namespace
}  // namespace torvex
