#include "base/whole_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>

#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::FileSizeLimit;
using test::OrdinaryUser;
using test::stop_of;
using test::TemporaryDirectory;
using testing::HasSubstr;

std::span<const std::byte> bytes(const std::string& text) {
    return std::as_bytes(std::span(text));
}

TEST(WholeFile, HoldsWhatWasWritten) {
    const TemporaryDirectory dir;
    write_text_file_whole(dir.file("a"), "one\ntwo\n");
    EXPECT_EQ(dir.read("a"), "one\ntwo\n");
    EXPECT_FALSE(dir.has("a.tmp"));
}

TEST(WholeFile, MayBeEmpty) {
    const TemporaryDirectory dir;
    write_text_file_whole(dir.file("a"), "");
    EXPECT_EQ(dir.read("a"), "");
}

TEST(WholeFile, KeepsTheOrderOfSmallAndLargePieces) {
    const TemporaryDirectory dir;
    const std::string large(200000, 'x');
    std::string expected;
    WholeFile file(dir.file("a"));
    for (int n = 0; n < 5; ++n) {
        for (const std::string& piece : {std::string("small"), large, std::string(65536, 'y')}) {
            file.write(bytes(piece));
            expected += piece;
        }
    }
    file.commit();
    EXPECT_EQ(dir.read("a"), expected);
}

TEST(WholeFile, IsNotSeenBeforeCommit) {
    const TemporaryDirectory dir;
    WholeFile file(dir.file("a"));
    file.write(bytes(std::string(100000, 'x')));
    EXPECT_FALSE(dir.has("a"));
    file.commit();
    EXPECT_TRUE(dir.has("a"));
}

TEST(WholeFile, LeavesTheEarlierFileWithoutCommit) {
    const TemporaryDirectory dir;
    dir.write("a", "earlier");
    {
        WholeFile file(dir.file("a"));
        file.write(bytes(std::string(100000, 'x')));
    }
    EXPECT_EQ(dir.read("a"), "earlier");
    EXPECT_FALSE(dir.has("a.tmp"));
}

TEST(WholeFile, ReplacesALongerFile) {
    const TemporaryDirectory dir;
    dir.write("a", "a long earlier text");
    write_text_file_whole(dir.file("a"), "short");
    EXPECT_EQ(dir.read("a"), "short");
}

TEST(WholeFile, TakesNoHarmFromWhatAnInterruptedRunLeft) {
    const TemporaryDirectory dir;
    dir.write("precious", "keep me");
    std::filesystem::create_symlink(dir.file("precious"), dir.file("a.tmp"));
    write_text_file_whole(dir.file("a"), "new");
    EXPECT_EQ(dir.read("a"), "new");
    EXPECT_EQ(dir.read("precious"), "keep me");
}

TEST(WholeFile, HasThePermissionsOfAnyNewFile) {
    const TemporaryDirectory dir;
    const mode_t before = umask(022);
    write_text_file_whole(dir.file("a"), "text");
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat(dir.file("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0644U);
}

TEST(WholeFile, FullDiskStopsAndKeepsTheEarlierFile) {
    const TemporaryDirectory dir;
    dir.write("a", "earlier");
    // Below and above the size at which small pieces are gathered, so that the failure comes once
    // at commit and once in the middle.
    for (const std::size_t size : {std::size_t{2000}, std::size_t{300000}}) {
        const FileSizeLimit limit(1000);
        const std::optional<Stop> s =
            stop_of([&] { write_text_file_whole(dir.file("a"), std::string(size, 'x')); });
        ASSERT_TRUE(s);
        EXPECT_EQ(s->code(), 1);
        EXPECT_THAT(s->reason(), HasSubstr("File too large"));
        EXPECT_EQ(s->where(), dir.file("a"));
        EXPECT_EQ(dir.read("a"), "earlier");
        EXPECT_FALSE(dir.has("a.tmp"));
    }
}

TEST(WholeFile, MissingDirectoryStops) {
    const TemporaryDirectory dir;
    const std::optional<Stop> s = stop_of([&] { WholeFile(dir.file("none/a")); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 1);
    EXPECT_THAT(s->reason(), HasSubstr("No such file or directory"));
    EXPECT_THAT(s->where(), HasSubstr("none/a"));
}

TEST(WholeFile, ReadOnlyDirectoryStopsAndKeepsTheEarlierFile) {
    const TemporaryDirectory dir;
    namespace fs = std::filesystem;
    dir.write("sub/a", "earlier");
    fs::permissions(dir.path(), fs::perms(0755));
    fs::permissions(dir.path() / "sub", fs::perms(0555));
    {
        const OrdinaryUser user;
        if (!user.is_ordinary()) {
            GTEST_SKIP() << "the administrator may write everywhere";
        }
        const std::optional<Stop> s =
            stop_of([&] { write_text_file_whole(dir.file("sub/a"), "new"); });
        ASSERT_TRUE(s);
        EXPECT_EQ(s->code(), 1);
        EXPECT_THAT(s->reason(), HasSubstr("Permission denied"));
    }
    EXPECT_EQ(dir.read("sub/a"), "earlier");
    fs::permissions(dir.path() / "sub", fs::perms(0755));
}

TEST(WholeFile, DirectoryInPlaceOfTheTemporaryFileIsNamed) {
    const TemporaryDirectory dir;
    dir.write("a", "earlier");
    std::filesystem::create_directory(dir.path() / "a.tmp");
    const std::optional<Stop> s = stop_of([&] { write_text_file_whole(dir.file("a"), "text"); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 1);
    EXPECT_EQ(s->where(), dir.file("a.tmp"));
    EXPECT_EQ(dir.read("a"), "earlier");
}

TEST(WholeFile, DirectoryOfThatNameStopsAndIsKept) {
    const TemporaryDirectory dir;
    std::filesystem::create_directory(dir.path() / "a");
    const std::optional<Stop> s = stop_of([&] { write_text_file_whole(dir.file("a"), "text"); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 1);
    EXPECT_THAT(s->reason(), HasSubstr("Is a directory"));
    EXPECT_TRUE(std::filesystem::is_directory(dir.path() / "a"));
    EXPECT_FALSE(dir.has("a.tmp"));
}

}  // namespace
}  // namespace torvex
