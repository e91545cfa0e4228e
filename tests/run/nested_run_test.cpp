// Children inside finished parents, by the program: names and logs, the order of refusals, resumes,
// threads, canopy, models, and what the flow does.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <chrono>
#include <cmath>
#include <thread>

#include "base/edit.hpp"
#include "canopy/canopy_file.hpp"
#include "results/restart_info.hpp"
#include "results/view_table.hpp"
#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

const std::string other_centre = "CENT_LON = 139, 45, 8";

// A parent of two directions over a hill, of five iterations each, and its child.
class NestedRun : public WholeCase {
 protected:
    NestedRun() {
        directory.write("h.map", map_of(cosine_hill(60, 100), 81, 50));
        directory.write("z0.map", map_of(roughness_of_grass, 81, 50));
    }
    static CaseItems of(const CaseItems& more) {
        CaseItems items{{"NML_CASEFILE", "N_WIND_DIRECTION = 2"},
                        {"NML_MONITOR", "MONITOR_STEP = 1"},
                        {"NML_NUMERICAL_SOLVER", "MAXIT = 5"},
                        {"NML_SITE", "N_SITE = 1, SITE(1)%LABEL = 'top'"},
                        {"NML_SITE", "SITE(1)%LON = 139, 45, 0, SITE(1)%LAT = 35, 30, 0"}};
        items.insert(items.end(), more.begin(), more.end());
        return items;
    }
    ProgramRun run_parent(const CaseItems& more = {}) const {
        write_case(of(more));
        ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        return ran;
    }
    void write_child(const CaseItems& more = {}, const std::string& block = nest_block()) const {
        directory.write("nest.tin", quick_case_text(of(more), block));
    }
    ProgramRun run_child(const CaseItems& more = {},
                         const std::string& block = nest_block()) const {
        write_child(more, block);
        return run({"/f", "nest.tin"});
    }
    // Files that begin with a text.
    std::map<std::string, std::string> files(const std::string& head) const {
        std::map<std::string, std::string> found = files_below(directory.path());
        std::erase_if(found, [&head](const auto& file) { return !file.first.starts_with(head); });
        return found;
    }
    // The boundary planes of the child hold what they held at its start.
    void expect_kept_boundary() const;
    void expect_failure(const ProgramRun& ran, int code, const std::string& text) const {
        EXPECT_EQ(ran.signal, 0);
        EXPECT_EQ(ran.status, code) << ran.err;
        EXPECT_THAT(ran.err, HasSubstr(text));
    }
};

void NestedRun::expect_kept_boundary() const {
    const Solution end = stored("000_0", "nest-");
    const GridGeometry& g = end.grid;
    FlowState start;
    allocate(start, start_fields, g.ni, g.nj, g.nk);
    ASSERT_TRUE(read_vpkeinp("nest-restart-000_0-vpkeinp.tuf", start));
    for (const FlowField& field : start_fields) {
        if (field.name == "p") {
            continue;  // whose level is free
        }
        const Field3& last = end.flow.*field.member;
        const Field3& first = start.*field.member;
        for (int k = 2; k <= g.nz; ++k) {
            for (int j = 1; j <= g.nj; ++j) {
                for (int i = 1; i <= g.ni; i += j == 1 || j == g.nj ? 1 : g.ni - 1) {
                    EXPECT_EQ(last(i, j, k), first(i, j, k))
                        << field.name << ' ' << i << ' ' << j << ' ' << k;
                }
            }
        }
    }
    EXPECT_LT(std::fabs(mass_imbalance(end)), 1.0e-6);
}

std::string block_with(const std::string& good, const std::string& bad) {
    std::string block = nest_block();
    return block.replace(block.find(good), good.size(), bad);
}

TEST_F(NestedRun, ChildLeavesFilesOfItsOwnAndThoseOfTheParentAlone) {
    run_parent();
    const auto parent_results = files("restart-");
    const auto parent_sites = files("sites-");
    const auto parent_tables = files("view-");
    const ProgramRun ran = run_child();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(files("restart-"), parent_results);
    EXPECT_EQ(files("sites-"), parent_sites);
    EXPECT_EQ(files("view-"), parent_tables);
    for (const char* name :
         {"nest-restart-000_0-xyz.tuf", "nest-restart-000_0-xyzc.tuf", "nest-restart-180_0-z0.tuf",
          "nest-restart-180_0-vpkeinp.tuf", "nest-restart-180_0-vpkeout_00005.tuf",
          "nest-view-wind_direction.dat", "nest-view-monitor-180_0.dat", "nest-log-meshnumber"}) {
        EXPECT_TRUE(directory.has(name)) << name;
    }
    EXPECT_EQ(files("nest-sites-").size(), 2U);  // a site in two directions, no inflow profile
    EXPECT_TRUE(files("nest-log-upwind").empty());
    EXPECT_THAT(ran.out, HasSubstr("   - Open vpkeout restart-180_0-vpkeout_00005.tuf\n"));
    EXPECT_THAT(log(), AllOf(HasSubstr("<date> WD   0.0: nest: inflow  0."),
                             HasSubstr("<date> WD 180.0: nest: inflow  0.")));
}

