// Runs on a domain that the user gives in files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "base/record_file.hpp"
#include "canopy/canopy_file.hpp"
#include "mesh/test_meshes.hpp"
#include "results/result_files.hpp"
#include "run/cycle_change.hpp"
#include "run/run_fixture.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
namespace fs = std::filesystem;

const std::string console_of_the_reading =
    "Start user defined calculation..\n"
    "  - Read user defined calculation domain settings.\n"
    "- Read mesh number from : counts.txt\n"
    "- Nunmber of CVs  i: 7\n"
    "                  j: 6\n"
    "                  k: 9\n"
    "              total: 378\n"
    "- Read calculation domain from : given-xyz.tuf\n"
    "- Read roughness from : given-z0.tuf\n"
    "- Skipped reading canopy parameters file.\n";

// Whether a file has been written anew since it was looked at: each write replaces the file whole.
class FileIdentity {
 public:
    explicit FileIdentity(std::string path) : path_(std::move(path)), inode_(inode()) {}
    bool is_still_there() const { return inode() == inode_; }

 private:
    ino_t inode() const {
        struct stat status {};
        EXPECT_EQ(::stat(path_.c_str(), &status), 0) << path_;
        return status.st_ino;
    }
    std::string path_;
    ino_t inode_;
};

class UserDomain : public RunTest {
 protected:
    // 7 x 6 x 9 cells over a gentle ridge, unless a test gives another domain.
    UserDomain() {
        const GridGeometry g = mapped_mesh({6, 5, 8}, [](double s, double t, double q) {
            const double ground = 5 * std::sin(3 * s);
            return Position{100 * s, 80 * t - 40, ground + (400 - ground) * q * q};
        });
        give(g);
        give_roughness(Field2(7, 6, 0.05F));
        directory.write("torvex.tin", "");
    }

    void give(const GridGeometry& g) const {
        directory.write("counts.txt", std::to_string(g.ni) + "\n" + std::to_string(g.nj) + "\n" +
                                          std::to_string(g.nk) + "\n");
        write_xyz("given-", g.xn, g.yn, g.zn);
    }
    static void give_roughness(const Field2& z0) { write_z0("given-", z0); }

    static std::string block(const std::string& further = {}) {
        return "&user_domain\nmesh_n_file = counts.txt\nxyz_file = given-xyz.tuf\n"
               "roughness_file = given-z0.tuf\n" +
               further + "/\n";
    }
    ProgramRun run_domain(const std::string& further = {}, const CaseItems& items = {},
                          const std::string& other_blocks = {}) const {
        CaseItems all{{"NML_RUN", "TORVEX_MODE = 1"}};
        all.insert(all.end(), items.begin(), items.end());
        // None of the keys of maps and sizing.
        std::string text = quick_case_text(all, block(further) + other_blocks);
        const std::string maps = "BASIC_H_FILE = 'h.map', BASIC_Z0_FILE = 'z0.map'";
        text.erase(text.find(maps), maps.size());
        directory.write("torvex.tin", text);
        return run();
    }
    ProgramRun run_with_inlet(const std::string& inlet, const std::string& table = {},
                              const std::string& precise = "F") const {
        directory.write("inflow.txt", table);
        return run_domain("inlet = " + inlet + "\ninflow_profile_file = inflow.txt\n" +
                          "specify_turbulence = " + precise + "\n");
    }
    // A stop with its code and these words, nothing of the direction being written.
    void expect_refused(const ProgramRun& ran, int code, const std::string& words) const {
        EXPECT_EQ(ran.signal, 0);
        EXPECT_EQ(ran.status, code) << ran.err;
        EXPECT_THAT(ran.err, HasSubstr(words));
        for (const auto& [name, bytes] : files_below(directory.path())) {
            EXPECT_THAT(name, Not(StartsWith("restart-")));
        }
    }
};

// u of a result file.
Field3 field_of_result(const std::string& path, const Extents& n) {
    Field3 u(n.ni, n.nj, n.nk);
    RecordReader reader;
    EXPECT_TRUE(reader.open(path) && reader.skip() && reader.skip() && reader.read(u)) << path;
    return u;
}

// What a run does

TEST_F(UserDomain, TellsWhatItReadsAndStartsWithTheDefaultInflow) {
    const ProgramRun ran = run_domain();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr(console_of_the_reading + "- TORVEX default inflow is used.\n"));
    EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: Entered\n"
                                 "<date> - Skipped reading canopy parameters file.\n"
                                 "<date> WD   0.0: Inflow: alpha="));
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 2");
    EXPECT_FALSE(directory.has("log-meshnumber"));
    EXPECT_THAT(ran.out, Not(HasSubstr("Total mesh number")));
    EXPECT_THAT(ran.out, Not(HasSubstr("Convergence Criteria")));
    for (const auto& [name, bytes] : files_below(directory.path())) {
        EXPECT_THAT(name, Not(HasSubstr("roughness-"))) << "no upwind roughness is worked out";
    }
}

