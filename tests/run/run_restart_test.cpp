// Runs that follow another one: which directions are taken from their saved state, which begin
// again, and what happens to the tables meanwhile.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "results/result_files.hpp"
#include "run/run_fixture.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* table = "view-wind_direction.dat";
constexpr const char* info_of_first = "restart-000_0-restart.info";
constexpr const char* resume_text = "Resume torvex default calculations..\n";
constexpr const char* default_text = "Start torvex default calculations...\n";

std::string rows(const std::vector<std::string>& slots) {
    std::string text;
    for (const std::string& row : slots) {
        text += row + std::string(119 - row.size(), ' ') + "\n";
    }
    return text;
}

class RunRestart : public RunTest {
 protected:
    // A first run leaves mesh and files of two directions, 0 and 180, behind.
    RunRestart() {
        write_case(two);
        const ProgramRun first = run();
        EXPECT_EQ(first.status, 0) << first.err;
        old_log = log();
        directory.write("view-convergence-000_0.dat", rows({"       2", "kept row"}));
    }
    ProgramRun run_again(const std::string& restart_flag) {
        CaseItems items = two;
        items.emplace_back("NML_RUN", "RESTART_FLAG = " + restart_flag);
        write_case(items);
        return run();
    }
    std::string new_log() const { return log().substr(old_log.size()); }

    const CaseItems two{{"NML_CASEFILE", "N_WIND_DIRECTION = 2"}};
    std::string old_log;
};

std::size_t count_of(const std::string& text, const std::string& what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        ++count;
    }
    return count;
}

TEST_F(RunRestart, DirectionWithinTheCriteriaIsDone) {
    directory.write(info_of_first, "0\n 1.0E-05 2.0E-05 3.0E-05 4.0E-05\n");
    directory.write("restart-180_0-restart.info", "0\n 1.0E-05 2.0E-02 3.0E-05 4.0E-05\n");
    const ProgramRun ran = run_again("1");
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(count_of(ran.out, resume_text), 2U);
    EXPECT_EQ(slot(table, 1), "       3");
    EXPECT_EQ(slot(table, 2), "  0.0 1");
    EXPECT_EQ(slot(table, 3), "180.0 2");
    EXPECT_THAT(new_log(),
                HasSubstr("<date> Input parameters were read.\n<date> WD   0.0: Entered\n"
                          "<date> Input parameters were read.\n"
                          "<date> WD 180.0: Entered\n"))
        << "nothing is told of a direction that is done";
    EXPECT_THAT(
        new_log(),
        HasSubstr("<date> WD 180.0: Finished without converging.     0 it.\n"
                  "                              resid-m: 0.1000E-04 resid-u: 0.2000E-01\n"
                  "                              resid-v: 0.3000E-04 resid-w: 0.4000E-04\n"
                  "                              resid-k: 0.0000E+00 resid-e: 0.0000E+00\n"));
}

TEST_F(RunRestart, DirectionThatIsDoneHasItsSitesWrittenAgain) {
    const std::string before = directory.read("sites-000_0-_INFLOW_PROFILE.tpd");
    std::filesystem::remove("sites-000_0-_INFLOW_PROFILE.tpd");
    std::filesystem::remove("_latlon_label_list.txt");
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                {"NML_RUN", "RESTART_FLAG = 1"},
                {"NML_SITE", "N_SITE = 2, SITE(1)%LABEL = 'far', SITE(2)%LABEL = 'near'"},
                {"NML_SITE", "SITE(1)%LON = 138, 45, 0, SITE(1)%LAT = 35, 30, 0"},
                {"NML_SITE", "SITE(2)%LON = 139, 45, 3, SITE(2)%LAT = 35, 30, 0"}});
    directory.write(info_of_first, "0\n 1.0E-05 2.0E-05 3.0E-05 4.0E-05\n");
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(slot(table, 2), "  0.0 1");
    EXPECT_EQ(directory.read("sites-000_0-_INFLOW_PROFILE.tpd"), before);
    EXPECT_TRUE(directory.has("sites-000_0-T353000_0000-1394503_0000.tpd"));
    EXPECT_EQ(directory.read("_latlon_label_list.txt"), "    2, near, T353000_0000-1394503_0000\n");
    EXPECT_THAT(new_log(), HasSubstr("<date> WD   0.0- Site [far] : (Warning) Site Position is out "
                                     "of computational domain.\n"));
}

TEST_F(RunRestart, ResidualEqualToItsCriterionPasses) {
    directory.write(info_of_first, "0\n 0.001 1.0E-3 .001 0.1D-2\n");
    EXPECT_EQ(run_again("1").status, 0);
    EXPECT_EQ(slot(table, 2), "  0.0 1");
}

TEST_F(RunRestart, EachOfFourResidualsMustMeetItsCriterion) {
    for (int n = 0; n < 4; ++n) {
        std::string info = "0\n";
        for (int i = 0; i < 4; ++i) {
            info += i == n ? " 0.0011" : " 0.0001";
        }
        directory.write(info_of_first, info + "\n");
        EXPECT_EQ(run_again("1").status, 0);
        EXPECT_EQ(slot(table, 2), "  0.0 2") << info;
    }
}

