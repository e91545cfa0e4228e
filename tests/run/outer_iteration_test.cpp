// The control of the loop, with routines in place of the equations that leave what a test wants.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "canopy/canopy_file.hpp"
#include "results/result_files.hpp"
#include "run/outer_iteration_fixture.hpp"

namespace torvex {
namespace {

using test::CaseItems;
using test::FakeEquations;
using test::far_off;
using test::nan;
using test::RunHere;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class OuterIteration : public test::OuterIterationTest {};

// --- tests and ends
// -------------------------------------------------------------------------------

TEST_F(OuterIteration, TestsOnlyAtMonitorSteps) {
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    const auto calcu = equations.CALCU;
    equations.CALCU = [&](const SolverContext& c, int iter, int interval) {
        fake.level = iter > 20 ? 0.0F : far_off;  // would pass at 25, which is no monitor step
        return calcu(c, iter, interval);
    };
    const RunHere run = solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 25"}}, equations);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(fake.iterations, 25);
    EXPECT_THAT(log(), HasSubstr(": Finished without converging.    25 it."));
    EXPECT_EQ(slot("view-convergence.dat", 1), "       3");
    EXPECT_EQ(info().outer_count, 25);
    EXPECT_TRUE(has("vpkeout_00025.tuf"));
}

// Every solution is told when it is there, on the console and in the log of the direction.
TEST_F(OuterIteration, TellsOfEachSolution) {
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    const auto with_records = [](const Equations::Solve& solve, const SolveRecords& records) {
        return [solve, records](const SolverContext& c, int iter, int interval) {
            solve(c, iter, interval);
            return records;
        };
    };
    const SolveRecord one{.n = 3, .r0 = 28.0F, .r1 = 10.0F, .a = 0.25F};
    const SolveRecord two{.n = 11, .r0 = 10.0F, .r1 = 5.0F, .a = 0.5F};
    equations.CALCU = with_records(equations.CALCU, {one});
    equations.CALCP = with_records(equations.CALCP, {one, two});
    equations.CALCED = with_records(equations.CALCED, {two});
    const RunHere run = solve(
        {{"NML_NUMERICAL_SOLVER", "MAXIT = 1"}, {"NML_MONITOR", "MONITOR_STEP = 2"}}, equations);
    const std::string lines =
        "   u: n=  3, ru0= 0.2800000E+02, ru1= 0.1000000E+02, a= 0.2500000E+00\n"
        "   p: n=  3, rp0= 0.2800000E+02, rp1= 0.1000000E+02, a= 0.2500000E+00\n"
        "  pp: n= 11, rp0= 0.1000000E+02, rp1= 0.5000000E+01, a= 0.5000000E+00\n"
        "   e: n= 11, re0= 0.1000000E+02, re1= 0.5000000E+01, a= 0.5000000E+00\n";
    EXPECT_THAT(convergence_log(), HasSubstr(lines));
    EXPECT_THAT(run.out, HasSubstr(lines));
}

TEST_F(OuterIteration, AConvergedDirectionCountsOneLess) {
    FakeEquations fake;
    fake.level = 0.0F;
    const RunHere run = solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 25"}}, fake.equations());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(fake.iterations, 10);
    EXPECT_THAT(log(), HasSubstr(": Converged.     9 it."));
    EXPECT_EQ(info().outer_count, 9);
    EXPECT_TRUE(has("vpkeout_00009.tuf"));
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 1");
}

TEST_F(OuterIteration, KAndEpsilonPlayNoPartInTheTest) {
    FakeEquations fake;
    fake.level = 0.0F;
    Equations equations = fake.equations();
    equations.CALCKE = [](const SolverContext& c, int, int) {
        c.flow.resid_k = far_off;
        return SolveRecords{};
    };
    equations.CALCED = [](const SolverContext& c, int, int) {
        c.flow.resid_e = far_off;
        return SolveRecords{};
    };
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 25"}}, equations);
    EXPECT_THAT(log(), HasSubstr(": Converged."));
}

TEST_F(OuterIteration, NoIterationRunsWithoutAny) {
    FakeEquations fake;
    const RunHere run = solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 0"}}, fake.equations());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(fake.called.empty());
    EXPECT_THAT(log(), HasSubstr(": Finished without converging.     0 it."));
    EXPECT_TRUE(has("vpkeout_00000.tuf"));
    EXPECT_EQ(info().outer_count, 0);
    EXPECT_EQ(info().resid_u, 1.0e25F) << "a direction never tested must not pass as converged";
}

// --- order and NaN
// --------------------------------------------------------------------------------

TEST_F(OuterIteration, CallsTheRoutinesOfEachModelInOrder) {
    const std::map<int, std::vector<std::string>> expected{
        {1, {"CALCU", "CALCV", "CALCW", "CALCP", "CALCKE", "CALCED", "CALCVIS"}},
        {2, {"CALCU", "CALCV", "CALCW", "CALCP", "CALCKE", "CALCLM", "CALCVIS"}},
        {3, {"CALCU", "CALCV", "CALCW", "CALCP", "CALCKE", "CALCED", "CALCVIS"}},
        {4,
         {"CALCU", "CALCV", "CALCW", "CALCP", "CALCKE", "CALCED", "CALCKLM", "CALCLM_",
          "CALCVIS"}}};
    for (const auto& [model, routines] : expected) {
        FakeEquations fake;
        fake.level = far_off;
        solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 1"},
               {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + std::to_string(model)}},
              fake.equations());
        EXPECT_EQ(fake.called, routines) << model;
    }
}