TEST_F(UserDomain, HasOneDirectionWhateverTheCaseSays) {
    const ProgramRun ran = run_domain("", {{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 3"},
                                           {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 45, 90, 135"}});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(slot("view-wind_direction.dat", 1), "       2");
    EXPECT_TRUE(directory.has("restart-000_0-vpkeout_00000.tuf"));
}

TEST_F(UserDomain, MonitorTablesStayEmpty) {
    const ProgramRun ran = run_domain(
        "", {{"NML_NUMERICAL_SOLVER", "MAXIT = 2"}, {"NML_MONITOR", "MONITOR_STEP = 1"}});
    EXPECT_EQ(ran.status, 0) << ran.err;
    for (const char* name : {"view-monitor.dat", "view-monitor-000_0.dat"}) {
        EXPECT_EQ(slot(name, 1), "       1") << name;
        EXPECT_EQ(directory.read(name).size(), 120U) << name;
    }
    EXPECT_EQ(slot("view-convergence-000_0.dat", 1), "       3");
}

TEST_F(UserDomain, LeavesTheFilesOfADirection) {
    ASSERT_EQ(run_domain().status, 0);
    EXPECT_EQ(directory.read("restart-000_0-xyz.tuf"), directory.read("given-xyz.tuf"));
    EXPECT_EQ(directory.read("restart-000_0-z0.tuf"), directory.read("given-z0.tuf"));
    EXPECT_EQ(read_extents("restart-000_0-xyzc.tuf", {1, 1, 1}), (Extents{7, 6, 9}));
    EXPECT_EQ(read_extents("restart-000_0-vpkeinp.tuf", {1, 1, 1}), (Extents{7, 6, 9}));
}

TEST_F(UserDomain, ForgetsTheStateOfAnEarlierRunBeforeItsFilesAreWritten) {
    ASSERT_EQ(run_domain().status, 0);
    ASSERT_TRUE(directory.has("restart-000_0-restart.info"));
    fs::create_directory("restart-000_0-xyzc.tuf.tmp");  // ends the run while it writes them
    EXPECT_EQ(run_domain().status, 1);
    EXPECT_FALSE(directory.has("restart-000_0-restart.info"));
}

TEST_F(UserDomain, CountsThatTheMeshDoesNotBearOutEndAResume) {
    ASSERT_EQ(run_domain().status, 0);
    directory.write("counts.txt", "300\n300\n300\n");
    const ProgramRun ran = run_domain("", {{"NML_RUN", "RESTART_FLAG = 1"}});
    EXPECT_EQ(ran.status, 212);
    EXPECT_THAT(ran.err, HasSubstr("restart-000_0-xyz.tuf"));
}

TEST_F(UserDomain, NeverWritesOverAFileThatItReads) {
    fs::rename("given-xyz.tuf", "restart-000_0-xyz.tuf");
    fs::rename("given-z0.tuf", "restart-000_0-z0.tuf");
    fs::create_symlink("restart-000_0-xyz.tuf", "given-xyz.tuf");
    fs::create_hard_link("restart-000_0-z0.tuf", "given-z0.tuf");
    const FileIdentity nodes("restart-000_0-xyz.tuf");
    const FileIdentity roughness("restart-000_0-z0.tuf");
    ASSERT_EQ(run_domain().status, 0);
    EXPECT_TRUE(nodes.is_still_there());
    EXPECT_TRUE(roughness.is_still_there());
    EXPECT_TRUE(directory.has("restart-000_0-xyzc.tuf"));
}

TEST_F(UserDomain, TakesTheSmallestMesh) {
    give(uniform_mesh({2, 2, 2}, 50, 50, 20));
    give_roughness(Field2(3, 3, 0.05F));
    for (const char* model : {"1", "2", "3", "4"}) {
        const ProgramRun ran = run_domain(
            "inlet = 2\n", {{"NML_NUMERICAL_SOLVER", "MAXIT = 3, DOUBLE_CORRECTION = T"},
                            {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + std::string(model)},
                            {"NML_MONITOR", "MONITOR_STEP = 1"}});
        EXPECT_EQ(ran.signal, 0) << model;
        EXPECT_EQ(ran.status, 0) << model << ran.err;
    }
}

// The inlets

TEST_F(UserDomain, EquilibriumInflowIsTold) {
    const ProgramRun ran = run_with_inlet("2");
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out,
                HasSubstr(console_of_the_reading + "- TORVEX equilibrium inflow is used.\n"));
}

// Only the default inlet is replaced by the equilibrium layer, and its Prandtl number comes with
// it.
TEST_F(UserDomain, InletsOfTheUserWinOverTheEquilibriumLayer) {
    const CaseItems key{{"NML_BOUNDARY_TREATMENT", "EQUILIBRIUM_INFLOW = T"}};
    const ProgramRun own = run_domain("inlet = 2\n", key);
    EXPECT_EQ(own.status, 0) << own.err;
    EXPECT_THAT(log(), HasSubstr("EQUILIBRIUM_INFLOW gives way to inlet = 2 of the block"));
    EXPECT_THAT(log(), HasSubstr("TED Pr: 1.300\n"));
    EXPECT_THAT(log(), HasSubstr("Fields start from the equilibrium inflow."));
    const std::size_t before = log().size();
    const ProgramRun layer = run_domain("inlet = 0\n", key);
    EXPECT_EQ(layer.status, 0) << layer.err;
    const std::string of_layer = log().substr(before);
    EXPECT_THAT(of_layer, Not(HasSubstr("gives way")));
    EXPECT_THAT(of_layer, HasSubstr("TED Pr: 1.167\n"));
    EXPECT_THAT(of_layer, HasSubstr("Fields start from the equilibrium layer of the inflow."));
}

TEST_F(UserDomain, ProfileTableIsTold) {
    const std::string heading = console_of_the_reading +
                                "- User specified inflow is used.\n"
                                "- Read inflow profile from : inflow.txt\n";
    const ProgramRun sigma = run_with_inlet("1", "h u sigma\n10 5 1\n100 9 1\n");
    EXPECT_EQ(sigma.status, 0) << sigma.err;
    EXPECT_THAT(sigma.out, HasSubstr(heading + "- Specify turbulence by the sigma u.\n"
                                               "- Calculating ted\n   ---"));
    const ProgramRun precise = run_with_inlet("1", "10 5 1 0.1\n100 9 1 0.01\n", "T");
    EXPECT_EQ(precise.status, 0) << precise.err;
    EXPECT_THAT(precise.out,
                HasSubstr(heading + "- Specify turbulent property precisely.\n   ---"));
}

TEST_F(UserDomain, OtherInletsAreRefused) {
    for (const char* inlet : {"3", "-1", "2147483647"}) {
        const ProgramRun ran = run_with_inlet(inlet);
        expect_refused(ran, 1, "*** inflow file error ***: inlet is " + std::string(inlet));
        EXPECT_THAT(ran.out, HasSubstr("canopy parameters file.\n*** inflow file error ***\n"));
    }
}

TEST_F(UserDomain, BadTablesAreRefused) {
    for (const auto& [table, words] :
         std::map<std::string, std::string>{{"", "no line begins with a number"},
                                            {"10 5 1\n10 6 1\n", "does not rise"},
                                            {"10 5\n", "fewer than 3 values"},
                                            {"10 5 1\n20 six 1\n", "cannot read \"six\""},
                                            {std::string("\0\xff 1 2\n", 7), "no line"}}) {
        const ProgramRun ran = run_with_inlet("1", table);
        expect_refused(ran, 1, "*** inflow file error ***: ");
        EXPECT_THAT(ran.err, HasSubstr(words));
        EXPECT_THAT(ran.err, HasSubstr("\n  in inflow.txt, line "));
        EXPECT_THAT(ran.out, HasSubstr("\n*** inflow file error ***\n"));
    }
    fs::remove("inflow.txt");
    expect_refused(run_domain("inlet = 1\ninflow_profile_file = none.txt\n"), 1,
                   "*** inflow file error ***: the table cannot be opened\n  in none.txt");
    expect_refused(run_domain("inlet = 1\n"), 1, "block &user_domain, inflow_profile_file");
}

// Files that cannot be used

TEST_F(UserDomain, MeshCountsThatCannotBeUsedEndTheRun) {
    fs::remove("counts.txt");
    const ProgramRun absent = run_domain();
    expect_refused(absent, 1, "the file of mesh counts cannot be opened\n  in counts.txt");
    EXPECT_THAT(absent.out, HasSubstr("- Read mesh number from : counts.txt\n"));
    for (const char* text : {"7\n6\n", "7 6 9\n", "7\n6\nnine\n", "7\n-6\n9\n", "7\n6\n2\n"}) {
        directory.write("counts.txt", text);
        expect_refused(run_domain(), 1, "in counts.txt, line ");
    }
    directory.write("counts.txt", "2000000000\n2000000000\n2000000000\n");
    expect_refused(run_domain(), 1, "exceeds 2147483647 cells\n  in counts.txt");
    directory.write("torvex.tin", case_text({{"NML_RUN", "TORVEX_MODE = 1"}}));
    expect_refused(run(), 1, "mesh_n_file names no file");
}

TEST_F(UserDomain, NodesThatCannotBeUsedStop210To212) {
    directory.write("counts.txt", "8\n6\n9\n");
    const ProgramRun extents = run_domain();
    expect_refused(extents, 212, "stop 212: ");
    EXPECT_THAT(extents.out, ::testing::ContainsRegex(" *6 *5 *8 *7 *5 *8"));
    EXPECT_THAT(extents.err, HasSubstr("mesh_n_file"));
    // As many values, in other extents.
    directory.write("counts.txt", "9\n6\n7\n");
    expect_refused(run_domain(), 212, "in given-xyz.tuf");
    directory.write("counts.txt", "7\n6\n9\n");

    const std::string whole = directory.read("given-xyz.tuf");
    for (const std::size_t bytes : {0U, 5U, 11U}) {
        directory.write("given-xyz.tuf", whole.substr(0, bytes));
        expect_refused(run_domain(), 211, "in given-xyz.tuf");
    }
    for (const std::size_t bytes : {12U, 20U, 40U, 1000U}) {
        directory.write("given-xyz.tuf", whole.substr(0, bytes));
        expect_refused(run_domain(), 212, "in given-xyz.tuf");
    }
    fs::copy_file("given-z0.tuf", "given-xyz.tuf", fs::copy_options::overwrite_existing);
    expect_refused(run_domain(), 211, "the file has the id 102, expected 101");
    fs::remove("given-xyz.tuf");
    const ProgramRun absent = run_domain();
    expect_refused(absent, 210, "in given-xyz.tuf");
    EXPECT_THAT(absent.out, HasSubstr("- Read calculation domain from : given-xyz.tuf\n"));
    EXPECT_THAT(absent.err, HasSubstr("xyz_file"));
}

TEST_F(UserDomain, RoughnessThatCannotBeUsedStops221And222) {
    give_roughness(Field2(6, 7, 0.05F));
    expect_refused(run_domain(), 222, "have 6 x 7 elements, those of the mesh have 7 x 6");
    const std::string whole = directory.read("given-z0.tuf");
    directory.write("given-z0.tuf", whole.substr(0, 60));
    expect_refused(run_domain(), 222, "in given-z0.tuf");
    directory.write("given-z0.tuf", whole.substr(0, 9));
    expect_refused(run_domain(), 221, "in given-z0.tuf");
    fs::copy_file("given-xyz.tuf", "given-z0.tuf", fs::copy_options::overwrite_existing);
    expect_refused(run_domain(), 221, "the file has the id 101, expected 102");
    fs::remove("given-z0.tuf");
    const ProgramRun absent = run_domain();
    expect_refused(absent, 221, "in given-z0.tuf");
    EXPECT_THAT(absent.out, HasSubstr("- Read roughness from : given-z0.tuf\n"));
    EXPECT_THAT(absent.err, HasSubstr("roughness_file"));
}

TEST_F(UserDomain, RoughnessMustBeFiniteAndAboveZero) {
    for (const float value : {0.0F, -0.1F, std::numeric_limits<float>::infinity(),
                              std::numeric_limits<float>::quiet_NaN()}) {
        Field2 z0(7, 6, 0.05F);
        z0(7, 6) = value;
        z0(3, 2) = value;
        give_roughness(z0);
        expect_refused(run_domain(), 1, "cell (3, 2): the roughness length is ");
    }
}

TEST_F(UserDomain, BadCellsAreNamed) {
    GridGeometry g = uniform_mesh({6, 5, 8}, 10, 10, 10);
    g.zn(4, 3, 5) = std::numeric_limits<float>::quiet_NaN();
    give(g);
    expect_refused(run_domain(), 1, "cell (4, 3, 5) of the given mesh: a coordinate");
    g.zn(4, 3, 5) = -500;
    give(g);
    expect_refused(run_domain(), 1, "cell (4, 3, 5) of the given mesh: its determinant is -");
}

// Whatever the bytes of the four files: an end by itself, with a message where it fails.
TEST_F(UserDomain, SurvivesDistortedFiles) {
    directory.write("inflow.txt", "h u sigma\n10 5 1\n100 9 1\n");
    const std::map<std::string, std::string> good = files_below(directory.path());
    const std::array<std::string, 4> names{"counts.txt", "given-xyz.tuf", "given-z0.tuf",
                                           "inflow.txt"};
    const std::set<int> expected{0, 1, 210, 211, 212, 221, 222};
    std::mt19937 random(17);
    for (int n = 0; n < 80; ++n) {
        const std::string& name = names[random() % names.size()];
        std::string bytes = good.at(name);
        // Mostly in the heads, where counts and lengths stand.
        const std::size_t reach = std::min<std::size_t>(bytes.size(), n % 4 == 0 ? 100000 : 48);
        for (auto changes = 1 + random() % 4; changes > 0; --changes) {
            bytes[random() % reach] = static_cast<char>(random() % 2 == 0 ? random() : 0xff);
        }
        if (n % 5 == 0) {
            bytes.resize(random() % bytes.size());
        }
        directory.write(name, bytes);
        const ProgramRun ran = run_domain("inlet = 1\ninflow_profile_file = inflow.txt\n",
                                          {{"NML_NUMERICAL_SOLVER", "MAXIT = 1"}});
        ASSERT_FALSE(ran.timed_out) << n;
        ASSERT_EQ(ran.signal, 0) << n << ran.err;
        ASSERT_TRUE(expected.contains(ran.status)) << n << ": " << ran.status << ran.err;
        ASSERT_TRUE(ran.status == 0 || !ran.err.starts_with("torvex: ")) << n << ran.err;
        directory.write(name, good.at(name));
    }
}

// Resuming

TEST_F(UserDomain, GoesOnWhereItStopped) {
    const auto iterations = [](const std::string& n) {
        return CaseItems{{"NML_NUMERICAL_SOLVER", "MAXIT = " + n}};
    };
    ASSERT_EQ(run_domain("inlet = 2\n", iterations("5")).status, 0);
    const std::string straight = directory.read("restart-000_0-vpkeout_00005.tuf");
    fs::remove("restart-000_0-vpkeout_00005.tuf");
    fs::remove("restart-000_0-restart.info");

    ASSERT_EQ(run_domain("inlet = 2\n", iterations("3")).status, 0);
    CaseItems again = iterations("2");
    again.emplace_back("NML_RUN", "RESTART_FLAG = 1");
    const ProgramRun ran = run_domain("inlet = 2\n", again);
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("Resume torvex default calculations..\n"
                                   "- Read mesh number from : counts.txt\n"
                                   "- Nunmber of CVs  i: 7\n"));
    EXPECT_THAT(ran.out, Not(HasSubstr("Start user defined")));
    EXPECT_THAT(ran.out, Not(HasSubstr("inflow is used")));
    const std::string resumed = directory.read("restart-000_0-vpkeout_00005.tuf");
    EXPECT_TRUE(resumed == straight);
}

// The accelerated iteration

// A hill under 2805 cells, of which a coarse mesh can be made.
GridGeometry wide_hill() {
    return mapped_mesh({18, 16, 12}, [](double s, double t, double q) {
        const double ground =
            40 * std::exp(-30 * std::pow(s - 0.4, 2) - 20 * std::pow(t - 0.45, 2));
        return Position{1200 * s, 800 * t - 400, ground + (500 - ground) * q * q};
    });
}

TEST_F(UserDomain, AccelerationLeadsToTheSameField) {
    const GridGeometry g = wide_hill();
    give(g);
    give_roughness(Field2(g.ni, g.nj, 0.05F));
    const auto solve = [&](const std::string& keys) {
        const ProgramRun ran =
            run_domain("inlet = 2\n", {{"NML_NUMERICAL_SOLVER", "CC_OUT_M = 1E-9, " + keys}});
        EXPECT_EQ(ran.status, 0) << ran.err;
        std::string result;
        for (const auto& [name, bytes] : files_below(directory.path())) {
            result = name.find("vpkeout") != std::string::npos ? name : result;
        }
        const Field3 u = field_of_result(result, {g.ni, g.nj, g.nk});
        fs::remove(result);
        return u;
    };
    const Field3 plain = solve("MAXIT = 400");
    const Field3 fast = solve("MAXIT = 120, ACCEL = 1");
    EXPECT_THAT(log(), HasSubstr("Accelerated iteration on 2 meshes."));
    float largest = 0;
    for (std::size_t n = 0; n < plain.size(); ++n) {
        largest = std::max(largest, std::abs(plain.data()[n] - fast.data()[n]));
    }
    EXPECT_LT(largest, 0.005F) << "of a wind of 10 m/s: what the iterations leave";
}

TEST_F(UserDomain, CycleKeepsASolution) {
    const GridGeometry g = wide_hill();
    give(g);
    give_roughness(Field2(g.ni, g.nj, 0.05F));
    ASSERT_EQ(run_domain("inlet = 2\n", {{"NML_NUMERICAL_SOLVER", "MAXIT = 300"}}).status, 0);
    expect_fixed_point(change_by_cycle({"/f", directory.file("torvex.tin")}, 300));
}

TEST_F(UserDomain, ResumesOnTheMeshOfItsCountsOnly) {
    ASSERT_EQ(run_domain().status, 0);
    directory.write("counts.txt", "7\n6\n8\n");
    EXPECT_EQ(run_domain("", {{"NML_RUN", "RESTART_FLAG = 1"}}).status, 212);
    fs::remove("counts.txt");
    EXPECT_EQ(run_domain("", {{"NML_RUN", "RESTART_FLAG = 1"}}).status, 1);
}

TEST_F(UserDomain, StartsAfreshWithoutASavedState) {
    const ProgramRun ran = run_domain("", {{"NML_RUN", "RESTART_FLAG = 1"}});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("Start user defined calculation..\n"));
}

// Canopy

TEST_F(UserDomain, CanopyWithoutItsFileIsARunWithoutDrag) {
    const CaseItems some{{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}};
    ASSERT_EQ(run_domain("inlet = 2\n", some).status, 0);
    const std::string without = directory.read("restart-000_0-vpkeout_00003.tuf");
    const ProgramRun ran =
        run_domain("inlet = 2\n", some, "&canopy_parameters\ncanopy_mode = 1\n/\n");
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("- Skipped reading canopy parameters file.\n"));
    EXPECT_TRUE(directory.read("restart-000_0-vpkeout_00003.tuf") == without);
}

