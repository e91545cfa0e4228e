// Every file that a run reads, in turn replaced by what is no readable file, and damaged at random.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>

#include "canopy/canopy_file.hpp"
#include "results/result_files.hpp"
#include "run/file_mutations.hpp"
#include "run/run_fixture.hpp"
#include "support/failures.hpp"

namespace torvex::test {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;
namespace fs = std::filesystem;

const std::string stem = "restart-000_0-";
const CaseItems resumed{{"NML_RUN", "RESTART_FLAG = 1"}};
const CaseItems user_domain{{"NML_RUN", "TORVEX_MODE = 1"}};
const std::string domain_block =
    "&user_domain\nmesh_n_file = counts.txt\nxyz_file = given-xyz.tuf\n"
    "roughness_file = given-z0.tuf\nccd_file = given-ccd.tuf\ninlet = 1\n"
    "inflow_profile_file = table.txt\nspecify_turbulence = F\n/\n";
const std::string with_canopy = "&canopy_parameters\ncanopy_mode = 1\n/\n";

enum class Need : std::uint8_t {
    must,  // the run cannot do without it
    may    // the run goes on without it
};

// An input file and the case that reads it.
struct Input {
    std::string file;
    CaseItems items;
    std::string behind;
    Need need = Need::must;
    bool records = false;
};

std::vector<Input> inputs() {
    const auto named = [](const std::string& group, const std::string& line) {
        return CaseItems{{group, line}};
    };
    const CaseItems profile{{"NML_BOUNDARY_TREATMENT",
                             "SPECIFY_INFLOW_PROFILE = T, INFLOW_PROFILE_FILE = 'profile.txt', "
                             "INFLOW_PROFILE_TABLE = T"}};
    const CaseItems tpd{{"NML_BOUNDARY_TREATMENT",
                         "SPECIFY_INFLOW_PROFILE = T, INFLOW_PROFILE_FILE = 'inflow.tpd', "
                         "INFLOW_PROFILE_TABLE = F"}};
    return {
        {"torvex.tin", {}, {}},
        {"h.map", {}, {}},
        {"z0.map", {}, {}},
        {"dh.map", named("NML_CASEFILE", "DETAILED_H_FILE = 'dh.map'"), {}},
        {"dz0.map", named("NML_CASEFILE", "DETAILED_Z0_FILE = 'dz0.map'"), {}},
        {"lines.txt", named("NML_CASEFILE", "XYCONF = 'lines.txt'"), {}},
        {"profile.txt", profile, {}},
        {"inflow.tpd", tpd, {}},
        {"alpha.txt",
         named("NML_ER", "USE_DIRECTIONAL_ALPHA = T, DIRECTIONAL_ALPHA_FILE_NAME = 'alpha.txt'"),
         {}},
        {"log-upwind_roughness-000_0", named("NML_RUN", "ATLAS_FLAG = 1"), {}},
        {stem + "ccd.tuf", {}, with_canopy, Need::must, true},
        {stem + "xyz.tuf", resumed, {}, Need::must, true},
        {stem + "z0.tuf", resumed, {}, Need::must, true},
        {stem + "vpkeout_00002.tuf", resumed, {}, Need::must, true},
        {"counts.txt", user_domain, domain_block},
        {"given-xyz.tuf", user_domain, domain_block, Need::must, true},
        {"given-z0.tuf", user_domain, domain_block, Need::must, true},
        {"given-ccd.tuf", user_domain, domain_block, Need::must, true},
        {"table.txt", user_domain, domain_block},
        {stem + "restart.info", resumed, {}, Need::may},
        {stem + "vpkeinp.tuf", resumed, {}, Need::may, true},
        {"view-convergence-000_0.dat", resumed, {}, Need::may},
        {"view-wind_direction.dat", resumed, {}, Need::may},
        {"log-meshnumber", named("NML_RUN", "DEBUG_MODE = 1"), {}, Need::may},
        {"#OutputIntermediateCount", {}, {}, Need::may},
    };
}

// A directory in which a small run has been, with every input of the list in it.
class InputFiles : public RunTest {
 protected:
    InputFiles() {
        const CaseItems diagnosis{{"NML_RUN", "DEBUG_MODE = 1"}};
        for (int n = 1; n <= 2; ++n) {  // the second run writes the mesh lines
            write_case_of({"", diagnosis, {}});
            const ProgramRun ran = run();
            EXPECT_EQ(ran.status, 0) << ran.err;
        }
        fs::rename("tmp", "lines.txt");
        fs::rename("sites-000_0-_INFLOW_PROFILE.tpd", "inflow.tpd");
        fs::copy_file("h.map", "dh.map");
        fs::copy_file("z0.map", "dz0.map");
        directory.write("profile.txt", "height u tke\n10 5 1\n50 8 1\n200 10 0.5\n");
        directory.write("alpha.txt", "3\n0 0.2\n180 0.3\n270 0.15\n");
        directory.write("#OutputIntermediateCount", "2\n");
        const Extents n = read_extents(stem + "xyzc.tuf", {1, 1, 1});
        const Field3 third(n.ni, n.nj, n.nk, 0.3F);
        write_canopy_file(stem + "ccd.tuf", {third, third, third, Field2(n.ni, n.nj, 0.3F)});
        directory.write("counts.txt", std::to_string(n.ni) + "\n" + std::to_string(n.nj) + "\n" +
                                          std::to_string(n.nk) + "\n");
        directory.write("table.txt", "height u sigma\n10 5 1\n50 8 1\n200 10 0.5\n");
        for (const char* name : {"xyz.tuf", "z0.tuf", "ccd.tuf"}) {
            fs::copy_file(stem + name, std::string("given-") + name);
        }
        good_ = files_below(directory.path());
    }