struct NanCase {
    int model;
    const char* routine;  // leaves NaN as its residual
    float FlowState::*residual;
    const char* last_called;  // nothing is called behind it
};

void PrintTo(const NanCase& nan_case, std::ostream* out) {
    *out << nan_case.routine;
}

class OuterIterationNan : public OuterIteration, public testing::WithParamInterface<NanCase> {};

TEST_P(OuterIterationNan, EndsTheDirectionBehindTheRoutine) {
    const NanCase& nan_case = GetParam();
    FakeEquations fake;
    Equations equations = fake.equations();
    const auto poison = [&](Equations::Solve& sweep, const char* name) {
        if (std::string(name) == nan_case.routine) {
            const Equations::Solve good = sweep;
            sweep = [good, &nan_case](const SolverContext& c, int iter, int interval) {
                good(c, iter, interval);
                c.flow.*(nan_case.residual) = nan;
                return SolveRecords{};
            };
        }
    };
    poison(equations.CALCU, "CALCU");
    poison(equations.CALCV, "CALCV");
    poison(equations.CALCW, "CALCW");
    poison(equations.CALCP, "CALCP");
    poison(equations.CALCKE, "CALCKE");
    poison(equations.CALCED, "CALCED");
    poison(equations.CALCKLM, "CALCKLM");
    const RunHere run =
        solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 5"},
               {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + std::to_string(nan_case.model)}},
              equations);
    EXPECT_EQ(run.status, 0) << "a diverged direction is no failure: " << run.err;
    ASSERT_FALSE(fake.called.empty());
    EXPECT_EQ(fake.called.back(), nan_case.last_called);
    EXPECT_EQ(fake.iterations, 1);
    EXPECT_THAT(run.out, HasSubstr("diverged !!\n"));
    EXPECT_THAT(log(), HasSubstr(": Diverged.     0 it. Skip this direction."));
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 3");
}

INSTANTIATE_TEST_SUITE_P(
    Routines, OuterIterationNan,
    testing::Values(NanCase{1, "CALCU", &FlowState::resid_u, "CALCU"},
                    NanCase{1, "CALCV", &FlowState::resid_v, "CALCV"},
                    NanCase{1, "CALCW", &FlowState::resid_w, "CALCW"},
                    // no test stands behind CALCP: the normalised residuals are tested in the end
                    NanCase{1, "CALCP", &FlowState::resid_m, "CALCVIS"},
                    NanCase{1, "CALCKE", &FlowState::resid_k, "CALCKE"},
                    NanCase{2, "CALCKE", &FlowState::resid_k, "CALCKE"},
                    NanCase{3, "CALCED", &FlowState::resid_e, "CALCED"},
                    NanCase{4, "CALCED", &FlowState::resid_e, "CALCED"},
                    NanCase{4, "CALCKLM", &FlowState::resid_klm, "CALCKLM"}),
    [](const testing::TestParamInfo<NanCase>& param) {
        return "model" + std::to_string(param.param.model) + param.param.routine;
    });