// A stand of trees up to level 4 in the middle of the domain; gp_z0 where a roughness is given.
CanopyRecords trees(const Extents& n, std::optional<float> z0) {
    CanopyRecords records;
    for (Field3* field : {&records.gp_cf, &records.gp_density, &records.gp_length}) {
        field->allocate(n.ni, n.nj, n.nk);
    }
    records.gp_length.fill(1.0F);
    for (int k = 2; k <= 4; ++k) {
        for (int i = n.ni / 2; i <= n.ni / 2 + 1; ++i) {
            records.gp_cf(i, n.nj / 2, k) = 0.4F;
            records.gp_density(i, n.nj / 2, k) = 0.1F;
        }
    }
    if (z0) {
        records.gp_z0.allocate(n.ni, n.nj, *z0);
    }
    return records;
}

constexpr const char* canopy_on = "&canopy_parameters\ncanopy_mode = 1\n/\n";
const CaseItems three_iterations{{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}};

TEST_F(UserDomain, RoughnessOfTheCanopyFileReplacesTheOther) {
    give_roughness(Field2(7, 6, 0.3F));
    ASSERT_EQ(run_domain("inlet = 2\n", three_iterations).status, 0);
    const std::string expected = directory.read("restart-000_0-vpkeout_00003.tuf");

    give_roughness(Field2(7, 6, 0.05F));
    write_canopy_file("trees.tuf", trees({7, 6, 9}, 0.3F));
    const ProgramRun ran = run_domain("inlet = 2\nccd_file = trees.tuf\n", three_iterations);
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, HasSubstr("- Read canopy_parameters from : trees.tuf\n"
                                   "Reading canopy parameter file trees.tuf\n"
                                   "- TORVEX equilibrium inflow is used.\n"));
    EXPECT_THAT(ran.out, Not(HasSubstr("Skipped")));
    EXPECT_TRUE(directory.read("restart-000_0-vpkeout_00003.tuf") == expected)
        << "no drag without canopy_mode";
    Field2 z0(7, 6);
    read_z0("restart-000_0-z0.tuf", z0);
    EXPECT_EQ(z0(1, 1), 0.3F);
}

