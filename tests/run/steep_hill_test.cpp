// Whole cases on steep ground: what converges, what does not, and what comes behind it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

class SteepHill : public WholeCase {
 protected:
    // 300 m high, and at its steepest 94 %.
    SteepHill() { write_ground(cosine_hill(300, 250), roughness_of_grass, 161, 50); }

    std::string outcome(const std::string& solver) const {
        write_case(hill_case({{"NML_NUMERICAL_SOLVER", "MAXIT = 400, " + solver}}));
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        const std::string text = log();
        const std::size_t at = text.rfind("WD 270.0: ");
        return text.substr(at + 10, text.find('.', at + 10) - at - 10);
    }
};

double steepest_slope(const Solution& s) {
    const GridGeometry& g = s.grid;
    double steepest = 0;
    for (int j = 1; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            const float rise = g.zn(i, j, 1) - g.zn(i - 1, j, 1);
            steepest =
                std::max(steepest,
                         static_cast<double>(std::abs(rise / (g.xn(i, j, 1) - g.xn(i - 1, j, 1)))));
        }
    }
    return steepest;
}

TEST_F(SteepHill, ConvergesWithAndWithoutTheSecondCorrector) {
    ASSERT_EQ(outcome("DOUBLE_CORRECTION = .false."), "Converged");
    const Solution one = stored();
    EXPECT_GT(steepest_slope(one), 0.8) << "the mesh has the slope of the hill";
    EXPECT_NEAR(mass_imbalance(one), 0.0, 1e-4);
    ASSERT_EQ(outcome("DOUBLE_CORRECTION = .true."), "Converged");
    const Solution two = stored();
    EXPECT_NEAR(mass_imbalance(two), 0.0, 1e-4);
    // Both have solved the same equations: the correction is gone when they are solved.
    for (const double height : {10.0, 50.0, 200.0}) {
        const Column summit = column_at(one, 0, 0);
        EXPECT_NEAR(value_above(two, two.flow.u, summit, height),
                    value_above(one, one.flow.u, summit, height), 0.05)
            << height << " m";
    }
}

// What the first correction leaves out grows with the share of it that the pressure takes.
TEST_F(SteepHill, TheSecondCorrectorAllowsMuchLessUnderRelaxationOfThePressure) {
    EXPECT_EQ(outcome("URFP = 0.6"), "Diverged");
    EXPECT_EQ(outcome("URFP = 0.6, DOUBLE_CORRECTION = .true."), "Converged");
    EXPECT_EQ(outcome("URFP = 0.8, DOUBLE_CORRECTION = .true."), "Converged");
}

// The additional zone upwind makes the mesh of a direction reach farther against the wind than to
// the sides: a hill in the north spoils the north wind only.
TEST_F(SteepHill, ADirectionBehindADivergedOneIsSolvedAsIfItWereAlone) {
    write_ground(cosine_hill(300, 250, 0, 1900));
    const CaseItems unstable{{"NML_CASEFILE", "MAX_DXY = 75"},
                             {"NML_NUMERICAL_SOLVER", "URFP = 0.8"}};
    CaseItems both = hill_case(unstable);
    both.emplace_back("NML_CASEFILE", "N_WIND_DIRECTION = 2");
    both.emplace_back("NML_CASEFILE", "WIND_DIRECTION_ANGLE = 0, 270");
    write_case(both);
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(log(), testing::ContainsRegex("WD   0.0: Diverged. +[0-9]+ it. Skip this"));
    EXPECT_THAT(log(), testing::ContainsRegex("WD 270.0: Converged."));
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 3");
    EXPECT_EQ(slot("view-wind_direction.dat", 3), "270.0 1");
    const auto with_both = files_below(directory.path());

    converged(hill_case(unstable));
    for (const auto& [name, bytes] : files_below(directory.path())) {
        if (name.starts_with("restart-270_0-")) {
            EXPECT_TRUE(with_both.at(name) == bytes) << name;
        }
    }
}

}  // namespace
}  // namespace torvex::test