TEST_F(OuterIteration, AHugeMomentumResidualIsADivergence) {
    for (const float factor : {0.5F, 2.0F}) {
        FakeEquations fake;
        fake.level = 0.0F;
        Equations equations = fake.equations();
        equations.CALCW = [factor](const SolverContext& c, int, int) {
            c.flow.resid_w = factor * 1.0e14F * c.flow.momentum_in;
            return SolveRecords{};
        };
        solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}}, equations);
        const std::string text = log();
        const std::string outcome = factor > 1.0F ? ": Diverged. " : ": Finished without";
        EXPECT_NE(text.rfind(outcome), std::string::npos) << text;
    }
}

TEST_F(OuterIteration, ADivergenceKeepsTheResidualsOfTheIterationBefore) {
    FakeEquations fake;
    Equations equations = fake.equations();
    equations.CALCP = [](const SolverContext& c, int iter, int) {
        c.flow.flxU.fill(1.0F);
        c.flow.resid_m = iter == 4 ? nan : 0.5F * c.flow.flow_in * static_cast<float>(iter);
        return SolveRecords{};
    };
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 9"}, {"NML_MONITOR", "MONITOR_STEP = 2"}}, equations);
    EXPECT_EQ(info().outer_count, 3);
    EXPECT_FLOAT_EQ(info().resid_m, 1.5F);
    EXPECT_TRUE(has("vpkeout_00003.tuf"));
    EXPECT_THAT(log(), HasSubstr(": Diverged.     3 it."));
}

TEST_F(OuterIteration, ADivergenceInTheFirstIterationLeavesCountZero) {
    FakeEquations fake;
    fake.level = nan;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 9"}}, fake.equations());
    EXPECT_EQ(info().outer_count, 0);
    EXPECT_TRUE(has("vpkeout_00000.tuf"));
}

// --- normalisers
// ----------------------------------------------------------------------------------

TEST_F(OuterIteration, TheMassNormaliserIsTheBalanceOfTheIterationBefore) {
    std::vector<float> flow_in;
    std::vector<float> momentum_in;
    std::vector<float> faces;
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    equations.CALCP = [&](const SolverContext& c, int iter, int) {
        flow_in.push_back(c.flow.flow_in);
        momentum_in.push_back(c.flow.momentum_in);
        faces.push_back(static_cast<float>((c.grid.ny - 1) * (c.grid.nz - 1)));
        c.flow.flxU.fill(static_cast<float>(iter));
        c.flow.resid_m = far_off;
        return SolveRecords{};
    };
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}}, equations);
    ASSERT_EQ(flow_in.size(), 3U);
    EXPECT_GT(flow_in[0], faces[0]) << "the inflow of the profile, of some metres a second";
    EXPECT_EQ(flow_in[1], faces[0]);
    EXPECT_EQ(flow_in[2], 2.0F * faces[0]);
    EXPECT_EQ(momentum_in[1], momentum_in[0]);
    EXPECT_EQ(momentum_in[2], momentum_in[0]);
}

TEST_F(OuterIteration, BalanceLinesStandAtEveryIteration) {
    FakeEquations fake;
    fake.level = far_off;
    const RunHere run = solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}}, fake.equations());
    std::size_t inflow = 0;
    std::size_t total = 0;
    for (const std::string& line : test::lines_of(run.out)) {
        inflow += line.starts_with(" East flowin") ? 1U : 0U;
        total += line.starts_with(" flowin") && line.find("flowout") != std::string::npos &&
                         line.find("total") != std::string::npos
                     ? 1U
                     : 0U;
    }
    EXPECT_EQ(inflow, 3U);
    EXPECT_EQ(total, 3U);
}

// --- tables
// ---------------------------------------------------------------------------------------

