// The walk over the directions as the program makes it: files, names, log, console, exit status.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "base/edit.hpp"
#include "run/run_fixture.hpp"
#include "support/failures.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const std::string rule(42, '-');
const std::string behind_stamp(21, ' ');
const std::string below_outcome(30, ' ');
const std::string unknown_residuals_mu = below_outcome + "resid-m: 0.1000E+26 resid-u: 0.1000E+26";
const std::string unknown_residuals_vw = below_outcome + "resid-v: 0.1000E+26 resid-w: 0.1000E+26";
const std::string unknown_residuals_ke = below_outcome + "resid-k: 0.1000E+26 resid-e: 0.1000E+26";

// A log whose mesh numbers, once found to agree with their product, are made "<mesh>".
std::vector<std::string> without_mesh_numbers(const std::string& log) {
    static const std::regex numbers(R"( Mesh number is: (\d+) x (\d+) x (\d+) = (\d+)$)");
    std::vector<std::string> lines = lines_of(log);
    for (std::string& line : lines) {
        std::smatch found;
        if (std::regex_search(line, found, numbers)) {
            const long product = std::stol(found[1]) * std::stol(found[2]) * std::stol(found[3]);
            EXPECT_EQ(product, std::stol(found[4]));
            EXPECT_GT(product, 0);
            line = "<date> Mesh number is: <mesh>";
        }
    }
    return lines;
}

// What a log says from the start to the first direction.
void add_start(LogShape& shape, const std::string& case_file, const std::string& terrain) {
    shape << rule << "<date> Torvex Basic Started"
          << "<date> Torvex Version 5.0176"
          << "<date> Input file is set to [" + case_file + "]"
          << behind_stamp + "- nml(run) was read." << behind_stamp + "- nml(casefile) was read."
          << behind_stamp + "- nml(monitor) was read." << behind_stamp + "- nml(er) was read."
          << behind_stamp + "- nml(boundary_treatment) was read."
          << behind_stamp + "- nml(navier_stokes) was read."
          << behind_stamp + "- nml(numerical_solver) was read."
          << "  atlas_mode    = F"
          << "  terrain_flat  = " + terrain << "  meso_dws_mode = F"
          << " F"
          << "   - k-epsilon model is used."
          << "     > C_mu:   0.090"
          << "     > C_e1:   1.440"
          << "     > C_e2:   1.920"
          << "     > TKE Pr: 1.000"
          << "     > TED Pr: 1.300"
          << "<date> Input parameters were read.";
    shape.gap() << "<date> Mesh number is: <mesh>"
                << "<date> Outer iteration convergence criteria are set as:"
                << "                    M: 0.1000E-02, U: 0.1000E-02, V: 0.1000E-02, W: 0.1000E-02"
                << "                    SCALE:     1.000, LIMIT:   0.01000";
}

// A direction that is prepared and makes no iteration.
void add_idle_direction(LogShape& shape, const std::string& angle) {
    shape << "<date> Input parameters were read."
          << "<date> WD " + angle + ": Entered";
    shape.gap() << "<date> WD " + angle + ": Finished without converging.     0 it."
                << unknown_residuals_mu << unknown_residuals_vw << unknown_residuals_ke;
}

const std::vector<std::string> sixteen_angles{"  0.0", " 22.5", " 45.0", " 67.5", " 90.0", "112.5",
                                              "135.0", "157.5", "180.0", "202.5", "225.0", "247.5",
                                              "270.0", "292.5", "315.0", "337.5"};
const std::vector<std::string> sixteen_tags{"000_0", "022_5", "045_0", "067_5", "090_0", "112_5",
                                            "135_0", "157_5", "180_0", "202_5", "225_0", "247_5",
                                            "270_0", "292_5", "315_0", "337_5"};

const CaseItems one_direction{{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}};
const CaseItems two_directions{{"NML_CASEFILE", "N_WIND_DIRECTION = 2"}};

CaseItems joined(CaseItems first, const CaseItems& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

using RunSequence = RunTest;

// The whole walk

TEST_F(RunSequence, LogOfSixteenDirectionsInFull) {
    write_case();
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.err, StartsWith("torvex: 0 of 16 directions converged; not iterated"));

    LogShape shape;
    add_start(shape, directory.file("torvex.tin"), "normal");
    for (const std::string& angle : sixteen_angles) {
        add_idle_direction(shape, angle);
    }
    shape << "<date> 0 of 16 directions converged; not iterated, since MAXIT is not above 0: 0.0, "
             "22.5, 45.0, 67.5, 90.0, 112.5, 135.0, 157.5, 180.0, 202.5, 225.0, 247.5 and 4 more; "
             "torvex.log has more"
          << "<date> Computation Finished. ";
    EXPECT_EQ(shape.difference(without_mesh_numbers(log())), "");
}

