// Limits of control groups as the kernel's files tell them, and what there is too little of.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "prep/case_check.hpp"
#include "prep/machine_limits.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A file system with the files of control groups.
class GroupLimit : public testing::Test {
 protected:
    void file(const std::string& path, const std::string& text) {
        std::filesystem::create_directories((root.path() / path).parent_path());
        root.write(path, text);
    }
    void groups(const std::string& text) { file("proc/self/cgroup", text); }
    void mounts(const std::string& text) { file("proc/self/mountinfo", text); }
    std::optional<std::int64_t> limit() const { return group_memory_limit(root.path().string()); }

    const std::string second = "30 23 0:26 / /sys/fs/cgroup rw,nosuid - cgroup2 cgroup2 rw\n";
    const std::string first =
        "30 23 0:26 / /sys/fs/cgroup/cpu rw - cgroup cgroup rw,cpu,cpuacct\n"
        "31 23 0:27 / /sys/fs/cgroup/memory rw shared:9 - cgroup cgroup rw,memory\n";
    test::TemporaryDirectory root;
};

TEST_F(GroupLimit, SecondVersion) {
    groups("0::/user/job\n");
    mounts(second);
    file("sys/fs/cgroup/user/job/memory.max", "2147483648\n");
    EXPECT_EQ(limit(), 2147483648);
}

TEST_F(GroupLimit, TheLeastOfTheGroupsAbove) {
    groups("0::/user/job\n");
    mounts(second);
    file("sys/fs/cgroup/user/job/memory.max", "max\n");
    file("sys/fs/cgroup/user/memory.max", "3000000000\n");
    file("sys/fs/cgroup/memory.max", "5000000000\n");
    EXPECT_EQ(limit(), 3000000000);
    file("sys/fs/cgroup/user/job/memory.max", "4000000000\n");
    EXPECT_EQ(limit(), 3000000000);
}

TEST_F(GroupLimit, NoneIsNone) {
    EXPECT_EQ(limit(), std::nullopt);  // no such files
    groups("0::/\n");
    mounts(second);
    EXPECT_EQ(limit(), std::nullopt);
    file("sys/fs/cgroup/memory.max", "max\n");
    EXPECT_EQ(limit(), std::nullopt);
    file("sys/fs/cgroup/memory.max", "");
    EXPECT_EQ(limit(), std::nullopt);
}

// Version 1 writes the largest number of pages where there is no limit.
TEST_F(GroupLimit, FirstVersion) {
    groups("5:cpu,cpuacct:/a\n4:memory:/slurm/job_7\n1:name=systemd:/\n");
    mounts(first);
    file("sys/fs/cgroup/memory/memory.limit_in_bytes", "9223372036854771712\n");
    EXPECT_EQ(limit(), std::nullopt);
    file("sys/fs/cgroup/memory/slurm/job_7/memory.limit_in_bytes", "1000000000\n");
    EXPECT_EQ(limit(), 1000000000);
}

// In a container the mount point is the group itself.
TEST_F(GroupLimit, MountedBelowItsRoot) {
    groups("4:memory:/docker/abc/inner\n");
    mounts("31 23 0:27 /docker/abc /sys/fs/cgroup/memory ro - cgroup cgroup rw,memory\n");
    file("sys/fs/cgroup/memory/memory.limit_in_bytes", "500000000\n");
    EXPECT_EQ(limit(), 500000000);
    file("sys/fs/cgroup/memory/inner/memory.limit_in_bytes", "400000000\n");
    EXPECT_EQ(limit(), 400000000);
}

TEST_F(GroupLimit, OddLinesArePassedOver) {
    groups("no colon\n0::\n::\n");
    mounts("short - cgroup2\n\n - \n30 23 0:26 / /sys/fs/cgroup rw\n" + second);
    file("sys/fs/cgroup/memory.max", "700000000\n");
    EXPECT_EQ(limit(), 700000000);
}

TEST(ResourceWarnings, NoneWhereAllFits) {
    EXPECT_THAT(resource_warnings({.memory = 100,
                                   .memory_measured = false,
                                   .memory_limit = 100,
                                   .group_limit = 100,
                                   .disk = 10,
                                   .disk_free = 20},
                                  2),
                IsEmpty());
    EXPECT_THAT(resource_warnings({.memory = 100,
                                   .memory_measured = false,
                                   .memory_limit = 100,
                                   .group_limit = {},
                                   .disk = 10,
                                   .disk_free = {}},
                                  200),
                IsEmpty());
}

TEST(ResourceWarnings, EachOfTheThree) {
    const ResourceCheck little{.memory = 5'000'000,
                               .memory_measured = false,
                               .memory_limit = 4'000'000,
                               .group_limit = 3'000'000,
                               .disk = 2'000'000,
                               .disk_free = 7'000'000};
    EXPECT_THAT(resource_warnings(little, 4),
                ElementsAre(AllOf(HasSubstr("5 MB"), HasSubstr("this machine has 4 MB")),
                            AllOf(HasSubstr("5 MB"), HasSubstr("control group"), HasSubstr("3 MB")),
                            AllOf(HasSubstr("8 MB"), HasSubstr("room for 7 MB"))));
    EXPECT_EQ(resource_warnings(little, 3).size(), 2U);
}

TEST(Machine, HasSomeOfEverything) {
    EXPECT_GT(peak_memory(), 1'000'000);
    ASSERT_TRUE(free_disk().has_value());
    EXPECT_GE(*free_disk(), 0);
}

}  // namespace
}  // namespace torvex