TEST_F(OuterIteration, TheTableBlockStandsOnConsoleAndInTheConvergenceLog) {
    FakeEquations fake;
    Equations equations = fake.equations();
    const auto leave = [](float FlowState::*residual, float value) {
        return [residual, value](const SolverContext& c, int, int) {
            c.flow.*residual = value * c.flow.momentum_in;
            return SolveRecords{};
        };
    };
    equations.CALCU = leave(&FlowState::resid_u, 0.5F);
    equations.CALCV = leave(&FlowState::resid_v, 0.25F);
    equations.CALCW = leave(&FlowState::resid_w, 0.125F);
    equations.CALCKE = leave(&FlowState::resid_k, 2.0F);
    equations.CALCED = leave(&FlowState::resid_e, 4.0F);
    equations.CALCP = [](const SolverContext& c, int, int) {
        c.flow.resid_m = 8.0F * c.flow.flow_in;
        return SolveRecords{};
    };
    const RunHere run = solve(
        {{"NML_NUMERICAL_SOLVER", "MAXIT = 1"}, {"NML_MONITOR", "MONITOR_STEP = 1"}}, equations);
    const std::string rule = "   " + std::string(69, '-');
    std::string dashes = "   ";
    for (int n = 0; n < 35; ++n) {
        dashes += "- ";
    }
    const std::string block =
        dashes +
        "\n    it residual-m residual-u residual-v residual-w residual-k residual-e\n"
        "     1 0.8000E+01 0.5000E+00 0.2500E+00 0.1250E+00 0.2000E+01 0.4000E+01\n" +
        rule + "\n";
    EXPECT_EQ(convergence_log(), rule + "\n" + block);
    EXPECT_THAT(run.out, HasSubstr(rule + "\n" + block));
    EXPECT_EQ(slot("view-convergence.dat", 2),
              "       1  0.80000000E+01  0.50000000E+00  0.25000000E+00  0.12500000E+00"
              "  0.20000000E+01  0.40000000E+01");
    EXPECT_EQ(slot("view-convergence-000_0.dat", 2), slot("view-convergence.dat", 2));
}

TEST_F(OuterIteration, TheMonitorRowIsInUnitsOfTheInflowSpeed) {
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    // Linear in height above the flat ground, so that any interpolation gives u = z/10 at 30 m.
    equations.CALCVIS = [](const SolverContext& c) {
        for (int k = 1; k <= c.grid.nk; ++k) {
            for (int j = 1; j <= c.grid.nj; ++j) {
                for (int i = 1; i <= c.grid.ni; ++i) {
                    const float z = c.grid.zc(i, j, k);
                    c.flow.u(i, j, k) = i == 1 ? z / 5.0F : z / 10.0F;  // 6 and 3 m/s at 30 m
                    c.flow.v(i, j, k) = z / 20.0F;
                    c.flow.w(i, j, k) = -z / 40.0F;
                    c.flow.p(i, j, k) = 9.0F;
                    c.flow.tke(i, j, k) = 1.5F;
                    c.flow.ted(i, j, k) = 0.25F;
                }
            }
        }
    };
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 1"}, {"NML_MONITOR", "MONITOR_STEP = 1"}}, equations);
    const std::string row = slot("view-monitor.dat", 2);
    ASSERT_EQ(row.size(), 8U + 6U * 16U) << row;
    EXPECT_EQ(row.substr(0, 8), "       1");
    const std::vector<double> expected{0.5, 0.25, -0.125, 9.0 / (0.5 * 36.0), 1.5, 0.25};
    for (std::size_t n = 0; n < expected.size(); ++n) {
        EXPECT_NEAR(std::strtod(row.substr(8 + 16 * n, 16).c_str(), nullptr), expected[n], 1e-5)
            << n;
    }
    EXPECT_EQ(slot("view-monitor-000_0.dat", 2), row);
}

TEST_F(OuterIteration, AMonitorAboveTheInflowColumnStopsBeforeTheFirstIteration) {
    FakeEquations fake;
    const Equations equations = fake.equations();
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}, {"NML_NUMERICAL_SOLVER", "MAXIT = 3"}});
    // No case file gets there, since its monitor lies below CONSTANT_DZ_HEIGHT, which the levels
    // reach; a low column of the inflow does.
    const RunHere run =
        test::run_here({}, [&equations](torvex::Run& running, Direction& direction) {
            Field3& zc = direction.grid.zc;
            for (int k = 2; k <= direction.grid.nk; ++k) {
                zc(1, 1, k) = zc(1, 1, 1) + static_cast<float>(k);  // below the 30 m of the monitor
            }
            OUTER_ITERATION(running, direction, equations);
        });
    EXPECT_EQ(run.status, 161);
    EXPECT_THAT(run.err, HasSubstr("the monitor point is not inside the mesh"));
    EXPECT_TRUE(fake.called.empty());
}

// --- control files
// --------------------------------------------------------------------------------