// Cells of 40 m to 200 m from the centre, those behind 48 m: 100 m reach the third plane, so six
// parent cells each way are divided by two.
TEST_F(NestedRun, MeshOfTheChildIsFittedAndStored) {
    run_parent();
    EXPECT_EQ(run_child().status, 0);
    const Extents n = read_extents("nest-restart-000_0-xyz.tuf", {1, 1, 1});
    EXPECT_EQ(n.ni, 13);
    EXPECT_EQ(n.nj, 13);
    const auto lines = lines_of(directory.read("nest-restart-000_0-restart.info"));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[2], edit::list(14, 14, n.nk + 1));
    EXPECT_THAT(log(), HasSubstr(" Mesh number is: 14 x 14 x " + std::to_string(n.nk + 1)));
    Field3 x(n.ni, n.nj, n.nk);
    Field3 y = x;
    Field3 z = x;
    read_xyz("nest-restart-000_0-xyz.tuf", x, y, z);
    EXPECT_EQ(x(1, 1, 1), -120.0F);
    EXPECT_EQ(x(2, 1, 1), -100.0F);
    EXPECT_EQ(x(7, 1, 1), 0.0F);
    EXPECT_EQ(y(1, 13, 1), 120.0F);
}

TEST_F(NestedRun, MissingParentEndsWithZeroBehindTheStartFields) {
    const ProgramRun ran = run_child();
    expect_failure(ran, 0, "Error: parent calculation data missing.");
    EXPECT_THAT(ran.out, HasSubstr("Error: parent calculation data missing.\n"));
    EXPECT_THAT(ran.err, HasSubstr("Warning: WD 180.0: the parent of this direction is missing."));
    EXPECT_THAT(log(), HasSubstr("<date> Warning: WD   0.0: the parent of this direction is"));
    EXPECT_TRUE(directory.has("nest-restart-000_0-vpkeinp.tuf"));
    EXPECT_FALSE(directory.has("nest-restart-180_0-xyz.tuf"));
}

TEST_F(NestedRun, BlockIsRefusedBeforeAMissingParentIsNoticed) {
    for (const auto& [code, good, bad] : {std::tuple{180, "c2xmax = 100", "c2xmax = 0"},
                                          {180, "c2ymax = 100", "c2ymax = -5"},
                                          {180, "n_x_div = 2", "n_x_div = 0"},
                                          {180, "n_y_div = 2", "n_y_div = 0"},
                                          {182, "c2xmax = 100", "c2xmax = 900"},
                                          {182, "c2ymax = 100", "c2ymax = 900"}}) {
        const ProgramRun ran = run_child({}, block_with(good, bad));
        expect_failure(ran, code, "stop " + std::to_string(code));
        EXPECT_THAT(ran.err, Not(HasSubstr("parent calculation data")));
    }
}

TEST_F(NestedRun, ParentOfOtherDirectionsIsMissing) {
    run_parent();
    const ProgramRun ran = run_child({{"NML_CASEFILE", "N_WIND_DIRECTION = 4"}});
    expect_failure(ran, 0, "Error: parent calculation data missing.");
    EXPECT_TRUE(directory.has("nest-restart-000_0-restart.info"));
    EXPECT_THAT(ran.err, HasSubstr("Warning: WD  90.0: the parent of this direction is missing."));
}

TEST_F(NestedRun, ParentOfAnotherMeshOrAnotherCentre) {
    run_parent();
    expect_failure(run_child({{"NML_CASEFILE", "MIN_DXY_RAD = 120"}}), 184,
                   "parent mesh differs from this case");
    expect_failure(run_child({{"NML_CASEFILE", other_centre}}), 184, "the parent's ground is");
    // Vertical keys may differ.
    EXPECT_EQ(run_child({{"NML_CASEFILE", "MIN_DZ = 12, MESH_VRATIO = 1.25"}}).status, 0);
}

