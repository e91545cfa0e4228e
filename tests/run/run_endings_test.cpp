// How directions and runs end: fields that are no finite numbers, results that cannot be written, a
// canopy without roughness; and where each of them is told.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <optional>

#include "canopy/canopy_file.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "run/outer_iteration_fixture.hpp"
#include "support/failures.hpp"

namespace torvex::test {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
namespace fs = std::filesystem;

constexpr const char* table = "view-wind_direction.dat";
constexpr float inf = std::numeric_limits<float>::infinity();

std::size_t count_of(const std::string& text, const std::string& what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        ++count;
    }
    return count;
}

constexpr float passing = 0.0F;  // meets every criterion
class LoopEndings : public RunTest {
 protected:
    // Equations that leave residuals of `level`, and at the end of each iteration what a test
    // wants.
    Equations equations_of(float level, const std::function<void(FlowState&, int iter)>& then) {
        fake.level = level;
        Equations equations = fake.equations();
        equations.CALCVIS = [this, then](const SolverContext& c) { then(c.flow, fake.iterations); };
        return equations;
    }
    RunHere solve(const CaseItems& items, const Equations& equations) const {
        CaseItems all{{"NML_CASEFILE", "N_WIND_DIRECTION = 2"}};
        all.insert(all.end(), items.begin(), items.end());
        write_case(all);
        return run_here({}, [&equations](torvex::Run& run, Direction& direction) {
            OUTER_ITERATION(run, direction, equations);
        });
    }
    // The first direction counts as diverged behind `count` iterations, the second is good.
    void expect_diverged(int count, const std::string& where) const {
        EXPECT_EQ(slot(table, 2), "  0.0 3");
        EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: " + where + "\n<date> WD   0.0: Diverged. " +
                                     std::string(count < 10 ? "    " : "   ") +
                                     std::to_string(count) + " it. Skip this direction.\n"));
        const auto info = read_restart_info("restart-000_0-restart.info");
        ASSERT_TRUE(info);
        EXPECT_EQ(info->outer_count, count);
        EXPECT_TRUE(directory.has("restart-000_0-" + result_name(count)));
        EXPECT_FALSE(directory.has("sites-000_0-_INFLOW_PROFILE.tpd"));
    }

    FakeEquations fake;
};

TEST_F(LoopEndings, AConvergedDirectionWithAnInfinityHasDiverged) {
    bool first = true;
    const RunHere ran = solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 25"}},
                              equations_of(passing, [&first](FlowState& flow, int iter) {
                                  if (first && iter == 10) {
                                      flow.w(3, 2, 4) = inf;
                                      first = false;
                                  }
                              }));
    EXPECT_EQ(ran.status, 0) << ran.err;
    expect_diverged(10, "w is no finite number in cell (3, 2, 4).");
    EXPECT_THAT(ran.out, HasSubstr("diverged !!\n"));
    EXPECT_EQ(slot(table, 3), "180.0 1");
    EXPECT_EQ(ran.err, "torvex: 1 of 2 directions converged; diverged: 0.0; torvex.log has more\n");
    EXPECT_THAT(log(), EndsWith("<date> 1 of 2 directions converged; diverged: 0.0; torvex.log has "
                                "more\n<date> Computation Finished. \n"));
}

TEST_F(LoopEndings, ADirectionThatRanOutWithANanHasDiverged) {
    bool first = true;
    const RunHere ran = solve(
        {{"NML_NUMERICAL_SOLVER", "MAXIT = 7"}, {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 4"}},
        equations_of(far_off, [&first](FlowState& flow, int iter) {
            if (first && iter == 2) {
                flow.viskl(1, 1, 1) = nan;
                first = false;
            }
        }));
    EXPECT_EQ(ran.status, 0) << ran.err;
    expect_diverged(7, "viskl is no finite number in cell (1, 1, 1).");
    EXPECT_EQ(slot(table, 3), "180.0 2");
}

TEST_F(LoopEndings, AStoppedDirectionWithANanHasDivergedAndTheRunStops) {
    const RunHere ran = solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 7"}},
                              equations_of(far_off, [this](FlowState& flow, int iter) {
                                  if (iter == 3) {
                                      flow.p(2, 2, 2) = nan;
                                      directory.write("#stop_message", "");
                                  }
                              }));
    EXPECT_EQ(ran.status, 2) << ran.err;
    expect_diverged(3, "p is no finite number in cell (2, 2, 2).");
    EXPECT_EQ(slot(table, 1), "       2") << "no further direction";
    EXPECT_EQ(ran.err,
              "torvex: 0 of 2 directions converged; diverged: 0.0; not begun: 180.0; "
              "torvex.log has more\n");
}

TEST_F(LoopEndings, WithoutIterationsNothingIsJudged) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}});
    const Equations equations = equations_of(far_off, [](FlowState&, int) {});
    const RunHere ran = run_here({}, [&](torvex::Run& run, Direction& direction) {
        direction.flow.u(2, 2, 2) = nan;
        OUTER_ITERATION(run, direction, equations);
    });
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(slot(table, 2), "  0.0 2");
    EXPECT_THAT(log(), HasSubstr(": Finished without converging.     0 it.\n"));
    EXPECT_TRUE(directory.has("restart-000_0-vpkeout_00000.tuf"));
    EXPECT_EQ(ran.err,
              "torvex: 0 of 1 direction converged; not iterated, since MAXIT is not above "
              "0: 0.0; torvex.log has more\n");
}

