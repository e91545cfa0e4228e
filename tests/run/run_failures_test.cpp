// Runs that cannot go on for reasons outside the case: another run, rights, room on the disk.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <iostream>

#include "run/run_fixture.hpp"
#include "support/failures.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
namespace fs = std::filesystem;

constexpr const char* table = "view-wind_direction.dat";
const CaseItems one_direction{{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}};

// Holds a file as a run at work does.
class HeldLock {
 public:
    explicit HeldLock(const std::string& path) : descriptor_(::open(path.c_str(), O_RDWR)) {
        EXPECT_EQ(flock(descriptor_, LOCK_EX | LOCK_NB), 0);
    }
    ~HeldLock() { ::close(descriptor_); }
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;

 private:
    int descriptor_;
};

using RunFailures = RunTest;

TEST_F(RunFailures, SecondRunInADirectoryChangesNotAByte) {
    for (const char* flag : {"0", "1"}) {
        write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 2"},
                    {"NML_RUN", "RESTART_FLAG = " + std::string(flag)}});
        ASSERT_EQ(run().status, 0);
        directory.write("#stop_message", "");
        const auto before = files_below(directory.path());
        const HeldLock lock(table);
        const ProgramRun second = run();
        EXPECT_EQ(second.status, 1);
        EXPECT_THAT(second.err, StartsWith("another run is using this directory\n  in "));
        EXPECT_THAT(second.err, HasSubstr(table));
        EXPECT_EQ(files_below(directory.path()), before);
        fs::remove("#stop_message");
    }
}

TEST_F(RunFailures, BadCaseInADirectoryThatIsTakenLeavesNoTrace) {
    for (const char* held : {"view-wind_direction.dat", "flat2-view-wind_direction.dat"}) {
        write_case(one_direction);
        ASSERT_EQ(run().status, 0);
        directory.write(held, directory.read(table));
        for (const CaseItems& items :
             {CaseItems{{"NML_ER", "BOGUS = 1"}}, CaseItems{{"NML_MONITOR", "MONITOR_STEP = 0"}}}) {
            write_case(items);
            const auto before = files_below(directory.path());
            {
                const HeldLock lock(held);
                EXPECT_EQ(run().status, 1);
                EXPECT_EQ(files_below(directory.path()), before) << held;
            }
            EXPECT_EQ(run().status, 1);
            EXPECT_NE(files_below(directory.path()), before) << "alone it tells its log";
        }
    }
}

TEST_F(RunFailures, RunsOfDifferentPrefixShareADirectory) {
    write_case(one_direction);
    ASSERT_EQ(run().status, 0);
    const HeldLock lock(table);
    write_case({{"NML_RUN", "TERRAIN_MODE = 'flat'"}});
    EXPECT_EQ(run().status, 0);
}

TEST_F(RunFailures, MonitorFileHeldByAnotherRunIsTold) {
    write_case(one_direction);
    ASSERT_EQ(run().status, 0);
    const HeldLock lock("view-monitor.dat");
    const ProgramRun second = run();
    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.err, HasSubstr("view-monitor.dat"));
}

TEST_F(RunFailures, DirectoryThatMayNotBeWrittenIsTold) {
    write_case(one_direction);
    constexpr fs::perms closed{0555};
    fs::permissions(".", closed);
    const auto before = files_below(directory.path());
    {
        const OrdinaryUser user;
        if (!user.is_ordinary()) {
            fs::permissions(".", fs::perms::owner_all);
            GTEST_SKIP() << "the administrator writes everywhere";
        }
        const RunHere ran = run_here({}, [](torvex::Run&, Direction&) {});
        EXPECT_EQ(ran.status, 1);
        EXPECT_THAT(ran.err, HasSubstr("Permission denied"));
        EXPECT_THAT(ran.err, HasSubstr(table));
    }
    fs::permissions(".", fs::perms::owner_all);
    EXPECT_EQ(files_below(directory.path()), before);
}

TEST_F(RunFailures, LogThatMayNotBeWrittenIsTold) {
    write_case(one_direction);
    fs::create_directory("torvex.log");
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, HasSubstr("the log cannot be opened"));
    EXPECT_THAT(ran.err, HasSubstr("in torvex.log"));
}

TEST_F(RunFailures, BadCaseFileIsToldEvenWhereTheLogMayNotBeWritten) {
    write_case({{"NML_ER", "BOGUS = 1"}});
    fs::create_directory("torvex.log");
    const ProgramRun ran = run();
    EXPECT_EQ(ran.signal, 0);
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, HasSubstr("unknown key \"BOGUS\""));

    write_case({{"NML_BOUNDARY_TREATMENT", "CONSTANT_DZ_HEIGHT = 20"}});
    EXPECT_EQ(run().status, 162);
}