// The child's inflow and top are the parent's business; the closure is the same in both.
TEST_F(NestedRun, ParentWinsOverTheEquilibriumLayer) {
    const CaseItems key{{"NML_BOUNDARY_TREATMENT", "EQUILIBRIUM_INFLOW = T"},
                        {"NML_NAVIER_STOKES", "WALL_DISSIPATION_AT_CENTRE = T"}};
    run_parent(key);
    EXPECT_THAT(log(), Not(HasSubstr("gives way")));
    const std::size_t of_parent = log().size();
    const ProgramRun child = run_child(key);
    EXPECT_EQ(child.status, 0) << child.err;
    const std::string of_child = log().substr(of_parent);
    EXPECT_THAT(of_child, HasSubstr("EQUILIBRIUM_INFLOW gives way to the parent's flow"));
    EXPECT_THAT(of_child, HasSubstr("TED Pr: 1.167\n"));
    EXPECT_THAT(of_child, Not(HasSubstr("equilibrium layer, u*")));
}

// The marks of the child would move the lines that it shares with its parent.
TEST_F(NestedRun, NothingIsRefitted) {
    run_parent();
    EXPECT_EQ(run_child().status, 0);
    EXPECT_EQ(run_child({{"NML_RUN", "DEBUG_MODE = 1"}}).status, 0);
    EXPECT_FALSE(directory.has("tmp"));
}

TEST_F(NestedRun, DamagedParentIsNamed) {
    run_parent();
    const std::string result = "restart-000_0-vpkeout_00005.tuf";
    std::filesystem::resize_file(result, 4000);
    expect_failure(run_child(), 184, result);
    std::filesystem::remove(result);
    expect_failure(run_child(), 184, result);
    directory.write("restart-000_0-restart.info", "");
    expect_failure(run_child(), 183, "restart-000_0-restart.info");
}

// 150 m east of the centre: in the study area, and 30 m beyond the child.
TEST_F(NestedRun, MonitorPointLiesInsideTheChild) {
    const CaseItems monitor{{"NML_MONITOR", "MONITOR_POSITION = 1, MONITOR_HEIGHT = 30"},
                            {"NML_MONITOR", "MONITOR_LON = 139, 45, 6, MONITOR_LAT = 35, 30, 0"}};
    run_parent(monitor);
    expect_failure(run_child(monitor), 161, "monitor point");
    EXPECT_FALSE(directory.has("nest-restart-000_0-restart.info"));
}

TEST_F(NestedRun, ParentAtWorkIsWaitedFor) {
    run_parent();
    const auto before = files("");
    ViewTable table;
    table.open("view-wind_direction.dat", ViewTable::Existing::keep);
    expect_failure(run_child(), 1, "another run is using this directory");
    table.close();
    auto after = files("");
    after.erase("nest.tin");
    EXPECT_EQ(after, before) << "nothing is touched";
    EXPECT_EQ(run_child().status, 0);
}

TEST_F(NestedRun, ResumeGivesTheBytesOfAnUninterruptedRun) {
    run_parent();
    EXPECT_EQ(run_child({{"NML_NUMERICAL_SOLVER", "MAXIT = 6"}}).status, 0);
    const std::string whole = directory.read("nest-restart-180_0-vpkeout_00006.tuf");
    EXPECT_EQ(run_child({{"NML_NUMERICAL_SOLVER", "MAXIT = 2"}}).status, 0);
    // Its boundary is its own by now: the parent may be gone.
    for (const auto& [name, bytes] : files("restart-")) {
        std::filesystem::remove(name);
    }
    const ProgramRun ran =
        run_child({{"NML_NUMERICAL_SOLVER", "MAXIT = 4"}, {"NML_RUN", "RESTART_FLAG = 1"}});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_TRUE(directory.read("nest-restart-180_0-vpkeout_00006.tuf") == whole);
    EXPECT_THAT(log(), HasSubstr("WD 180.0: nest: the boundary is that of the child's start."));
}

TEST_F(NestedRun, AcceleratedChildResumesWithoutATrace) {
    run_parent();
    const auto iterations = [](int n) {
        return CaseItems{{"NML_NUMERICAL_SOLVER", "ACCEL = 1, MAXIT = " + std::to_string(n)}};
    };
    EXPECT_EQ(run_child(iterations(9)).status, 0);
    const std::string whole = directory.read("nest-restart-180_0-vpkeout_00009.tuf");
    EXPECT_EQ(run_child(iterations(4)).status, 0);
    CaseItems again = iterations(5);
    again.push_back({"NML_RUN", "RESTART_FLAG = 1"});
    EXPECT_EQ(run_child(again).status, 0);
    EXPECT_TRUE(directory.read("nest-restart-180_0-vpkeout_00009.tuf") == whole);
    EXPECT_THAT(log(), Not(HasSubstr("begins anew with")));
}