TEST_F(OuterIteration, AStopEndsIterationDirectionAndRun) {
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    equations.CALCVIS = [&](const SolverContext&) {
        if (fake.iterations == 3) {
            directory.write("#stop_message", "");
        }
    };
    directory.write("#OutputIntermediateCount", "3");
    const RunHere run = solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 9"},
                               {"NML_CASEFILE", "N_WIND_DIRECTION = 2"},
                               {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 0, 90"}},
                              equations);
    EXPECT_EQ(run.status, 2) << run.err;
    EXPECT_EQ(fake.iterations, 3);
    EXPECT_EQ(info().outer_count, 2);
    EXPECT_TRUE(has("vpkeout_00002.tuf")) << "the results of a stopped direction are written";
    EXPECT_FALSE(has("vpkeout_00003.tuf")) << "no intermediate result of that iteration";
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 2");
    EXPECT_EQ(slot("view-wind_direction.dat", 1), "       2") << "no further direction";
    EXPECT_FALSE(directory.has("restart-090_0-xyz.tuf"));
}

TEST_F(OuterIteration, IntermediateResultsFollowTheControlFile) {
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    equations.CALCVIS = [&](const SolverContext&) {
        if (fake.iterations == 5) {
            directory.write("#OutputIntermediateCount", "0");
        }
        if (fake.iterations == 6) {
            directory.write("#OutputIntermediateCount", "many");  // unreadable: 0 stays
        }
        if (fake.iterations == 7) {
            directory.write("#OutputIntermediateCount", "-1");  // negative: ignored
        }
        if (fake.iterations == 8) {
            directory.write("#OutputIntermediateCount", "9");
        }
    };
    directory.write("#OutputIntermediateCount", "2");
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 10"}}, equations);
    EXPECT_TRUE(has("vpkeout_00002.tuf"));
    EXPECT_TRUE(has("restart-00002.info"));
    EXPECT_TRUE(has("vpkeout_00004.tuf"));
    EXPECT_FALSE(has("vpkeout_00006.tuf"));
    EXPECT_FALSE(has("vpkeout_00008.tuf"));
    EXPECT_TRUE(has("vpkeout_00009.tuf"));
    EXPECT_EQ(info("restart-00004.info").outer_count, 4);
    EXPECT_EQ(info().outer_count, 10);
    EXPECT_THAT(log(), HasSubstr("Intermediate results every 2 iterations."));
}

TEST_F(OuterIteration, ADivergenceBehindAnIntermediateResultRefreshesTheNumberedFile) {
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    equations.CALCVIS = [&](const SolverContext&) {
        if (fake.iterations == 4) {
            fake.level = nan;
        }
    };
    directory.write("#OutputIntermediateCount", "2");
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 9"}}, equations);
    EXPECT_EQ(info("restart-00004.info").outer_count, 4);
    EXPECT_FALSE(has("restart.info")) << "the name used last stays in force";
    EXPECT_TRUE(has("vpkeout_00004.tuf"));
}

TEST_F(OuterIteration, EachResultOfAnIterationBringsTheSitesWithIt) {
    // The profile of the inflow is taken away at the start of each iteration.
    std::vector<int> written_in;
    const auto solve_with = [&](const CaseItems& items, float last_level) {
        written_in.clear();
        std::filesystem::remove(directory.file("sites-000_0-_INFLOW_PROFILE.tpd"));
        FakeEquations fake;
        fake.level = far_off;
        Equations equations = fake.equations();
        const auto calcu = equations.CALCU;
        equations.CALCU = [&](const SolverContext& c, int iter, int interval) {
            if (std::filesystem::remove(directory.file("sites-000_0-_INFLOW_PROFILE.tpd"))) {
                written_in.push_back(iter - 1);
            }
            fake.level = iter < 9 ? far_off : last_level;
            return calcu(c, iter, interval);
        };
        CaseItems all{{"NML_NUMERICAL_SOLVER", "MAXIT = 9"}};
        all.insert(all.end(), items.begin(), items.end());
        solve(all, equations);
        return directory.has("sites-000_0-_INFLOW_PROFILE.tpd");
    };
    EXPECT_TRUE(solve_with({{"NML_RUN", "DEBUG_MODE = 4"}}, far_off));
    EXPECT_THAT(written_in, ElementsAre(1, 5));
    directory.write("#OutputIntermediateCount", "3");
    EXPECT_TRUE(solve_with({}, far_off));
    EXPECT_THAT(written_in, ElementsAre(3, 6));
    EXPECT_FALSE(solve_with({}, nan)) << "the fields of a divergence have no sites";
    EXPECT_THAT(written_in, ElementsAre(3, 6));
}