    void write_case_of(const Input& input) const {
        CaseItems items{{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                        {"NML_MONITOR", "MONITOR_STEP = 1"},
                        {"NML_NUMERICAL_SOLVER", "MAXIT = 2"}};
        items.insert(items.end(), input.items.begin(), input.items.end());
        write_case(items, input.behind);
    }

    // Everything as the first run left it, with the case of an input.
    void restore(const Input& input) const {
        for (const auto& entry : fs::directory_iterator(directory.path())) {
            fs::remove_all(entry.path());
        }
        for (const auto& [name, bytes] : good_) {
            directory.write(name, bytes);
        }
        if (input.file.ends_with("vpkeinp.tuf")) {
            fs::remove(stem + "restart.info");
        }
        write_case_of(input);
    }

    void expect_refused(const Input& input, const ProgramRun& ran) const {
        EXPECT_FALSE(ran.timed_out);
        EXPECT_EQ(ran.signal, 0);
        EXPECT_GT(ran.status, 0);
        EXPECT_THAT(ran.err, HasSubstr(input.file));
        const std::string result = stem + "vpkeout_00002.tuf";
        EXPECT_TRUE(input.file == result || directory.read(result) == good_.at(result))
            << "what was computed earlier is gone";
    }

    std::map<std::string, std::string> good_;
};

constexpr int seconds = 60;

TEST_F(InputFiles, AreReadAsTheyStand) {
    for (const Input& input : inputs()) {
        restore(input);
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << input.file << ": " << ran.err;
    }
}

// A pipe without a writer must not hold the run, a device without an end must not fill the memory.
TEST_F(InputFiles, ThatAreNoRegularFileAreRefused) {
    const std::map<std::string, std::function<void(const std::string&)>> others{
        {"missing", [](const std::string&) {}},
        {"directory", [](const std::string& name) { fs::create_directory(name); }},
        {"pipe", [](const std::string& name) { ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0); }},
        {"link to nowhere", [](const std::string& name) { fs::create_symlink("none", name); }},
        {"/dev/zero", [](const std::string& name) { fs::create_symlink("/dev/zero", name); }},
        {"/dev/full", [](const std::string& name) { fs::create_symlink("/dev/full", name); }}};
    for (const Input& input : inputs()) {
        for (const auto& [what, make] : others) {
            SCOPED_TRACE(what + " in place of " + input.file);
            restore(input);
            fs::remove(input.file);
            make(input.file);
            const ProgramRun ran = run_torvex_program({}, directory.path(), seconds);
            if (input.need == Need::must || ran.status != 0) {
                expect_refused(input, ran);
            }
        }
    }
}

TEST_F(InputFiles, ThatAreEmptyAreRefusedWhereTheyMustSaySomething) {
    for (const Input& input : inputs()) {
        SCOPED_TRACE(input.file);
        restore(input);
        directory.write(input.file, "");
        const ProgramRun ran = run();
        if (input.need == Need::must || input.file == "log-meshnumber") {
            expect_refused(input, ran);
        } else {
            EXPECT_EQ(ran.status, 0) << ran.err;
        }
    }
}

TEST_F(InputFiles, ThatMayNotBeReadAreRefused) {
    for (const Input& input : inputs()) {
        if (input.need == Need::may) {
            continue;
        }
        SCOPED_TRACE(input.file);
        restore(input);
        fs::permissions(directory.path(), fs::perms::all);
        for (const auto& entry : fs::directory_iterator(directory.path())) {
            fs::permissions(entry.path(), fs::perms::all);
        }
        fs::permissions(input.file, fs::perms::none);
        const OrdinaryUser user;
        if (!user.is_ordinary()) {
            GTEST_SKIP() << "the administrator reads everything";
        }
        const RunHere ran = run_here({}, [](torvex::Run&, Direction&) {});
        EXPECT_GT(ran.status, 0);
        EXPECT_THAT(ran.err, HasSubstr(input.file));
    }
}

TEST_F(InputFiles, MayHaveTheMarkAndTheLineEndsOfOtherEditors) {
    for (const Input& input : inputs()) {
        if (input.records || input.file.starts_with("view-")) {
            continue;
        }
        SCOPED_TRACE(input.file);
        restore(input);
        std::string text = directory.read(input.file);
        while (text.ends_with('\n')) {
            text.pop_back();
        }
        std::string changed = "\xEF\xBB\xBF";
        for (const char c : text) {
            changed += c == '\n' ? std::string("\r\n") : std::string(1, c);
        }
        directory.write(input.file, changed);
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
    }
}

// The readers one by one meet far more of this under the sanitizers, see fuzz_input_files.cpp.
TEST_F(InputFiles, ThatAreDamagedEndInAResultOrAMessage) {
    constexpr int rounds = 4;
    FileMutator mutator(20263);
    for (const Input& input : inputs()) {
        for (int round = 1; round <= rounds; ++round) {
            SCOPED_TRACE(input.file + ", round " + std::to_string(round));
            restore(input);
            const std::string good = directory.read(input.file);
            directory.write(input.file, input.records ? mutator.records(good) : mutator.text(good));
            const ProgramRun ran = run_torvex_program({}, directory.path(), seconds);
            EXPECT_FALSE(ran.timed_out);
            EXPECT_EQ(ran.signal, 0);
            EXPECT_TRUE(ran.status == 0 || !ran.err.starts_with("torvex: ")) << "no reason told";
            // In the preset that has them.
            EXPECT_THAT(ran.err, Not(AnyOf(HasSubstr("Sanitizer"), HasSubstr("runtime error"))));
            if (HasFailure()) {
                return;
            }
        }
    }
}

}  // namespace
}  // namespace torvex::test
