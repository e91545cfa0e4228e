// Runs that are killed at any moment, as by a power failure or an impatient user, and resumed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>

#include "results/restart_info.hpp"
#include "run/run_fixture.hpp"
#include "run/saved_files.hpp"

namespace torvex::test {
namespace {

using ::testing::AnyOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using ::testing::StrEq;
using Clock = std::chrono::steady_clock;

// Two directions of six iterations, with results written in each of them.
class KilledRuns : public RunTest, public ::testing::WithParamInterface<unsigned> {
 protected:
    KilledRuns() { directory.write("#OutputIntermediateCount", "1\n"); }

    void write_case_of(int restart_flag, int MAXIT) const {
        write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 2"},
                    {"NML_RUN", "DEBUG_MODE = 2, RESTART_FLAG = " + std::to_string(restart_flag)},
                    {"NML_MONITOR", "MONITOR_STEP = 6"},
                    {"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(MAXIT)},
                    {"NML_NUMERICAL_SOLVER", "OUT_CC_LIMIT = 0, CC_OUT_M = 0.5"},
                    {"NML_NUMERICAL_SOLVER", "CC_OUT_U = 0.5, CC_OUT_V = 0.5, CC_OUT_W = 0.5"}});
    }
    // Another ground than before, so that the old files do not belong to the new mesh.
    void start_afresh(int round) {
        ground = static_cast<float>(10 + round);
        directory.write("h.map", level_map(std::to_string(10 + round)));
        std::filesystem::remove("torvex.log");
        write_case_of(0, 6);
    }
    // Kills a run after a time, or, where asked for, at the next write behind it.
    void kill_after(Clock::duration time, bool at_a_write) const {
        StartedProgram program(torvex_program(), {}, directory.path());
        const auto end = Clock::now() + time;
        while (program.running() && Clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        while (at_a_write && program.running() && !has_temporary_file(directory.path())) {
        }
        program.kill();
    }
    int count_of(const std::string& tag) const {
        const auto info = read_restart_info(directory.file("restart-" + tag + "-restart.info"));
        return info ? info->outer_count : -1;
    }
    std::map<std::string, std::string> results_of(const std::string& tag) const {
        std::map<std::string, std::string> files = files_below(directory.path());
        std::erase_if(files, [&tag](const auto& file) {
            return !file.first.starts_with("restart-" + tag) || file.first.ends_with("xyzc.tuf") ||
                   file.first.ends_with(".tmp");
        });
        return files;
    }
    void resume() const {
        const bool first_is_finished =
            directory.has("torvex.log") && log().find(" WD 180.0: Entered") != std::string::npos;
        const auto first = results_of("000_0");
        const int count = count_of("180_0");
        write_case_of(1, 2);
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        // Nothing but directions of the run before that begin anew, and the closing line.
        const bool anew = ran.err.find("Warning: WD 180.0: BASIC_H_FILE ") != std::string::npos;
        for (const std::string& line : lines_of(ran.err)) {
            EXPECT_THAT(line, AnyOf(EndsWith(": BASIC_H_FILE changed since this direction was "
                                             "begun; it begins anew."),
                                    StartsWith("torvex: ")));
        }
        EXPECT_TRUE(lies_at("restart-000_0-xyz.tuf", ground));
        EXPECT_TRUE(lies_at("restart-180_0-xyz.tuf", ground));
        EXPECT_EQ(complaint_about_saved_files(directory.path()), "");
        EXPECT_EQ(slot("view-wind_direction.dat", 1), "       3");
        EXPECT_THAT(slot("view-wind_direction.dat", 3), AnyOf(StrEq("180.0 1"), StrEq("180.0 2")));
        EXPECT_GE(count_of("180_0"), anew ? 1 : count);
        if (first_is_finished) {
            EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 1");
            EXPECT_EQ(results_of("000_0"), first) << "a finished direction stays as it is";
        }
    }

    float ground = 0;  // elevation of the map everywhere
};

TEST_P(KilledRuns, GoOnFromAWholeState) {
    start_afresh(0);
    const auto start = Clock::now();
    ASSERT_EQ(run().status, 0);
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);

    std::mt19937 random(GetParam());
    int at_a_write = 0;
    constexpr int rounds = 10;
    for (int round = 1; round <= rounds; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        start_afresh(round);
        kill_after(whole * static_cast<long>(random() % 1000) / 1000, round % 2 == 0);
        at_a_write += has_temporary_file(directory.path()) ? 1 : 0;
        EXPECT_EQ(complaint_about_saved_files(directory.path()), "");
        resume();
        if (HasFailure()) {
            return;
        }
        for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
            if (entry.path().extension() == ".tmp") {
                std::filesystem::remove(entry.path());
            }
        }
    }
    RecordProperty("killed_while_writing", at_a_write);
}

INSTANTIATE_TEST_SUITE_P(Seeds, KilledRuns, ::testing::Values(1U, 2U, 3U));

using StateOfAnEarlierRun = RunTest;

TEST_F(StateOfAnEarlierRun, IsForgottenBeforeANewMeshIsWritten) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}});
    ASSERT_EQ(run().status, 0);
    ASSERT_TRUE(directory.has("restart-000_0-restart.info"));
    // The run ends while it writes the mesh: the old state must not be left beside a new mesh.
    std::filesystem::create_directory("restart-000_0-xyzc.tuf.tmp");
    EXPECT_EQ(run().status, 1);
    EXPECT_FALSE(directory.has("restart-000_0-restart.info"));
    std::filesystem::remove("restart-000_0-xyzc.tuf.tmp");
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}, {"NML_RUN", "RESTART_FLAG = 1"}});
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("Start torvex default calculations...\n"));
}

TEST_F(StateOfAnEarlierRun, IsLeftAloneByAMapThatCannotBeRead) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}});
    ASSERT_EQ(run().status, 0);
    directory.write("z0.map", "no map\n");
    EXPECT_EQ(run().status, 133);
    EXPECT_TRUE(directory.has("restart-000_0-restart.info"));
}

}  // namespace
}  // namespace torvex::test