TEST_F(RunSequence, StampsAreThoseOfTheHour) {
    write_case(one_direction);
    ASSERT_EQ(run().status, 0);
    const std::string text = directory.read("torvex.log");
    static const std::regex stamp(
        R"(\n\d{4}/\d{2}/\d{2} \d{2}:\d{2}:\d{2} Torvex Basic Started\n)");
    EXPECT_TRUE(std::regex_search(text, stamp)) << text;
}

TEST_F(RunSequence, SecondRunAddsToTheLog) {
    write_case(one_direction);
    ASSERT_EQ(run().status, 0);
    const std::string first = directory.read("torvex.log");
    ASSERT_EQ(run().status, 0);
    const std::string both = directory.read("torvex.log");
    EXPECT_TRUE(both.starts_with(first));
    const std::vector<std::string> lines = lines_of(both);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), rule), 2);
}

TEST_F(RunSequence, TableOfDirectionsHasARowForEach) {
    write_case();
    ASSERT_EQ(run().status, 0);
    EXPECT_EQ(directory.read("view-wind_direction.dat").size(), 17U * 120U);
    EXPECT_EQ(slot("view-wind_direction.dat", 1), "      17");
    for (std::size_t n = 0; n < sixteen_angles.size(); ++n) {
        EXPECT_EQ(slot("view-wind_direction.dat", static_cast<int>(n) + 2),
                  sixteen_angles[n] + " 2");
    }
}

TEST_F(RunSequence, EachDirectionHasItsMonitorFiles) {
    write_case();
    ASSERT_EQ(run().status, 0);
    for (const std::string& tag : sixteen_tags) {
        EXPECT_EQ(slot("view-convergence-" + tag + ".dat", 1), "       1");
        EXPECT_EQ(slot("view-monitor-" + tag + ".dat", 1), "       1");
    }
    EXPECT_EQ(slot("view-convergence.dat", 1), "       1");
    EXPECT_EQ(slot("view-monitor.dat", 1), "       1");
    EXPECT_TRUE(directory.has("log-meshnumber"));
}

TEST_F(RunSequence, ConsoleTellsTheSteps) {
    write_case(two_directions);
    const ProgramRun ran = run();
    EXPECT_THAT(ran.out, StartsWith(" * Initialization\n"));
    std::smatch found;
    const std::regex total(R"(\n   - Total mesh number is: (\d+ x \d+ x \d+ = \d+)\n)");
    ASSERT_TRUE(std::regex_search(ran.out, found, total)) << ran.out;
    EXPECT_THAT(log(), HasSubstr(" Mesh number is: " + found[1].str() + "\n"));
    EXPECT_THAT(ran.out, HasSubstr("\n   - Convergence Criteria are set as:\n"
                                   "     > M: 0.1000E-02\n"));
    EXPECT_THAT(ran.out,
                HasSubstr("\n\n * Wind direction:   0.00\nStart torvex default calculations...\n"));
    EXPECT_THAT(ran.out,
                HasSubstr("\n\n * Wind direction: 180.00\nStart torvex default calculations...\n"));
    EXPECT_THAT(ran.out, ::testing::EndsWith("   - Calculation ended without converging.\n"));
}

// Where the case file is