TEST_F(NestedRun, KilledChildResumes) {
    run_parent();
    write_child({{"NML_RUN", "DEBUG_MODE = 2"},
                 {"NML_NUMERICAL_SOLVER", "MAXIT = 100000"},
                 {"NML_NUMERICAL_SOLVER", "CC_OUT_M = 0, CC_OUT_U = 0, CC_OUT_V = 0"}});
    {
        StartedProgram program(torvex_program(), {"/f", "nest.tin"}, directory.path());
        while (program.running() && !directory.has("nest-restart-000_0-restart.info")) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        program.kill();
    }
    const auto before = read_restart_info("nest-restart-000_0-restart.info");
    ASSERT_TRUE(before);
    const ProgramRun ran = run_child({{"NML_RUN", "RESTART_FLAG = 1"}});
    EXPECT_EQ(ran.status, 0) << ran.err;
    const auto after = read_restart_info("nest-restart-000_0-restart.info");
    ASSERT_TRUE(after);
    EXPECT_GE(after->outer_count, before->outer_count);
    EXPECT_TRUE(directory.has("nest-restart-180_0-vpkeout_00005.tuf"));
}

TEST_F(NestedRun, SameBytesForAnyNumberOfThreads) {
    run_parent();
    std::map<std::string, std::string> first;
    const char* before = getenv("OMP_NUM_THREADS");
    const std::string kept = before != nullptr ? before : "";
    for (const char* threads : {"1", "2", "3"}) {
        setenv("OMP_NUM_THREADS", threads, 1);
        EXPECT_EQ(run_child().status, 0);
        std::map<std::string, std::string> found = files("nest-restart-");
        found.merge(files("nest-sites-"));
        first = first.empty() ? found : first;
        EXPECT_TRUE(found == first) << threads << " threads";
    }
    kept.empty() ? unsetenv("OMP_NUM_THREADS") : setenv("OMP_NUM_THREADS", kept.c_str(), 1);
}

TEST_F(NestedRun, AllModelsTakeParentsOfAllModels) {
    for (const int parent : {1, 2, 4}) {
        run_parent({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + std::to_string(parent)}});
        for (const int child : {1, 2, 3, 4}) {
            const ProgramRun ran =
                run_child({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + std::to_string(child)}});
            EXPECT_EQ(ran.status, 0) << parent << " -> " << child << ": " << ran.err;
            EXPECT_THAT(log(), Not(HasSubstr("Diverged"))) << parent << " -> " << child;
        }
    }
}

TEST_F(NestedRun, CanopyStandsOnTheChildsOwnMesh) {
    run_parent();
    const std::string canopy = "&canopy_parameters\ncanopy_mode = 1\n/\n";
    const CaseItems one{{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}};
    expect_failure(run_child(one, nest_block() + canopy), 1,
                   "nest-restart-000_0-ccd.tuf not found.");
    const Extents n = read_extents("nest-restart-000_0-xyzc.tuf", {1, 1, 1});
    CanopyRecords records;
    records.gp_cf.allocate(n.ni, n.nj, n.nk, 0.2F);
    records.gp_length.allocate(n.ni, n.nj, n.nk, 1.0F);
    records.gp_density.allocate(n.ni, n.nj, n.nk);
    records.gp_density(7, 7, 2) = 0.5F;
    records.gp_z0.allocate(n.ni, n.nj, 0.4F);
    write_canopy_file("nest-restart-000_0-ccd.tuf", records);
    const ProgramRun ran = run_child(one, nest_block() + canopy);
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("Calling cmOpenCalcPara in nest_bc_set..\n"));
    EXPECT_THAT(log(), HasSubstr("restart-000_0-ccd.tuf: no canopy of the parent"));
    Field2 z0(n.ni, n.nj);
    read_z0("nest-restart-000_0-z0.tuf", z0);
    EXPECT_EQ(z0(1, 1), 0.4F);
    EXPECT_EQ(z0(7, 7), 0.4F);
}

TEST_F(NestedRun, OutflowMayBeLeftUnbalanced) {
    run_parent();
    const ProgramRun ran = run_child({}, block_with("/\n", "nest_bc_ofix = F\n/\n"));
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.err, HasSubstr("nest_bc_ofix is off"));
    EXPECT_THAT(log(), HasSubstr("correction  0.0000E+00"));
}