TEST_F(OuterIteration, DebugWritesBeginAtTheFirstIteration) {
    FakeEquations fake;
    fake.level = far_off;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 9"}, {"NML_RUN", "DEBUG_MODE = 4"}}, fake.equations());
    // iterations 1 and 5 under the counts 0 and 4; 9 is the last one and ends as usual
    EXPECT_TRUE(has("vpkeout_00000.tuf"));
    EXPECT_TRUE(has("vpkeout_00004.tuf"));
    EXPECT_FALSE(has("vpkeout_00008.tuf"));
    EXPECT_TRUE(has("vpkeout_00009.tuf"));
}

// --- relaxation
// -----------------------------------------------------------------------------------

TEST_F(OuterIteration, TheBoostDoublesEvery50IterationsUpToItsCeiling) {
    std::map<int, std::pair<float, float>> urf;  // URFP and URFVIS as an iteration sees them
    std::vector<float> first;
    FakeEquations fake;
    fake.level = far_off;
    Equations equations = fake.equations();
    equations.CALCP = [&](const SolverContext& c, int iter, int) {
        c.flow.flxU.fill(1.0F);
        urf[iter] = {c.controls.URFP, c.controls.URFVIS};
        if (iter == 1) {
            first.push_back(c.controls.URFP);
        }
        return SolveRecords{};
    };
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 160, BOOSTCAL = T, URFP = 0.2, URFP_MAX = 0.8"},
           {"NML_NUMERICAL_SOLVER", "URFVIS = 0.1, URFVIS_MAX = 0.9"},
           {"NML_CASEFILE", "N_WIND_DIRECTION = 2, WIND_DIRECTION_ANGLE = 0, 90"}},
          equations);
    EXPECT_EQ(urf[50].first, 0.2F);
    EXPECT_EQ(urf[51].first, 0.4F);
    EXPECT_EQ(urf[100].first, 0.4F);
    EXPECT_EQ(urf[101].first, 0.8F);
    EXPECT_EQ(urf[160].first, 0.8F);
    EXPECT_EQ(urf[160].second, 0.1F);
    EXPECT_THAT(first, ElementsAre(0.2F, 0.2F)) << "each direction starts its boost anew";
}

// --- canopy sources of turbulence
// ----------------------------------------------------------------