TEST_F(RunSequence, EverythingLandsBesideTheCaseFile) {
    directory.write("sub/case.tin", quick_case_text(one_direction));
    std::filesystem::rename("h.map", "sub/h.map");
    std::filesystem::rename("z0.map", "sub/z0.map");
    const ProgramRun ran = run({"/f", "sub/case.tin"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    for (const auto& [name, bytes] : files_below(directory.path())) {
        EXPECT_THAT(name, StartsWith("sub/"));
    }
    EXPECT_TRUE(directory.has("sub/torvex.log"));
    EXPECT_TRUE(directory.has("sub/view-wind_direction.dat"));
    EXPECT_TRUE(directory.has("sub/log-meshnumber"));
    EXPECT_TRUE(directory.has("sub/view-monitor-000_0.dat"));
    EXPECT_THAT(directory.read("sub/torvex.log"),
                HasSubstr("Input file is set to [" + directory.file("sub/case.tin") + "]"));
}

TEST_F(RunSequence, FullPathOfTheCaseFileServesToo) {
    write_case(one_direction);
    const TemporaryDirectory elsewhere;
    const ProgramRun ran =
        run_torvex_program({"/f", directory.file("torvex.tin")}, elsewhere.path());
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_TRUE(files_below(elsewhere.path()).empty());
    EXPECT_TRUE(directory.has("torvex.log"));
}

TEST_F(RunSequence, SwitchWithoutANameTakesTheDefault) {
    write_case(one_direction);
    EXPECT_EQ(run({"/f"}).status, 0);
    EXPECT_TRUE(directory.has("torvex.log"));
}

TEST_F(RunSequence, BadArgumentStops102AndTouchesNothing) {
    write_case(one_direction);
    const auto before = files_below(directory.path());
    for (const char* argument : {"/F", "-f", "x/f", "torvex.tin"}) {
        const ProgramRun ran = run({argument});
        EXPECT_EQ(ran.status, 102);
        EXPECT_THAT(ran.err, HasSubstr("stop 102: unknown argument \"" + std::string(argument)));
        EXPECT_THAT(ran.err, HasSubstr("usage: torvex [/f CASE_FILE]"));
        EXPECT_EQ(ran.out, " * Initialization\n");
    }
    EXPECT_EQ(files_below(directory.path()), before);
}

TEST_F(RunSequence, MissingCaseFileLeavesNoLog) {
    std::filesystem::create_directory("torvex.tin");
    const auto before = files_below(directory.path());
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"/f", "none.tin"}, {"/f", "no/such/case.tin"}, {"/f", ""}}) {
        const ProgramRun ran = run(arguments);
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.out, " * Initialization\ntin file missing.\n");
        EXPECT_THAT(ran.err, StartsWith("tin file missing.\n"));
    }
    EXPECT_EQ(files_below(directory.path()), before);
}

TEST_F(RunSequence, UnreadableCaseFileCountsAsMissing) {
    write_case(one_direction);
    std::filesystem::permissions("torvex.tin", std::filesystem::perms::none);
    std::filesystem::permissions(".", std::filesystem::perms::all);
    const OrdinaryUser user;
    if (!user.is_ordinary()) {
        GTEST_SKIP() << "the administrator reads everything";
    }
    const RunHere ran = run_here({}, [](torvex::Run&, Direction&) {});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, StartsWith("tin file missing.\n"));
    EXPECT_FALSE(directory.has("torvex.log"));
}

TEST_F(RunSequence, BadCaseFileEndsWithItsMessageAndWhatWasReadInTheLog) {
    write_case({{"NML_ER", "BOGUS = 1"}});
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, HasSubstr("group &NML_ER: unknown key \"BOGUS\""));
    EXPECT_THAT(ran.err, HasSubstr("in " + directory.file("torvex.tin") + ", line "));
    EXPECT_THAT(log(), StartsWith(rule + "\n<date> Torvex Basic Started\n"));
    EXPECT_THAT(log(), HasSubstr("- nml(monitor) was read.\n"
                                 "<date> group &NML_ER: unknown key \"BOGUS\"\n"));
    EXPECT_THAT(log(), ::testing::EndsWith("no direction was begun; torvex.log has more\n"));
    EXPECT_FALSE(directory.has("view-wind_direction.dat"));
}

// Modes

TEST_F(RunSequence, NoDirectionsIsAGoodRun) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 0"}});
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    LogShape shape;
    add_start(shape, directory.file("torvex.tin"), "normal");
    shape << "<date> no direction was begun; torvex.log has more"
          << "<date> Computation Finished. ";
    EXPECT_EQ(shape.difference(without_mesh_numbers(log())), "");
    EXPECT_EQ(slot("view-wind_direction.dat", 1), "       1");
    for (const auto& [name, bytes] : files_below(directory.path())) {
        EXPECT_THAT(name, Not(HasSubstr("view-convergence")));
        EXPECT_THAT(name, Not(HasSubstr("restart-")));
    }
}

TEST_F(RunSequence, FlatRunHasOneDirectionAndItsPrefix) {
    write_case({{"NML_RUN", "TERRAIN_MODE = 'flat'"}});
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    LogShape shape;
    add_start(shape, directory.file("torvex.tin"), "flat");
    add_idle_direction(shape, "  0.0");
    shape << "<date> 0 of 1 direction converged; not iterated, since MAXIT is not above 0: 0.0; "
             "torvex.log has more"
          << "<date> Computation Finished. ";
    EXPECT_EQ(shape.difference(without_mesh_numbers(log())), "");
    for (const auto& [name, bytes] : files_below(directory.path())) {
        EXPECT_FALSE(name.starts_with("view-") || name.starts_with("log-") ||
                     name.starts_with("restart-"))
            << name;
    }
    EXPECT_TRUE(directory.has("flat-log-meshnumber"));
    EXPECT_TRUE(directory.has("flat-view-monitor-000_0.dat"));
    EXPECT_TRUE(directory.has("flat-sites-000_0-_INFLOW_PROFILE.tpd"));
    EXPECT_EQ(directory.read("_latlon_label_list.txt"), "") << "without a prefix";
    EXPECT_EQ(slot("flat-view-wind_direction.dat", 1), "       2");
}