// What the boundary planes hold at the start they hold at the end, whatever iterates.
TEST_F(NestedRun, BoundaryStaysAsTheParentGaveIt) {
    run_parent();
    for (const std::string accel : {"0", "1"}) {
        SCOPED_TRACE("ACCEL = " + accel);
        EXPECT_EQ(run_child({{"NML_NUMERICAL_SOLVER", "MAXIT = 8, ACCEL = " + accel}}).status, 0);
        expect_kept_boundary();
    }
    EXPECT_THAT(log(), HasSubstr("Accelerated iteration on 2 meshes."));
}

// A parent over a hill of 75 m, converged, and the keys of a child of its own cells.
const std::string close_criteria =
    "CC_OUT_M = 1e-4, CC_OUT_U = 1e-4, CC_OUT_V = 1e-4, CC_OUT_W = 1e-4";

std::string block_of_the_same_cells() {
    std::string block = nest_block();
    for (const auto& [good, bad] : {std::pair{"n_x_div = 2", "n_x_div = 1"},
                                    {"n_y_div = 2", "n_y_div = 1"},
                                    {"c2xmax = 100", "c2xmax = 750"},
                                    {"c2ymax = 100", "c2ymax = 600"}}) {
        block.replace(block.find(good), std::string(good).size(), bad);
    }
    return block;
}

// A child of the parent's own cells finds the parent's flow: within 3 % of its speed above the top
// and at the foot of the hill in front of and behind it.
TEST_F(NestedRun, ChildOfTheSameCellsFindsTheParentsFlow) {
    write_ground(cosine_hill(75, 300));
    const CaseItems items = hill_case({{"NML_NUMERICAL_SOLVER", close_criteria}});
    const Solution parent = converged(items);
    directory.write("nest.tin", quick_case_text(items, block_of_the_same_cells()));
    const ProgramRun ran = run({"/f", "nest.tin"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(log(), Not(HasSubstr("without converging")));
    const Solution child = stored("270_0", "nest-");
    for (const double x : {-350.0, 0.0, 350.0}) {
        const Column in_parent = column_at(parent, x, 0.0);
        const Column in_child = column_at(child, x, 0.0);
        EXPECT_EQ(parent.grid.xc(in_parent.i, 2, 2), child.grid.xc(in_child.i, 2, 2));
        for (const double h : {5.0, 10.0, 30.0, 60.0, 150.0}) {
            const double there = value_above(parent, parent.flow.u, in_parent, h);
            const double here = value_above(child, child.flow.u, in_child, h);
            EXPECT_NEAR(here / there, 1.0, 0.03) << "x = " << x << ", h = " << h;
        }
    }
}

// The discrete equations and the boundary are the same; the bound is what the criteria leave.
TEST_F(NestedRun, AcceleratedChildFindsTheFieldOfThePlainOne) {
    write_ground(cosine_hill(75, 300));
    const CaseItems items = hill_case({{"NML_NUMERICAL_SOLVER", close_criteria}});
    converged(items);
    const auto solve = [&](const std::string& keys) {
        CaseItems all = items;
        all.push_back({"NML_NUMERICAL_SOLVER", "MAXIT = 1000, CC_OUT_M = 3e-5, CC_OUT_U = 3e-5"});
        all.push_back({"NML_NUMERICAL_SOLVER", "CC_OUT_V = 3e-5, CC_OUT_W = 3e-5, " + keys});
        directory.write("nest.tin", quick_case_text(all, block_of_the_same_cells()));
        const ProgramRun ran = run({"/f", "nest.tin"});
        EXPECT_EQ(ran.status, 0) << ran.err;
        return stored("270_0", "nest-");
    };
    const Solution plain = solve("ACCEL = 0");
    const Solution fast = solve("ACCEL = 1");
    EXPECT_THAT(log(), Not(HasSubstr("without converging")));
    EXPECT_LT(fast.outer_count, plain.outer_count);
    for (const double x : {-350.0, 0.0, 350.0}) {
        const Column at = column_at(plain, x, 0.0);
        for (const double h : {10.0, 60.0, 150.0}) {
            EXPECT_NEAR(
                value_above(fast, fast.flow.u, at, h) / value_above(plain, plain.flow.u, at, h),
                1.0, 5e-4)
                << "x = " << x << ", h = " << h;
        }
    }
}

}  // namespace
}  // namespace torvex::test
