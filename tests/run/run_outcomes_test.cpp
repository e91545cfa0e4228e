// What the sequence makes of a direction that converged, diverged or was stopped by the user, with
// the solve given by the test.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "run/run_fixture.hpp"
#include "support/failures.hpp"
#include "support/file_descriptors.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* table = "view-wind_direction.dat";

const std::string below_outcome(30, ' ');

class RunOutcomes : public RunTest {
 protected:
    // Runs four directions; `solve` gets the number of each.
    RunHere run_four(const std::function<void(int, Direction&)>& solve) {
        write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 4"}});
        return run_here({"/f", directory.file("torvex.tin")},
                        [&](torvex::Run&, Direction& direction) {
                            entered.push_back(direction.iwd);
                            solve(direction.iwd, direction);
                        });
    }
    std::vector<std::string> statuses() const {
        std::vector<std::string> rows;
        for (int n = 2; n <= std::stoi(slot(table, 1)); ++n) {
            rows.push_back(slot(table, n));
        }
        return rows;
    }

    std::vector<int> entered;
};

TEST_F(RunOutcomes, EachKindHasItsStatusAndLines) {
    const RunHere ran = run_four([](int iwd, Direction& direction) {
        const auto scale = static_cast<float>(iwd);
        direction.tested = {0.001F * scale, 0.002F * scale, 0.003F * scale,
                            0.004F * scale, 0.005F * scale, 0.006F * scale};
        direction.outer_count = 120;
        direction.converged = iwd == 1;
        direction.diverged = iwd == 2;
    });
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(statuses(), ::testing::ElementsAre("  0.0 1", " 90.0 3", "180.0 2", "270.0 2"));
    EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: Converged.   120 it.\n" + below_outcome +
                                 "resid-m: 0.1000E-02 resid-u: 0.2000E-02\n" + below_outcome +
                                 "resid-v: 0.3000E-02 resid-w: 0.4000E-02\n" + below_outcome +
                                 "resid-k: 0.5000E-02 resid-e: 0.6000E-02\n"));
    EXPECT_THAT(log(), HasSubstr("<date> WD  90.0: Diverged.   120 it. Skip this direction.\n" +
                                 below_outcome + "resid-m: 0.2000E-02 resid-u: 0.4000E-02\n"));
    EXPECT_THAT(log(), HasSubstr("<date> WD 180.0: Finished without converging.   120 it.\n"));
    EXPECT_THAT(log(), HasSubstr("<date> Computation Finished. \n"));
    EXPECT_THAT(ran.out, HasSubstr("   - Calculation converged.\n"));
    EXPECT_THAT(ran.out, HasSubstr("   - Calculation diverged.\n"));
    EXPECT_THAT(ran.out, HasSubstr("   - Calculation ended without converging.\n"));
}

TEST_F(RunOutcomes, EachDirectionBeginsAfresh) {
    run_four([](int iwd, Direction& direction) {
        EXPECT_FALSE(direction.converged) << iwd;
        EXPECT_FALSE(direction.diverged) << iwd;
        EXPECT_FALSE(direction.stop_requested) << iwd;
        EXPECT_EQ(direction.outer_count, 0) << iwd;
        EXPECT_EQ(direction.max_resid_m, 0.0F);
        for (const float residual : {direction.tested.m, direction.tested.u, direction.tested.v,
                                     direction.tested.w, direction.tested.k, direction.tested.e}) {
            EXPECT_EQ(residual, 1.0e25F) << "a direction never tested cannot pass as converged";
        }
        direction.diverged = true;
        direction.outer_count = 77;
        direction.max_resid_m = 5.0F;
        direction.tested = {};
    });
    EXPECT_THAT(entered, ::testing::ElementsAre(1, 2, 3, 4));
}

TEST_F(RunOutcomes, StemsFollowPrefixAndTag) {
    std::vector<std::string> stems;
    run_four([&](int, Direction& direction) {
        stems.push_back(direction.restart_stem);
        stems.push_back(direction.sites_stem);
        EXPECT_EQ(direction.angle, 90.0F * static_cast<float>(direction.iwd - 1));
    });
    EXPECT_THAT(stems, ::testing::ElementsAre("restart-000_0-", "sites-000_0-", "restart-090_0-",
                                              "sites-090_0-", "restart-180_0-", "sites-180_0-",
                                              "restart-270_0-", "sites-270_0-"));
}

TEST_F(RunOutcomes, StatusIsZeroWhileADirectionIsAtWork) {
    run_four([&](int iwd, Direction&) {
        EXPECT_EQ(std::stoi(slot(table, 1)), iwd + 1);
        EXPECT_TRUE(slot(table, iwd + 1).ends_with(" 0"));
        EXPECT_TRUE(directory.has("view-monitor.dat"));
        const ViewTable::Existing keep = ViewTable::Existing::keep;
        ViewTable other;
        EXPECT_TRUE(stop_of([&] { other.open("view-monitor.dat", keep); }))
            << "other writers are denied";
    });
}