TEST_F(RunSequence, AtlasRunBehindANormalOneHasItsPrefix) {
    write_case(one_direction);
    ProgramRun ran = run();
    ASSERT_EQ(ran.status, 0) << ran.err;
    const auto before = files_below(directory.path());
    EXPECT_TRUE(before.contains("view-wind_direction.dat"));
    EXPECT_TRUE(before.contains("view-monitor-000_0.dat"));
    EXPECT_TRUE(before.contains("log-meshnumber"));

    write_case(joined(one_direction, {{"NML_RUN", "ATLAS_FLAG = 1"}}));
    ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(log(), HasSubstr("  atlas_mode    = T\n"));
    for (const auto& [name, bytes] : files_below(directory.path())) {
        if (!before.contains(name)) {
            EXPECT_THAT(name, StartsWith("atlas-"));
        }
    }
    EXPECT_TRUE(directory.has("atlas-view-wind_direction.dat"));
    EXPECT_TRUE(directory.has("atlas-view-convergence-000_0.dat"));
}

TEST_F(RunSequence, SecondFlatModeBehindANormalRunKeepsTheDirections) {
    write_case(two_directions);
    ASSERT_EQ(run().status, 0);
    const auto before = files_below(directory.path());
    write_case(joined(two_directions, {{"NML_RUN", "TERRAIN_MODE = 'flat2'"}}));
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    for (const auto& [name, bytes] : files_below(directory.path())) {
        if (!before.contains(name)) {
            EXPECT_THAT(name, StartsWith("flat2-"));
        }
    }
    EXPECT_EQ(slot("flat2-view-wind_direction.dat", 2), "  0.0 2");
    EXPECT_EQ(slot("flat2-view-wind_direction.dat", 3), "180.0 2");
}

TEST_F(RunSequence, GivenAnglesAreWalkedInTheirOrder) {
    write_case({{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 3"},
                {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 270, 359.96, 5"}});
    ASSERT_EQ(run().status, 0);
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "270.0 2");
    EXPECT_EQ(slot("view-wind_direction.dat", 3), "360.0 2");
    EXPECT_EQ(slot("view-wind_direction.dat", 4), "  5.0 2");
    EXPECT_TRUE(directory.has("view-monitor-359_9.dat"));
}

TEST_F(RunSequence, UserDomainHasOneDirectionAndNoSizing) {
    write_case({{"NML_RUN", "TORVEX_MODE = 1"}});
    const ProgramRun ran = run();
    EXPECT_EQ(ran.signal, 0);
    EXPECT_THAT(ran.out,
                HasSubstr("\n\n * Wind direction:   0.00\nStart user defined calculation..\n"));
    EXPECT_THAT(ran.out, Not(HasSubstr("Total mesh number")));
    EXPECT_THAT(ran.out, Not(HasSubstr("Convergence Criteria")));
    EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: Entered\n"));
    EXPECT_THAT(log(), Not(HasSubstr("Mesh number is")));
    EXPECT_FALSE(directory.has("log-meshnumber"));
    EXPECT_EQ(slot("view-wind_direction.dat", 1), "       2");
    for (const char* name : {"view-monitor.dat", "view-convergence.dat", "view-monitor-000_0.dat",
                             "view-convergence-000_0.dat"}) {
        EXPECT_EQ(directory.read(name).size(), 120U) << name;
        EXPECT_EQ(slot(name, 1), "       1") << name;
    }
}

TEST_F(RunSequence, NestedRunWithoutItsParentEndsWellWithAMessage) {
    write_case(two_directions, nest_block());
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.out, HasSubstr("Error: parent calculation data missing.\n"));
    EXPECT_EQ(slot("nest-view-wind_direction.dat", 1), "       2");
    EXPECT_EQ(slot("nest-view-wind_direction.dat", 2), "  0.0 0");
    EXPECT_FALSE(directory.has("view-wind_direction.dat")) << "nest- wins";
    EXPECT_THAT(log(), Not(HasSubstr("Computation Finished")));
}

TEST_F(RunSequence, OldStopMessageIsDeletedAtTheStart) {
    write_case(one_direction);
    directory.write("#stop_message", "");
    EXPECT_EQ(run().status, 0);
    EXPECT_FALSE(directory.has("#stop_message"));
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 2");
}

}  // namespace
}  // namespace torvex::test