TEST_F(UserDomain, CanopyFileWithoutRoughnessLeavesTheOther) {
    write_canopy_file("trees.tuf", trees({7, 6, 9}, std::nullopt));
    ASSERT_EQ(run_domain("ccd_file = trees.tuf\n").status, 0);
    EXPECT_EQ(directory.read("restart-000_0-z0.tuf"), directory.read("given-z0.tuf"));
}

TEST_F(UserDomain, TreesSlowTheWindWhereTheyStand) {
    write_canopy_file("trees.tuf", trees({7, 6, 9}, std::nullopt));
    const auto speed_in_the_trees = [this](const std::string& other_blocks) {
        const ProgramRun ran = run_domain("ccd_file = trees.tuf\n", three_iterations, other_blocks);
        EXPECT_EQ(ran.status, 0) << ran.err;
        return field_of_result("restart-000_0-vpkeout_00003.tuf", {7, 6, 9})(4, 3, 3);
    };
    const float without = speed_in_the_trees("");
    EXPECT_LT(speed_in_the_trees(canopy_on), 0.9F * without);
}

TEST_F(UserDomain, CanopyFilesThatCannotBeUsedEndTheRun) {
    const std::string name = "ccd_file = trees.tuf\n";
    expect_refused(run_domain(name), 1, "trees.tuf not found.");
    write_canopy_file("trees.tuf", trees({6, 7, 9}, 0.3F));
    expect_refused(run_domain(name), 1, "Error: File Inconsistency.");
    write_canopy_file("trees.tuf", trees({7, 6, 9}, 0.0F));
    expect_refused(run_domain(name), 1,
                   "cell (1, 1): the roughness length is 0.0000E+00 m, expected a finite value "
                   "above 0\n  in trees.tuf");
}