TEST_F(LoopEndings, TheIntervalOfResultsIsToldForEachDirection) {
    directory.write("#OutputIntermediateCount", "3");
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 4"}}, equations_of(far_off, [](FlowState&, int) {}));
    EXPECT_EQ(count_of(log(), "<date> Intermediate results every 3 iterations.\n"), 2U);
    EXPECT_TRUE(directory.has("restart-000_0-vpkeout_00003.tuf"));
    EXPECT_TRUE(directory.has("restart-180_0-vpkeout_00003.tuf"));
}

// --- results that cannot be written ---

using RunEndings = RunTest;
const CaseItems two_directions{{"NML_CASEFILE", "N_WIND_DIRECTION = 2"}};

TEST_F(RunEndings, ADirectionWhoseResultsCannotBeWrittenIsNotEnded) {
    for (const std::string name :
         {"restart-180_0-vpkeout_00000.tuf", "sites-180_0-_INFLOW_PROFILE.tpd"}) {
        write_case(two_directions);
        fs::remove("torvex.log");
        fs::remove(name);
        fs::create_directory(name);
        directory.write(name + "/full", "");
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 1) << name;
        EXPECT_EQ(slot(table, 2), "  0.0 2");
        EXPECT_EQ(slot(table, 3), "180.0 0") << name;
        EXPECT_THAT(ran.err, HasSubstr("\n  in " + name)) << ran.err;
        EXPECT_THAT(ran.err, EndsWith("torvex: 0 of 2 directions converged; not iterated, since "
                                      "MAXIT is not above 0: 0.0; broken off: 180.0; torvex.log "
                                      "has more\n"));
        EXPECT_THAT(log(), HasSubstr("\n                      in " + name)) << log();
        EXPECT_THAT(log(), Not(HasSubstr("Computation Finished")));
        fs::remove_all(name);
    }
}

TEST_F(RunEndings, ADirectionWhoseOutcomeFindsNoRoomInTheLogIsNotEnded) {
    write_case(two_directions);
    std::optional<FileSizeLimit> limit;
    // Behind each line of the outcome, and in the middle of the first of them.
    for (const std::size_t room : {0U, 20U, 75U, 130U}) {
        fs::remove("torvex.log");
        RunHere ran = run_here({}, [&](torvex::Run&, Direction& direction) {
            direction.converged = true;
            direction.tested = {};
            if (direction.iwd == 2) {
                limit.emplace(fs::file_size("torvex.log") + room);
            }
        });
        limit.reset();
        EXPECT_EQ(ran.status, 1) << room;
        EXPECT_EQ(slot(table, 2), "  0.0 1");
        EXPECT_EQ(slot(table, 3), "180.0 0") << room;
        EXPECT_THAT(ran.err, StartsWith("the log cannot be written: File too large\n")) << room;
        EXPECT_THAT(ran.err, HasSubstr("torvex: 1 of 2 directions converged; broken off: 180.0"));
    }
}

// --- where reasons stand ---

TEST_F(RunEndings, TheReasonOfEachStopStandsInTheLog) {
    struct Stopped {
        int status;
        CaseItems items;
    };
    const std::vector<Stopped> stops{
        {1, {{"NML_ER", "BOGUS = 1"}}},
        {1, {{"NML_MONITOR", "MONITOR_STEP = 0"}}},
        {1, {{"NML_CASEFILE", "WE_LENGTH = 1E30"}}},
        {111, {{"NML_CASEFILE", "BASIC_H_FILE = 'absent.map'"}}},
        {151, {{"NML_CASEFILE", "CENT_LON = 12, 0, 0"}}},
        {156, {{"NML_CASEFILE", "MIN_DXY = 60"}}},
        {162, {{"NML_BOUNDARY_TREATMENT", "CONSTANT_DZ_HEIGHT = 20"}}},
        {161,
         {{"NML_MONITOR", "MONITOR_POSITION = 1, MONITOR_HEIGHT = 30"},
          {"NML_MONITOR", "MONITOR_LON = 139, 55, 0, MONITOR_LAT = 35, 30, 0"}}},
    };
    for (const Stopped& stopped : stops) {
        fs::remove("torvex.log");
        write_case(stopped.items);
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, stopped.status) << ran.err;
        std::vector<std::string> told = lines_of(ran.err);
        std::erase_if(told, [](const std::string& line) { return line.starts_with("Warning: "); });
        ASSERT_GE(told.size(), 2U);
        EXPECT_THAT(log(), HasSubstr("<date> " + told[0] + "\n")) << stopped.items[0].second;
        for (std::size_t n = 1; n + 1 < told.size(); ++n) {
            EXPECT_THAT(log(), HasSubstr(std::string(20, ' ') + told[n] + "\n"));
        }
        EXPECT_THAT(told.back(), AllOf(StartsWith("torvex: "), EndsWith("; torvex.log has more")));
        EXPECT_THAT(log(), EndsWith(std::string(20, ' ') + told.back().substr(8) + "\n"));
    }
}

