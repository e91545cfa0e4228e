// A disk that is full from some file on: the run says which, and loses nothing that was there.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/statvfs.h>

#include <fstream>
#include <vector>

#include "run/run_fixture.hpp"
#include "run/saved_files.hpp"
#include "support/failures.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
namespace fs = std::filesystem;

const std::string stem = "restart-000_0-";

CaseItems case_of(int restart_flag, int MAXIT) {
    return {{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
            {"NML_RUN", "RESTART_FLAG = " + std::to_string(restart_flag)},
            {"NML_MONITOR", "MONITOR_STEP = 1"},
            {"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(MAXIT)}};
}

// A place of its own in memory that holds so many bytes; nothing where mounting is not allowed.
class SmallDisk {
 public:
    explicit SmallDisk(std::size_t bytes)
        : mounted_(::mount("torvex-test", path().c_str(), "tmpfs", 0, options(bytes).c_str()) ==
                   0) {}
    ~SmallDisk() {
        if (mounted_) {
            ::umount2(path().c_str(), MNT_DETACH);
        }
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool mounted() const { return mounted_; }
    void enlarge(std::size_t bytes) const {
        EXPECT_EQ(
            ::mount("torvex-test", path().c_str(), "tmpfs", MS_REMOUNT, options(bytes).c_str()), 0);
    }
    std::size_t used() const {
        struct statvfs status {};
        ::statvfs(path().c_str(), &status);
        return (status.f_blocks - status.f_bfree) * status.f_frsize;
    }
    fs::path path() const { return directory_.path(); }

 private:
    static std::string options(std::size_t bytes) { return "size=" + std::to_string(bytes); }

    TemporaryDirectory directory_;
    bool mounted_;
};

void write_inputs(const fs::path& directory, const CaseItems& items) {
    const auto write = [&directory](const char* name, const std::string& text) {
        std::ofstream(directory / name, std::ios::binary) << text;
    };
    write("h.map", level_map("10"));
    write("z0.map", level_map("0.03"));
    write("torvex.tin", quick_case_text(items));
}

using FullDisk = RunTest;

// Each limit is met first by the file that is one byte larger.
TEST_F(FullDisk, NamesTheFileThatFindsNoRoomAndLeavesNoPieceOfIt) {
    write_case(case_of(0, 1));
    ASSERT_EQ(run().status, 0);
    for (const std::string name : {"xyz.tuf", "xyzc.tuf", "vpkeinp.tuf", "vpkeout_00001.tuf"}) {
        const auto bytes = fs::file_size(stem + name);
        for (const auto& [file, text] : files_below(directory.path())) {
            if (file.ends_with(".tuf") || file.ends_with(".info")) {
                fs::remove(file);
            }
        }
        {
            const FileSizeLimit limit(bytes - 1);
            const ProgramRun ran = run();
            EXPECT_EQ(ran.status, 1) << name;
            EXPECT_EQ(ran.signal, 0);
            std::string told = "the file cannot be written: File too large\n  in ";
            told.append(stem).append(name).append("\n  make room on the disk");
            EXPECT_THAT(ran.err, StartsWith(told));
        }
        EXPECT_FALSE(directory.has(stem + name));
        EXPECT_FALSE(has_temporary_file(directory.path())) << name;
        EXPECT_EQ(complaint_about_saved_files(directory.path()), "");
        ASSERT_EQ(run().status, 0);
    }
}

TEST_F(FullDisk, ResumeThatFindsNoRoomLeavesTheResultsBeforeItToBeResumedLater) {
    write_case(case_of(0, 1));
    ASSERT_EQ(run().status, 0);
    const auto result = directory.read(stem + "vpkeout_00001.tuf");
    const auto info = directory.read(stem + "restart.info");
    write_case(case_of(1, 1));
    {
        const FileSizeLimit limit(result.size() - 1);
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 1);
        EXPECT_THAT(ran.err, HasSubstr("in " + stem + "vpkeout_00002.tuf"));
    }
    EXPECT_EQ(directory.read(stem + "vpkeout_00001.tuf"), result);
    EXPECT_EQ(directory.read(stem + "restart.info"), info);
    EXPECT_FALSE(directory.has(stem + "vpkeout_00002.tuf"));
    EXPECT_EQ(run().status, 0);
    EXPECT_TRUE(directory.has(stem + "vpkeout_00002.tuf"));
    EXPECT_EQ(complaint_about_saved_files(directory.path()), "");
}

// The first pages are those of logs and tables, the last ones those of the result and the profiles.
std::vector<std::size_t> sizes_below(std::size_t needed) {
    constexpr std::size_t page = 4096;
    constexpr std::size_t inputs = 3;
    std::vector<std::size_t> sizes;
    for (std::size_t n = 1; n <= 14; ++n) {
        sizes.push_back((inputs + n) * page);
        sizes.push_back(needed - n * page);
        sizes.push_back(needed * n / 15 / page * page);
    }
    return sizes;
}

TEST(SmallDiskRun, EveryFileMayBeTheOneThatFindsNoRoom) {
    constexpr std::size_t plenty = 64U << 20U;
    std::size_t needed = 0;
    {
        const SmallDisk disk(plenty);
        if (!disk.mounted()) {
            GTEST_SKIP() << "mounting a small disk is not allowed here";
        }
        write_inputs(disk.path(), case_of(0, 2));
        ASSERT_EQ(run_torvex_program({}, disk.path()).status, 0);
        needed = disk.used();
    }
    std::string told;
    for (const std::size_t bytes : sizes_below(needed)) {
        const SmallDisk disk(bytes);
        ASSERT_TRUE(disk.mounted());
        SCOPED_TRACE(std::to_string(bytes) + " bytes of " + std::to_string(needed));
        write_inputs(disk.path(), case_of(0, 2));
        const ProgramRun ran = run_torvex_program({}, disk.path());
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.signal, 0);
        EXPECT_THAT(ran.err, HasSubstr("No space left on device"));
        EXPECT_THAT(ran.err, HasSubstr("\n  in "));
        told += ran.err;
        EXPECT_FALSE(has_temporary_file(disk.path()));
        EXPECT_EQ(complaint_about_saved_files(disk.path()), "");

        disk.enlarge(plenty);
        write_inputs(disk.path(), case_of(1, 1));
        const ProgramRun again = run_torvex_program({}, disk.path());
        EXPECT_EQ(again.status, 0) << again.err;
        EXPECT_EQ(complaint_about_saved_files(disk.path()), "");
    }
    for (const char* name :
         {"sites-000_0-_INFLOW_PROFILE.tpd", "vpkeout_00002.tuf", "vpkeinp.tuf", "torvex.log"}) {
        EXPECT_NE(told.find(name), std::string::npos) << name << " was never the one";
    }
}

}  // namespace
}  // namespace torvex::test