TEST_F(UserDomain, ResumesWithItsCanopy) {
    write_canopy_file("trees.tuf", trees({7, 6, 9}, 0.3F));
    for (const char* mode : {"", canopy_on}) {
        const std::string files = "inlet = 2\nccd_file = trees.tuf\n";
        // The stem's own roughness is a file that is read, and thus stays as it was given.
        fs::remove("restart-000_0-restart.info");
        fs::copy_file("given-z0.tuf", "restart-000_0-z0.tuf", fs::copy_options::overwrite_existing);
        fs::remove("given-z0.tuf");
        fs::create_symlink("restart-000_0-z0.tuf", "given-z0.tuf");
        ASSERT_EQ(run_domain(files, three_iterations, mode).status, 0);
        const std::string straight = directory.read("restart-000_0-vpkeout_00003.tuf");

        fs::remove("restart-000_0-restart.info");
        ASSERT_EQ(run_domain(files, {{"NML_NUMERICAL_SOLVER", "MAXIT = 1"}}, mode).status, 0);
        const ProgramRun ran = run_domain(
            files, {{"NML_NUMERICAL_SOLVER", "MAXIT = 2"}, {"NML_RUN", "RESTART_FLAG = 1"}}, mode);
        ASSERT_EQ(ran.status, 0) << ran.err;
        EXPECT_THAT(ran.out, HasSubstr("- Read canopy_parameters from : trees.tuf\n"));
        EXPECT_TRUE(directory.read("restart-000_0-vpkeout_00003.tuf") == straight) << mode;
        fs::remove("given-z0.tuf");
        fs::copy_file("restart-000_0-z0.tuf", "given-z0.tuf");
    }
}

