// Accelerated runs that stop and go on: as if there had been no stop.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const std::string memory_file = "restart-270_0-iteration.info";
const std::string nothing_known = "Nothing is known of how the iterations went before";

class ResumedAcceleration : public WholeCase {
 protected:
    ResumedAcceleration() { write_ground(cosine_hill(100, 500)); }

    void run_on(int iterations, const CaseItems& more) const {
        CaseItems items{{"NML_CASEFILE", "WE_LENGTH = 1000, NS_LENGTH = 800, MIN_DXY = 100"},
                        {"NML_CASEFILE", "MIN_DXY_RAD = 400, MIN_DZ = 8, MESH_VRATIO = 1.4"},
                        {"NML_SITE", "N_SITE = 1, SITE(1)%LABEL = 'lee'"},
                        {"NML_SITE", "SITE(1)%LON = 139, 45, 12, SITE(1)%LAT = 35, 30, 0"},
                        {"NML_NUMERICAL_SOLVER", "ACCEL = 1"},
                        {"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(iterations)}};
        items.insert(items.end(), more.begin(), more.end());
        write_case(hill_case(items));
        const ProgramRun ran = run();
        ASSERT_EQ(ran.status, 0) << ran.err;
    }
    std::string result(int count) const {
        const std::string n = std::to_string(count);
        const std::string name =
            "restart-270_0-vpkeout_" + std::string(5 - n.size(), '0') + n + ".tuf";
        return directory.has(name) ? directory.read(name) : "no " + name;
    }
    // Iterations straight through, and in two parts.
    void expect_no_trace_of_a_stop(int first, int second, const CaseItems& more) const {
        run_on(first + second, more);
        const std::string straight = result(first + second);
        const std::string remembered = directory.read(memory_file);
        run_on(first, more);
        CaseItems again = more;
        again.push_back({"NML_RUN", "RESTART_FLAG = 1"});
        run_on(second, again);
        EXPECT_TRUE(result(first + second) == straight) << first << " + " << second;
        EXPECT_EQ(directory.read(memory_file), remembered);
        EXPECT_THAT(log(), Not(HasSubstr(nothing_known)));
        EXPECT_THAT(log(), Not(HasSubstr("begins anew")));
    }
};

TEST_F(ResumedAcceleration, LeavesNoTraceOfTheStop) {
    for (const std::string levels : {"1", "2"}) {
        SCOPED_TRACE(levels);
        const CaseItems more{{"NML_NUMERICAL_SOLVER", "ACCEL_LEVELS = " + levels}};
        expect_no_trace_of_a_stop(8, 8, more);
        expect_no_trace_of_a_stop(7, 9, more);
    }
}

TEST_F(ResumedAcceleration, LeavesNoTraceOfTheStopWithTheOtherModels) {
    for (const std::string model : {"2", "4"}) {
        SCOPED_TRACE(model);
        expect_no_trace_of_a_stop(8, 8, {{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + model}});
    }
}

// The speeds at the sites are remembered too.
TEST_F(ResumedAcceleration, LeavesNoTraceOfTheStopInTheHistoryOfTheSites) {
    expect_no_trace_of_a_stop(8, 8,
                              {{"NML_NUMERICAL_SOLVER", "STOP_SITES = 0.001"},
                               {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 1"}});
}

TEST_F(ResumedAcceleration, GoesOnWithoutAMemory) {
    run_on(8, {});
    std::filesystem::remove(memory_file);
    run_on(20, {{"NML_RUN", "RESTART_FLAG = 1"}});
    EXPECT_THAT(log(), HasSubstr(nothing_known));
    EXPECT_TRUE(directory.has(memory_file));
    EXPECT_NEAR(mass_imbalance(stored()), 0.0, 1e-2);
}

TEST_F(ResumedAcceleration, GoesOnWithADamagedMemory) {
    run_on(8, {});
    for (const char* damage : {"", "8\n", "8\n 0 0 8 NaN 8\n", "\xff\xfe\n", "8\n 1e99"}) {
        directory.write(memory_file, damage);
        run_on(1, {{"NML_RUN", "RESTART_FLAG = 1"}});
        EXPECT_THAT(log(), HasSubstr(nothing_known));
        run_on(8, {});
    }
}

TEST_F(ResumedAcceleration, TakesAResultOfThePlainIteration) {
    run_on(20, {{"NML_NUMERICAL_SOLVER", "ACCEL = 0"}});
    EXPECT_FALSE(directory.has(memory_file));
    run_on(20, {{"NML_RUN", "RESTART_FLAG = 1"}});
    EXPECT_THAT(log(), HasSubstr(nothing_known));
    EXPECT_THAT(log(), HasSubstr("Accelerated iteration on 2 meshes."));
    EXPECT_NEAR(mass_imbalance(stored()), 0.0, 1e-2);
}

TEST_F(ResumedAcceleration, OfThePlainIterationForgetsWhatTheAcceleratedOneRemembered) {
    run_on(8, {});
    ASSERT_TRUE(directory.has(memory_file));
    run_on(2, {{"NML_RUN", "RESTART_FLAG = 1"}, {"NML_NUMERICAL_SOLVER", "ACCEL = 0"}});
    EXPECT_FALSE(directory.has(memory_file));
}

}  // namespace
}  // namespace torvex::test