TEST_F(RunRestart, MissingOrBadResidualsAreNeverDone) {
    for (const char* info : {"0\n", "0\n 1e-5 1e-5 1e-5\n", "0\n nan nan nan nan\n",
                             "0\n 1e-5 x 1e-5 1e-5\n", "0\n\n\n"}) {
        directory.write(info_of_first, info);
        const ProgramRun ran = run_again("1");
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_THAT(ran.out, HasSubstr(resume_text)) << info;
        EXPECT_EQ(slot(table, 2), "  0.0 2") << info;
    }
}

TEST_F(RunRestart, UnreadableCountMeansTheDefaultPath) {
    for (const char* info : {"", "x\n 1e-5 1e-5 1e-5 1e-5\n", "1.5\n", ",\n", "/\n", "\n\n"}) {
        directory.write(info_of_first, info);
        std::filesystem::remove("restart-180_0-restart.info");
        const ProgramRun ran = run_again("1");
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_EQ(count_of(ran.out, default_text), 2U) << info;
        EXPECT_THAT(ran.out, Not(HasSubstr(resume_text))) << info;
        EXPECT_EQ(slot(table, 2), "  0.0 2") << info;
    }
}

// Such values would show later only, as a direction that diverges.
TEST_F(RunRestart, MeshOrRoughnessThatIsNoUseIsRefused) {
    directory.write(info_of_first, "0\n 1.0 1.0 1.0 1.0\n");
    const Extents n = read_extents("restart-000_0-xyz.tuf", xyz_codes);
    Field3 x(n.ni, n.nj, n.nk, 1.0F);
    Field3 z = x;
    z(2, 3, 1) = std::numeric_limits<float>::quiet_NaN();
    const std::string good = directory.read("restart-000_0-xyz.tuf");
    write_xyz("restart-000_0-", x, x, z);
    ProgramRun ran = run_again("1");
    EXPECT_EQ(ran.status, 212);
    EXPECT_THAT(ran.err, HasSubstr("node (2, 3, 1): z is no finite number\n"
                                   "  in restart-000_0-xyz.tuf"));
    directory.write("restart-000_0-xyz.tuf", good);

    Field2 z0(n.ni + 1, n.nj + 1, 0.03F);
    z0(4, 2) = -0.03F;
    write_z0("restart-000_0-", z0);
    ran = run_again("1");
    EXPECT_EQ(ran.status, 222);
    EXPECT_THAT(ran.err, HasSubstr("cell (4, 2): the roughness length is -0.3000E-01 m"));
    EXPECT_THAT(ran.err, HasSubstr("in restart-000_0-z0.tuf"));
}

TEST_F(RunRestart, OtherFlagsTakeNoSavedState) {
    for (const char* flag : {"0", "2", "-1"}) {
        directory.write(info_of_first, "0\n 1e-5 1e-5 1e-5 1e-5\n");
        const ProgramRun ran = run_again(flag);
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_EQ(count_of(ran.out, default_text), 2U) << flag;
        EXPECT_EQ(slot(table, 2), "  0.0 2") << flag;
    }
}

TEST_F(RunRestart, TableOfDirectionsBeginsAgainWhateverTheFlag) {
    for (const char* flag : {"0", "1", "2"}) {
        directory.write(info_of_first, "0\n 1e-5 1e-5 1e-5 1e-5\n");
        ASSERT_EQ(run_again(flag).status, 0);
        EXPECT_EQ(slot(table, 1), "       3") << flag;
        EXPECT_EQ(directory.read(table).size(), 3U * 120U) << flag;
    }
}

TEST_F(RunRestart, LongerTableOfAnEarlierRunIsBlanked) {
    directory.write(table, rows({"       5", "a", "b", "c", "d"}));
    ASSERT_EQ(run_again("2").status, 0);
    EXPECT_EQ(directory.read(table), rows({"       3", "  0.0 2", "180.0 2", "", ""}));
    ASSERT_EQ(run_again("0").status, 0);
    EXPECT_EQ(directory.read(table), rows({"       3", "  0.0 2", "180.0 2"}));
}

TEST_F(RunRestart, DirectionThatIsDoneKeepsItsMonitorRows) {
    directory.write(info_of_first, "0\n 1e-5 1e-5 1e-5 1e-5\n");
    ASSERT_EQ(run_again("1").status, 0);
    EXPECT_EQ(directory.read("view-convergence-000_0.dat"), rows({"       2", "kept row"}));
}

TEST_F(RunRestart, AllDirectionsTableShowsTheLastDirection) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}, {"NML_RUN", "RESTART_FLAG = 1"}});
    directory.write(info_of_first, "0\n 1e-5 1e-5 1e-5 1e-5\n");
    directory.write("view-convergence.dat", rows({"       3", "other", "other"}));
    ASSERT_EQ(run().status, 0);
    EXPECT_EQ(directory.read("view-convergence.dat"), rows({"       2", "kept row"}));
}

TEST_F(RunRestart, FreshRunForgetsTheMonitorRows) {
    ASSERT_EQ(run_again("0").status, 0);
    EXPECT_EQ(directory.read("view-convergence-000_0.dat"), rows({"       1"}));
}

}  // namespace
}  // namespace torvex::test