// The same flow by another way

// Maps of a rolling land with patches of forest, 21 x 21 points round 35 30 N, 139 45 E.
std::string wavy_map(const std::function<double(int, int)>& value) {
    std::string text =
        "<TORVEX_MAP lon-lat>\nn_lon = 21, n_lat = 21\nd_lon = 0.5, d_lat = 0.5\n"
        "base_longitude = 139 40\nbase_latitude = 35 25\n--DATA--\n";
    for (int j = 0; j < 21; ++j) {
        for (int i = 0; i < 21; ++i) {
            text += " " + std::to_string(value(i, j));
        }
        text += '\n';
    }
    return text;
}

TEST_F(UserDomain, FilesOfAFinishedRunGiveItsFieldsAgain) {
    directory.write("h.map",
                    wavy_map([](int i, int j) { return 20 + 15 * std::sin(i + 0.5 * j); }));
    directory.write("z0.map", wavy_map([](int i, int j) { return (i + j) % 3 == 0 ? 0.4 : 0.03; }));
    for (const char* model : {"1", "4"}) {
        const CaseItems items{{"NML_NUMERICAL_SOLVER", "MAXIT = 5"},
                              {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + std::string(model)},
                              {"NML_CASEFILE", "N_WIND_DIRECTION = 1"}};
        write_case(items);
        const ProgramRun from_maps = run();
        ASSERT_EQ(from_maps.status, 0) << from_maps.err;
        const std::map<std::string, std::string> files = files_below(directory.path());
        const Extents n = read_extents("restart-000_0-xyzc.tuf", {1, 1, 1});
        directory.write("counts.txt", std::to_string(n.ni) + "\n" + std::to_string(n.nj) + "\n" +
                                          std::to_string(n.nk) + "\n");
        fs::rename("restart-000_0-xyz.tuf", "given-xyz.tuf");
        fs::rename("restart-000_0-z0.tuf", "given-z0.tuf");
        fs::remove("restart-000_0-vpkeout_00005.tuf");

        const ProgramRun from_files = run_domain("inlet = 0\n", items);
        ASSERT_EQ(from_files.status, 0) << from_files.err;
        for (const char* name :
             {"restart-000_0-xyz.tuf", "restart-000_0-xyzc.tuf", "restart-000_0-z0.tuf",
              "restart-000_0-vpkeinp.tuf", "restart-000_0-vpkeout_00005.tuf"}) {
            EXPECT_TRUE(directory.read(name) == files.at(name)) << name << ", model " << model;
        }
    }
}