TEST_F(RunEndings, ARunThatNeverBeganLeavesNoLog) {
    EXPECT_EQ(run({"/f", "absent.tin"}).status, 1);
    EXPECT_EQ(run({"-h"}).status, 102);
    EXPECT_FALSE(directory.has("torvex.log"));
}

TEST_F(RunEndings, EachRunEndsWithOneLine) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 0"}});
    ProgramRun ran = run();
    EXPECT_EQ(ran.err, "torvex: no direction was begun; torvex.log has more\n");
    EXPECT_THAT(log(), EndsWith("<date> no direction was begun; torvex.log has more\n"
                                "<date> Computation Finished. \n"));
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}, {"NML_NUMERICAL_SOLVER", "MAXIT = 1"}});
    ran = run();
    EXPECT_EQ(ran.err,
              "torvex: 0 of 1 direction converged; not converged: 0.0; torvex.log has "
              "more\n");
}

TEST_F(RunEndings, TheSwitchBeforeTheCaseFileMayHaveBlanksAroundIt) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 0"}});
    fs::rename("torvex.tin", "a.tin");
    EXPECT_EQ(run({"/f  ", "a.tin"}).status, 0);
    EXPECT_EQ(run({"  /f ", "a.tin"}).status, 0);
    EXPECT_EQ(run({"/f x", "a.tin"}).status, 102);
}

// --- a canopy file without a roughness ---

TEST_F(RunEndings, ACanopyWithoutRoughnessCostsItsDirectionAlone) {
    write_case(two_directions);
    ASSERT_EQ(run().status, 0);
    const Extents nodes = read_extents("restart-000_0-xyz.tuf", xyz_codes);
    CanopyRecords wood;
    for (Field3* field : {&wood.gp_cf, &wood.gp_density, &wood.gp_length}) {
        field->allocate(nodes.ni + 1, nodes.nj + 1, nodes.nk + 1, 0.1F);
    }
    wood.gp_z0.allocate(nodes.ni + 1, nodes.nj + 1, 0.03F);
    write_canopy_file("restart-180_0-ccd.tuf", wood);
    wood.gp_z0(3, 4) = 0.0F;
    write_canopy_file("restart-000_0-ccd.tuf", wood);
    for (const char* flag : {"0", "1"}) {
        for (const auto& [name, bytes] : files_below(directory.path())) {
            if (name.ends_with(".info") || name.find("vpkeout") != std::string::npos) {
                fs::remove(name);
            }
        }
        fs::remove("torvex.log");
        CaseItems items = two_directions;
        items.emplace_back("NML_RUN", "RESTART_FLAG = " + std::string(flag));
        write_case(items, "&canopy_parameters\ncanopy_mode = 1\n/\n");
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_EQ(slot(table, 2), "  0.0 3");
        EXPECT_EQ(slot(table, 3), "180.0 2");
        EXPECT_THAT(ran.err, AllOf(HasSubstr("Warning: WD   0.0: restart-000_0-ccd.tuf, "),
                                   HasSubstr("(3, 4)"), HasSubstr("this direction is skipped")));
        EXPECT_THAT(ran.err, HasSubstr("torvex: 0 of 2 directions converged; diverged: 0.0; not "
                                       "iterated, since MAXIT is not above 0: 180.0"));
        const std::string indent(30, ' ');
        EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: Diverged.     0 it. Skip this direction.\n" +
                                     indent + "resid-m: 0.1000E+26 resid-u: 0.1000E+26\n" + indent +
                                     "resid-v: 0.1000E+26 resid-w: 0.1000E+26\n" + indent +
                                     "resid-k: 0.1000E+26 resid-e: 0.1000E+26\n"));
        EXPECT_FALSE(directory.has("restart-000_0-vpkeout_00000.tuf"));
        EXPECT_FALSE(directory.has("restart-000_0-restart.info"));
        EXPECT_TRUE(directory.has("restart-180_0-vpkeout_00000.tuf"));
    }
}

}  // namespace
}  // namespace torvex::test
