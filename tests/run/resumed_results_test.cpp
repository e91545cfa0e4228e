// The results that a direction leaves and what a resume makes of them: the residual in the result
// file, a corrected result beside the plain one, and a direction that had diverged.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <string>

#include "base/record_file.hpp"
#include "run/outer_iteration_fixture.hpp"
#include "solver/equations.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;

constexpr const char* directions = "view-wind_direction.dat";

class ResumedResults : public OuterIterationTest {
 protected:
    // Record 15 of a result file.
    float residual_in(const std::string& name) const {
        RecordReader reader;
        float residual = -1.0F;
        bool good = reader.open(directory.file("restart-000_0-" + name));
        for (int record = 1; record <= 14; ++record) {
            good = good && reader.skip();
        }
        EXPECT_TRUE(good && reader.read(residual)) << name;
        return residual;
    }
    // Routines whose normalised resid_m is half of the iteration.
    static Equations with_half_of_the_iteration(FakeEquations& fake) {
        fake.level = far_off;
        Equations equations = fake.equations();
        equations.CALCP = [](const SolverContext& c, int iter, int) {
            c.flow.flxU.fill(1.0F);
            c.flow.resid_m = 0.5F * static_cast<float>(iter) * c.flow.flow_in;
            return SolveRecords{};
        };
        return equations;
    }
    static CaseItems resumed(int iterations) {
        return {{"NML_RUN", "RESTART_FLAG = 1"},
                {"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(iterations)}};
    }
};

TEST_F(ResumedResults, FinalWritesHoldNoResidual) {
    FakeEquations fake;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 6"}, {"NML_RUN", "DEBUG_MODE = 4"}},
          with_half_of_the_iteration(fake));
    for (const char* name : {"vpkeout_00000.tuf", "vpkeout_00004.tuf", "vpkeout_00006.tuf"}) {
        EXPECT_EQ(residual_in(name), 0.0F) << name;
    }
}

TEST_F(ResumedResults, IntermediateWritesHoldTheMassResidualOfTheirIteration) {
    directory.write("#OutputIntermediateCount", "2");
    FakeEquations fake;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 6"}}, with_half_of_the_iteration(fake));
    EXPECT_FLOAT_EQ(residual_in("vpkeout_00002.tuf"), 1.0F);
    EXPECT_FLOAT_EQ(residual_in("vpkeout_00004.tuf"), 2.0F);
    EXPECT_EQ(residual_in("vpkeout_00006.tuf"), 0.0F) << "the final write comes last";
    EXPECT_FLOAT_EQ(info("restart-00004.info").resid_m, 2.0F);
}

TEST_F(ResumedResults, ADivergenceLeavesTheMassResidualOfTheIterationBefore) {
    FakeEquations fake;
    Equations equations = with_half_of_the_iteration(fake);
    equations.CALCVIS = [&](const SolverContext& c) {
        if (fake.iterations == 4) {
            c.flow.resid_w = nan;
        }
    };
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 9"}}, equations);
    EXPECT_FLOAT_EQ(residual_in("vpkeout_00003.tuf"), 1.5F);
}

// The value that a resume has read stays until the end.
TEST_F(ResumedResults, FinalWriteBehindAnIntermediateResultKeepsItsResidual) {
    directory.write("#OutputIntermediateCount", "4");
    FakeEquations fake;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 6"}}, with_half_of_the_iteration(fake));
    std::filesystem::remove(directory.file("#OutputIntermediateCount"));
    std::filesystem::rename(directory.file("restart-000_0-restart-00004.info"),
                            directory.file("restart-000_0-restart.info"));
    solve(resumed(3), with_half_of_the_iteration(fake));
    EXPECT_EQ(info().outer_count, 7);
    EXPECT_FLOAT_EQ(residual_in("vpkeout_00007.tuf"), 2.0F);
}

TEST_F(ResumedResults, ACorrectedResultIsTakenBeforeThePlainOne) {
    FakeEquations fake;
    fake.level = far_off;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}}, fake.equations());
    // u(1,1,1) stands behind a record of one integer, one of three, and its own length.
    std::string bytes = directory.read("restart-000_0-vpkeout_00003.tuf");
    const auto corrected = std::bit_cast<std::array<char, 4>>(77.0F);
    bytes.replace((4 + 4 + 4) + (4 + 12 + 4) + 4, 4, corrected.data(), 4);
    directory.write("restart-000_0-vpkeout_00003_r.tuf", bytes);

    float u = 0.0F;
    Equations equations = fake.equations();
    const auto calcu = equations.CALCU;
    equations.CALCU = [&](const SolverContext& c, int iter, int interval) {
        u = c.flow.u(1, 1, 1);
        return calcu(c, iter, interval);
    };
    solve(resumed(1), equations);
    EXPECT_EQ(fake.iterations, 4);
    EXPECT_EQ(u, 77.0F);
}

class DivergedDirection : public ResumedResults {
 protected:
    // Diverges in iteration 4, in which u becomes `u`. By then the mass residual is within its
    // criterion and the others are far off.
    void diverge_with(float u) const {
        FakeEquations fake;
        fake.level = far_off;
        Equations equations = fake.equations();
        const auto calcu = equations.CALCU;
        equations.CALCU = [calcu, u](const SolverContext& c, int iter, int interval) {
            calcu(c, iter, interval);
            if (iter == 4) {
                c.flow.u.fill(u);
                c.flow.resid_u = nan;
            }
            return SolveRecords{};
        };
        equations.CALCP = [](const SolverContext& c, int, int) {
            c.flow.flxU.fill(1.0F);
            c.flow.resid_m = 0.0F;
            return SolveRecords{};
        };
        solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 9"}, {"NML_MONITOR", "MONITOR_STEP = 2"}},
              equations);
        EXPECT_THAT(log(), HasSubstr(": Diverged.     3 it. Skip this direction."));
        EXPECT_EQ(slot(directions, 2), "  0.0 3");
    }
};

TEST_F(DivergedDirection, GoesOnWithTheFieldsOfTheFailedIterationUnderTheCountBefore) {
    diverge_with(42.0F);
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    const auto calcu = equations.CALCU;
    std::map<int, float> u;
    equations.CALCU = [&](const SolverContext& c, int iter, int interval) {
        u[iter] = c.flow.u(3, 3, 3);
        return calcu(c, iter, interval);
    };
    const RunHere ran = solve(resumed(2), equations);
    EXPECT_THAT(ran.out, HasSubstr("Resume torvex default calculations..\n"));
    EXPECT_EQ(u, (std::map<int, float>{{4, 42.0F}, {5, 42.0F}}));
    EXPECT_THAT(log(), HasSubstr(": Finished without converging.     5 it."));
    EXPECT_EQ(slot(directions, 2), "  0.0 2");
    EXPECT_EQ(info().outer_count, 5);
}

TEST_F(DivergedDirection, DivergesAgainAtOnceWhereItsFieldsHoldNoNumbers) {
    diverge_with(nan);
    for (int resume = 1; resume <= 2; ++resume) {
        directory.write("torvex.log", "");
        const RunHere ran = solve(resumed(5), flow_equations());
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_THAT(ran.out, HasSubstr("diverged !!\n"));
        EXPECT_THAT(log(), HasSubstr(": Diverged.     3 it. Skip this direction."));
        EXPECT_EQ(slot(directions, 2), "  0.0 3");
        EXPECT_EQ(info().outer_count, 3);
    }
}

}  // namespace
}  // namespace torvex::test
