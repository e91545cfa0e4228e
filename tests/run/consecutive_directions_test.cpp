// What one direction leaves to the next: the way in which convergence logs are opened, and the
// interval of the intermediate results.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "run/outer_iteration_fixture.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string rule = "   " + std::string(69, '-') + "\n";

class ConsecutiveDirections : public OuterIterationTest {
 protected:
    RunHere solve_two(const CaseItems& items, const Equations& equations) const {
        CaseItems all{{"NML_CASEFILE", "N_WIND_DIRECTION = 2, WIND_DIRECTION_ANGLE = 0, 90"},
                      {"NML_NUMERICAL_SOLVER", "MAXIT = 10"}};
        all.insert(all.end(), items.begin(), items.end());
        RunHere ran = solve(all, equations);
        EXPECT_EQ(ran.status, 0) << ran.err;
        return ran;
    }
    RunHere resume_two() const {
        FakeEquations fake;
        fake.level = far_off;
        return solve_two({{"NML_RUN", "RESTART_FLAG = 1"}}, fake.equations());
    }
    std::string log_of(const std::string& tag) const {
        return directory.read("restart-" + tag + "-torvex.conv.log");
    }
    void forget(const std::string& tag) const {
        std::filesystem::remove(directory.file("restart-" + tag + "-restart.info"));
    }
};

class ConvergenceLogs : public ConsecutiveDirections {
 protected:
    ConvergenceLogs() {
        FakeEquations fake;
        fake.level = far_off;
        solve_two({}, fake.equations());
        first_0 = log_of("000_0");
        first_90 = log_of("090_0");
        EXPECT_THAT(first_90, StartsWith(rule));
        EXPECT_THAT(first_90, HasSubstr("\n    10 "));
    }
    std::string first_0, first_90;
};

TEST_F(ConvergenceLogs, AreAppendedToByAllDirectionsBehindAResumedOne) {
    forget("090_0");
    resume_two();
    EXPECT_THAT(log_of("000_0"), StartsWith(first_0));
    EXPECT_THAT(log_of("000_0"), HasSubstr("\n    20 "));
    EXPECT_EQ(log_of("090_0"), first_90 + first_90) << "begun afresh, but behind a resumed one";
}

TEST_F(ConvergenceLogs, AreEmptiedBeforeTheFirstResumedDirection) {
    forget("000_0");
    resume_two();
    EXPECT_EQ(log_of("000_0"), first_0);
    EXPECT_THAT(log_of("090_0"), StartsWith(first_90));
    EXPECT_THAT(log_of("090_0"), HasSubstr("\n    20 "));
}

TEST_F(ConvergenceLogs, AreEmptiedBehindADirectionThatWasDoneAlready) {
    directory.write("restart-000_0-restart.info", "10\n 1e-9 1e-9 1e-9 1e-9\n");
    forget("090_0");
    resume_two();
    EXPECT_EQ(log_of("000_0"), first_0);
    EXPECT_EQ(log_of("090_0"), first_90);
}

// A fresh log begins with a rule; a resumed one goes on with the next block of the table, while the
// console has its rule each time.
TEST_F(ConvergenceLogs, GoOnWithoutARuleOnAResume) {
    const RunHere ran = resume_two();
    std::string dashes = "   ";
    for (int n = 0; n < 35; ++n) {
        dashes += "- ";
    }
    for (const std::string tag : {"000_0", "090_0"}) {
        const std::string& first = tag == "000_0" ? first_0 : first_90;
        EXPECT_THAT(first, StartsWith(rule + dashes));
        ASSERT_THAT(log_of(tag), StartsWith(first));
        EXPECT_THAT(log_of(tag).substr(first.size()), StartsWith(dashes)) << tag;
        EXPECT_EQ(log_of(tag).size(), 2 * first.size() - rule.size()) << tag;
    }
    const std::vector<std::string> console = lines_of(ran.out);
    EXPECT_EQ(std::ranges::count(console, lines_of(rule).front()), 4)
        << "in each direction one before the iterations and one below a block";
}

TEST_F(ConsecutiveDirections, IntervalOfIntermediateResultsHoldsForTheNextOne) {
    directory.write("#OutputIntermediateCount", "4\n");
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    equations.CALCVIS = [&](const SolverContext&) {
        std::filesystem::remove(directory.file("#OutputIntermediateCount"));
    };
    solve_two({}, equations);
    EXPECT_FALSE(directory.has("#OutputIntermediateCount"));
    for (const std::string stem : {"restart-000_0-", "restart-090_0-"}) {
        for (const char* name : {"vpkeout_00004.tuf", "restart-00004.info", "vpkeout_00008.tuf",
                                 "restart-00008.info"}) {
            EXPECT_TRUE(directory.has(stem + name)) << stem << name;
        }
    }
}

}  // namespace
}  // namespace torvex::test