TEST_F(RunOutcomes, DivergedDirectionHasNoFinalResult) {
    run_four([](int iwd, Direction& direction) { direction.diverged = iwd == 2; });
    EXPECT_FALSE(directory.has("restart-090_0-restart.info"));
    EXPECT_FALSE(directory.has("restart-090_0-vpkeout_00000.tuf"));
    EXPECT_FALSE(directory.has("sites-090_0-_INFLOW_PROFILE.tpd"));
    EXPECT_TRUE(directory.has("sites-180_0-_INFLOW_PROFILE.tpd"));
    EXPECT_THAT(entered, ::testing::ElementsAre(1, 2, 3, 4));
}

TEST_F(RunOutcomes, UserStopEndsTheRunWithTwoBehindItsDirection) {
    const RunHere ran = run_four([](int iwd, Direction& direction) {
        direction.stop_requested = iwd == 2;
        direction.outer_count = 50;
    });
    EXPECT_EQ(ran.status, 2);
    EXPECT_EQ(ran.err,
              "torvex: 0 of 4 directions converged; not iterated, since MAXIT is not above 0: 0.0, "
              "90.0; not begun: 180.0, 270.0; torvex.log has more\n");
    EXPECT_THAT(entered, ::testing::ElementsAre(1, 2));
    EXPECT_THAT(statuses(), ::testing::ElementsAre("  0.0 2", " 90.0 2"));
    EXPECT_THAT(log(), HasSubstr("<date> WD  90.0: Finished without converging.    50 it.\n"));
    EXPECT_THAT(log(), HasSubstr("<date> Computation Finished. \n"));
    EXPECT_FALSE(directory.has("view-monitor-180_0.dat"));
}

TEST_F(RunOutcomes, StopOfTheSolveEndsTheRunWithItsCode) {
    const RunHere ran = run_four([](int iwd, Direction&) {
        if (iwd == 2) {
            stop(161, "the monitor point is nowhere", "case", "move it");
        }
    });
    EXPECT_EQ(ran.status, 161);
    EXPECT_EQ(ran.err,
              "stop 161: the monitor point is nowhere\n  in case\n  move it\n"
              "torvex: 0 of 4 directions converged; not iterated, since MAXIT is not above 0: 0.0; "
              "broken off: 90.0; not begun: 180.0, 270.0; torvex.log has more\n");
    EXPECT_THAT(log(), HasSubstr("<date> stop 161: the monitor point is nowhere\n"
                                 "                      in case\n"
                                 "                      move it\n"
                                 "                    0 of 4 directions converged"));
    EXPECT_THAT(statuses(), ::testing::ElementsAre("  0.0 2", " 90.0 0"));
    EXPECT_THAT(log(), Not(HasSubstr("Computation Finished")));
}

TEST_F(RunOutcomes, OtherFailuresEndTheRunWithOne) {
    RunHere ran = run_four([](int, Direction&) { throw std::bad_alloc(); });
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, StartsWith("out of memory\ntorvex: 0 of 4 directions converged; "
                                    "broken off: 0.0; not begun: 90.0, 180.0, 270.0; "));
    EXPECT_THAT(log(), HasSubstr("<date> out of memory\n"));
    ran = run_four([](int, Direction&) { throw std::runtime_error("no such luck"); });
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, StartsWith("no such luck\n"));
    EXPECT_THAT(log(), HasSubstr("<date> no such luck\n"));
}

TEST_F(RunOutcomes, MonitorFileThatCannotBeClosedEndsTheRun) {
    const RunHere ran = run_four(
        [this](int, Direction&) { close_descriptor_of(directory.file("view-monitor-000_0.dat")); });
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.out, HasSubstr("[main] ERROR: Can't delete logs.\n"));
    EXPECT_THAT(ran.err, HasSubstr("[main] ERROR: Can't delete logs.\n"));
    EXPECT_THAT(entered, ::testing::ElementsAre(1));
}

TEST_F(RunOutcomes, SettingsReachTheSolve) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}, {"NML_RUN", "DEBUG_MODE = 7"}});
    run_here({}, [&](torvex::Run& state, Direction&) {
        EXPECT_EQ(state.settings.DEBUG_MODE, 7);
        EXPECT_EQ(state.settings.BASIC_Z0_FILE, directory.file("z0.map")) << "a full path";
        EXPECT_EQ(state.settings.DETAILED_Z0_FILE, "") << "a blank name stays blank";
        EXPECT_EQ(state.settings.INFLOW_PROFILE_FILE, "");
        entered.push_back(1);
    });
    EXPECT_EQ(entered.size(), 1U);
}

TEST_F(RunOutcomes, ChildTakesItsCentreFromTheCase) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 0"}},
               "&nest_points\nnest_mode = 1\nnest_site%label = a\nnest_site%lon = 1 2 3\n"
               "nest_site%lat = 4 5 6\nnest_site%n_x_div = 1\nnest_site%n_y_div = 1\n"
               "nest_site%c2xmax = 100\nnest_site%c2ymax = 100\n/\n");
    EXPECT_EQ(run_here({}, [](torvex::Run&, Direction&) {}).status, 0);
    EXPECT_TRUE(directory.has("nest-view-wind_direction.dat"));
}

}  // namespace
}  // namespace torvex::test