class CanopyFactor : public OuterIteration {
 protected:
    // canopy_source_factor in each iteration, direction behind direction.
    std::vector<float> factors(int canopy_mode, int start_cal_src, const CaseItems& items) {
        FakeEquations fake;
        fake.level = far_off;
        Equations equations = fake.equations();
        std::vector<float> seen;
        const auto calcu = equations.CALCU;
        equations.CALCU = [&](const SolverContext& c, int iter, int interval) {
            seen.push_back(c.flow.canopy_source_factor);
            return calcu(c, iter, interval);
        };
        CaseItems all{{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 1"}};
        all.insert(all.end(), items.begin(), items.end());
        if (!directory.has("restart-000_0-ccd.tuf")) {
            write_case(all);
            const auto no_solve = [](torvex::Run& /*run*/, Direction& /*direction*/) {};
            EXPECT_EQ(test::run_here({}, no_solve).status, 0);
            lay_thin_woods();
        }
        write_case(all, "&canopy_parameters\n canopy_mode = " + std::to_string(canopy_mode) +
                            "\n start_cal_src = " + std::to_string(start_cal_src) + "\n/\n");
        const RunHere ran = test::run_here({}, [&](torvex::Run& run, Direction& direction) {
            OUTER_ITERATION(run, direction, equations);
        });
        EXPECT_EQ(ran.status, 0) << ran.err;
        return seen;
    }

 private:
    // A canopy file for each direction whose mesh is there.
    static void lay_thin_woods() {
        for (const std::string stem : {"restart-000_0-", "restart-090_0-"}) {
            if (!std::filesystem::exists(stem + "xyz.tuf")) {
                continue;
            }
            const Extents nodes = read_extents(stem + "xyz.tuf", xyz_codes);
            CanopyRecords wood;
            for (Field3* field : {&wood.gp_cf, &wood.gp_density, &wood.gp_length}) {
                field->allocate(nodes.ni + 1, nodes.nj + 1, nodes.nk + 1, 0.1F);
            }
            wood.gp_z0.allocate(nodes.ni + 1, nodes.nj + 1, 0.03F);
            write_canopy_file(stem + "ccd.tuf", wood);
        }
    }
};

TEST_F(CanopyFactor, IsWholeFromItsIterationOnAndBeginsAnewWithEachDirection) {
    const CaseItems two{{"NML_CASEFILE", "N_WIND_DIRECTION = 2, WIND_DIRECTION_ANGLE = 0, 90"},
                        {"NML_NUMERICAL_SOLVER", "MAXIT = 5"}};
    EXPECT_THAT(factors(1, 4, two), ElementsAre(0, 0, 0, 1, 1, 0, 0, 0, 1, 1));
}

TEST_F(CanopyFactor, IsZeroWithoutACanopyAndOneFromAnEarlyStart) {
    const CaseItems three{{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}};
    EXPECT_THAT(factors(0, 1, three), ElementsAre(0, 0, 0));
    EXPECT_THAT(factors(1, 1, three), ElementsAre(1, 1, 1));
    EXPECT_THAT(factors(1, -5, three), ElementsAre(1, 1, 1));
    EXPECT_THAT(factors(1, 4, three), ElementsAre(0, 0, 0));
}

TEST_F(CanopyFactor, GoesByTheCountOfAResumedDirection) {
    const CaseItems three{{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}};
    const CaseItems more{{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}, {"NML_RUN", "RESTART_FLAG = 1"}};
    EXPECT_THAT(factors(1, 5, three), ElementsAre(0, 0, 0));
    EXPECT_THAT(factors(1, 5, more), ElementsAre(0, 1, 1));
    EXPECT_THAT(factors(1, 5, more), ElementsAre(1, 1, 1));
}

// --- resumed directions
// ---------------------------------------------------------------------------

TEST_F(OuterIteration, AResumeGoesOnForMaxitMoreAndContinuesItsLogs) {
    FakeEquations fake;
    fake.level = far_off;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 10"}}, fake.equations());
    const std::string earlier = convergence_log();
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 15"}, {"NML_RUN", "RESTART_FLAG = 1"}},
          fake.equations());
    EXPECT_EQ(fake.iterations, 25);
    EXPECT_THAT(log(), HasSubstr(": Finished without converging.    25 it."));
    EXPECT_TRUE(convergence_log().starts_with(earlier));
    EXPECT_GT(convergence_log().size(), earlier.size());
    EXPECT_EQ(slot("view-convergence.dat", 1), "       3");
    EXPECT_EQ(slot("view-convergence.dat", 3).substr(0, 8), "      20");
}

TEST_F(OuterIteration, IntermediateResultsOfAResumeAreCountedFromZero) {
    FakeEquations fake;
    fake.level = far_off;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 10"}}, fake.equations());
    directory.write("#OutputIntermediateCount", "4");
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 5"}, {"NML_RUN", "RESTART_FLAG = 1"}},
          fake.equations());
    EXPECT_TRUE(has("vpkeout_00012.tuf"));
    EXPECT_TRUE(has("restart-00012.info"));
    EXPECT_FALSE(has("vpkeout_00014.tuf")) << "multiples of 4, not 4 behind the resume";
}

TEST_F(OuterIteration, AFreshDirectionEmptiesItsConvergenceLog) {
    FakeEquations fake;
    fake.level = far_off;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 20"}}, fake.equations());
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 10"}}, fake.equations());
    EXPECT_THAT(convergence_log(), Not(HasSubstr("\n    20 ")));
    EXPECT_THAT(convergence_log(), HasSubstr("\n    10 "));
}

TEST_F(OuterIteration, NoIterationsOnAResumeWriteTheResultsAgain) {
    FakeEquations fake;
    fake.level = far_off;
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 10"}}, fake.equations());
    const RestartInfo before = info();
    std::filesystem::remove(directory.file("restart-000_0-xyzc.tuf"));
    solve({{"NML_NUMERICAL_SOLVER", "MAXIT = 0"}, {"NML_RUN", "RESTART_FLAG = 1"}},
          fake.equations());
    EXPECT_EQ(fake.iterations, 10);
    EXPECT_EQ(info().outer_count, 10);
    EXPECT_FLOAT_EQ(info().resid_u, before.resid_u);
    EXPECT_TRUE(has("xyzc.tuf"));
}

}  // namespace
}  // namespace torvex