TEST_F(UserDomain, FilesOfAFinishedRunWithCanopyGiveItsFieldsAgain) {
    directory.write("h.map",
                    wavy_map([](int i, int j) { return 20 + 15 * std::sin(i + 0.5 * j); }));
    const CaseItems items{{"NML_NUMERICAL_SOLVER", "MAXIT = 5"},
                          {"NML_CASEFILE", "N_WIND_DIRECTION = 1"}};
    write_case(items);
    ASSERT_EQ(run().status, 0);
    const Extents n = read_extents("restart-000_0-xyzc.tuf", {1, 1, 1});
    directory.write("counts.txt", std::to_string(n.ni) + "\n" + std::to_string(n.nj) + "\n" +
                                      std::to_string(n.nk) + "\n");
    // One roughness everywhere: the upwind mean that a run on maps stamps is that one too.
    write_canopy_file("restart-000_0-ccd.tuf", trees(n, 0.0625F));
    write_case(items, canopy_on);
    const ProgramRun from_maps = run();
    ASSERT_EQ(from_maps.status, 0) << from_maps.err;
    const Field3 expected = field_of_result("restart-000_0-vpkeout_00005.tuf", n);
    fs::rename("restart-000_0-xyz.tuf", "given-xyz.tuf");
    fs::rename("restart-000_0-z0.tuf", "given-z0.tuf");
    fs::remove("restart-000_0-vpkeout_00005.tuf");

    const ProgramRun from_files =
        run_domain("ccd_file = restart-000_0-ccd.tuf\n", items, canopy_on);
    ASSERT_EQ(from_files.status, 0) << from_files.err;
    const Field3 u = field_of_result("restart-000_0-vpkeout_00005.tuf", n);
    float largest = 0;
    for (std::size_t m = 0; m < u.size(); ++m) {
        largest = std::max(largest, std::abs(u.data()[m] - expected.data()[m]));
    }
    EXPECT_LT(largest, 1e-3F) << "of a wind of 10 m/s";
}