TEST_F(RunFailures, ProfileThatCannotBeWrittenEndsTheRun) {
    write_case(one_direction);
    fs::create_directory("sites-000_0-_INFLOW_PROFILE.tpd");
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.signal, 0);
    EXPECT_THAT(ran.err, HasSubstr("the file cannot be put in its place: Is a directory\n"
                                   "  in sites-000_0-_INFLOW_PROFILE.tpd\n"));
}

TEST_F(RunFailures, LabelListThatCannotBeWrittenIsNoFailure) {
    write_case(one_direction);
    fs::create_directory("_latlon_label_list.txt");
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_TRUE(directory.has("sites-000_0-_INFLOW_PROFILE.tpd"));
    EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: (Warning) _latlon_label_list.txt: "));
    EXPECT_THAT(log(), HasSubstr("<date> Computation Finished. \n"));
}

TEST_F(RunFailures, FullDiskStopsAtTheLog) {
    write_case(one_direction);
    directory.write("torvex.log", std::string(100, '-'));
    ProgramRun ran;
    {
        const FileSizeLimit limit(120);  // the slot of the table of directions fits
        ran = run();
    }
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.signal, 0);
    EXPECT_THAT(ran.err, HasSubstr("the log cannot be written: File too large"));
}

// Logs and tables are not written through links, which may lead to the maps of the case.
TEST_F(RunFailures, LinksUnderTheNamesOfLogsAndTablesAreRefused) {
    for (const std::string name : {"torvex.log", "view-wind_direction.dat", "view-convergence.dat",
                                   "view-monitor-000_0.dat", "restart-000_0-torvex.conv.log"}) {
        write_case(one_direction);
        directory.write("precious.txt", "not to be lost\n");
        fs::remove(name);
        fs::create_symlink("precious.txt", name);
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 1) << name;
        EXPECT_THAT(ran.err, HasSubstr("it is a link\n  in " + name)) << ran.err;
        EXPECT_EQ(directory.read("precious.txt"), "not to be lost\n") << name;
        fs::remove(name);
    }
}

// Inputs of the run under the names of its outputs are refused before anything is written.
TEST_F(RunFailures, InputsThatTheRunWouldOverwriteAreRefused) {
    for (const std::string name : {"torvex.log", "view-wind_direction.dat", "log-meshnumber",
                                   "restart-000_0-xyz.tuf", "sites-000_0-_INFLOW_PROFILE.tpd"}) {
        CaseItems items = one_direction;
        items.emplace_back("NML_CASEFILE", "BASIC_H_FILE = '" + name + "'");
        write_case(items);
        fs::rename("h.map", name);
        const auto before = files_below(directory.path());
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 1) << name;
        EXPECT_THAT(
            ran.err,
            HasSubstr("BASIC_H_FILE names a file that the run itself writes: " + name + "\n  in "));
        EXPECT_EQ(directory.read(name), before.at(name)) << name;
        if (name == "torvex.log") {
            EXPECT_EQ(files_below(directory.path()), before);
        } else {
            EXPECT_THAT(log(), HasSubstr("BASIC_H_FILE names a file that the run itself writes"));
        }
        fs::rename(name, "h.map");
        fs::remove("torvex.log");
    }
}

TEST_F(RunFailures, FullDiskNeverKillsTheProgram) {
    // Each limit lets the run come a little further before its first write fails.
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 3"}});
    for (const rlim_t bytes : {0UL, 100UL, 130UL, 400UL, 1000UL, 1500UL, 2000UL, 4000UL}) {
        for (const auto& [name, old] : files_below(directory.path())) {
            if (name != "torvex.tin" && !name.ends_with(".map")) {
                fs::remove(name);
            }
        }
        ProgramRun ran;
        {
            const FileSizeLimit limit(bytes);
            ran = run();
        }
        EXPECT_EQ(ran.signal, 0) << bytes;
        EXPECT_EQ(ran.status, 1) << bytes;
    }
}

TEST_F(RunFailures, FileThatCannotBeReplacedIsTold) {
    for (const char* name : {"view-wind_direction.dat", "log-meshnumber",
                             "view-convergence-000_0.dat", "view-monitor.dat"}) {
        write_case(one_direction);
        fs::create_directory(name);
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 1) << name;
        EXPECT_EQ(ran.signal, 0);
        EXPECT_THAT(ran.err, HasSubstr(name));
        fs::remove(name);
    }
}

}  // namespace
}  // namespace torvex::test