// Over ground of the roughness that made it, the equilibrium inflow stays as it is. The cells on
// the ground are left out: the wall law takes the mean dissipation of such a cell, some 2.6 times
// that at its centre, and the speed there adapts to that within a few cells, whatever their height.
TEST_F(UserDomain, EquilibriumInflowKeepsItsProfileOverUniformRoughness) {
    const GridGeometry g = stretched_mesh({28, 5, 20}, {10, 20, 5}, {1, 1, 1.22});
    give(g);
    give_roughness(Field2(g.ni, g.nj, 0.03F));
    const ProgramRun ran = run_domain(
        "inlet = 2\n", {{"NML_NUMERICAL_SOLVER", "MAXIT = 400, CC_OUT_U = 1E-4, CC_OUT_V = 1E-4"},
                        {"NML_NUMERICAL_SOLVER", "CC_OUT_W = 1E-4, CC_OUT_M = 1E-4"}});
    ASSERT_EQ(ran.status, 0) << ran.err;
    ASSERT_EQ(slot("view-wind_direction.dat", 2), "  0.0 1") << "converged";

    std::string result;
    for (const auto& [name, bytes] : files_below(directory.path())) {
        result = name.find("vpkeout") != std::string::npos ? name : result;
    }
    const Field3 u = field_of_result(result, {g.ni, g.nj, g.nk});
    const int downwind = 22;  // centre at x = 205 m
    const int j = 3;
    for (int k = 3; k <= g.nz; ++k) {
        EXPECT_NEAR(u(downwind, j, k) / u(1, j, k), 1.0F, 0.02F) << k;
    }
}

}  // namespace
}  // namespace torvex::test
