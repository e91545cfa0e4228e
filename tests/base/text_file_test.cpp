#include "base/text_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>

#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_literals;

TEST(ReadTextFile, GivesTheBytesAsTheyStand) {
    const test::TemporaryDirectory directory;
    const std::string text = "a\r\nb\0c\x80\xff\n\n d"s;
    directory.write("some.txt", text);
    EXPECT_EQ(read_text_file(directory.file("some.txt")), text);
}

TEST(ReadTextFile, AnEmptyFileIsAnEmptyText) {
    const test::TemporaryDirectory directory;
    directory.write("empty.txt", "");
    const auto text = read_text_file(directory.file("empty.txt"));
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(*text, "");
}

TEST(ReadTextFile, FollowsLinks) {
    const test::TemporaryDirectory directory;
    directory.write("some.txt", "a");
    std::filesystem::create_symlink("some.txt", directory.file("link.txt"));
    EXPECT_EQ(read_text_file(directory.file("link.txt")), "a");
}

TEST(ReadTextFile, AbsentFilesAndDirectoriesGiveNothing) {
    const test::TemporaryDirectory directory;
    EXPECT_FALSE(read_text_file(directory.file("absent.txt")).has_value());
    EXPECT_FALSE(read_text_file(directory.path().string()).has_value());
    EXPECT_FALSE(read_text_file("").has_value());
    std::filesystem::create_symlink("nowhere", directory.file("dangling.txt"));
    EXPECT_FALSE(read_text_file(directory.file("dangling.txt")).has_value());
}

// Opening a pipe without a writer would wait for ever.
TEST(ReadTextFile, APipeIsNoTextFile) {
    const test::TemporaryDirectory directory;
    ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(read_text_file(directory.file("pipe")).has_value());
}

TEST(ReadTextFile, AFileWithoutReadPermissionGivesNothing) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may read everything";
    }
    const test::TemporaryDirectory directory;
    directory.write("closed.txt", "a");
    std::filesystem::permissions(directory.file("closed.txt"), std::filesystem::perms::none);
    EXPECT_FALSE(read_text_file(directory.file("closed.txt")).has_value());
}

TEST(ReadTextFile, LeavesOutTheMarkThatSomeEditorsPutInFront) {
    const test::TemporaryDirectory directory;
    for (const auto& [bytes, text] : {std::pair{"\xEF\xBB\xBF&A", "&A"},
                                      {"\xEF\xBB\xBF", ""},
                                      {"\xEF\xBB", "\xEF\xBB"},
                                      {"a\xEF\xBB\xBF", "a\xEF\xBB\xBF"},
                                      {"\xEF\xBB\xBF\xEF\xBB\xBF", "\xEF\xBB\xBF"}}) {
        directory.write("some.txt", bytes);
        EXPECT_EQ(read_text_file(directory.file("some.txt")), text);
    }
}

// Hundreds of gigabytes of nothing take no room on the disk, but would take all memory.
TEST(ReadTextFile, AFileLargerThanAnyTextGivesNothing) {
    const test::TemporaryDirectory directory;
    directory.write("hole.txt", "");
    std::filesystem::resize_file(directory.file("hole.txt"), largest_text_bytes + 1);
    EXPECT_FALSE(read_text_file(directory.file("hole.txt")).has_value());
}

TEST(SplitLines, TakesBothLineEndsAndNone) {
    EXPECT_THAT(split_lines("a\nb\r\n\n\r\nc"), ElementsAre("a", "b", "", "", "c"));
    EXPECT_THAT(split_lines("a\n"), ElementsAre("a"));
    EXPECT_THAT(split_lines("a\r"), ElementsAre("a"));
    EXPECT_THAT(split_lines("\n"), ElementsAre(""));
    EXPECT_THAT(split_lines(""), IsEmpty());
}

TEST(SplitLines, OnlyTheCarriageReturnOfTheLineEndGoes) {
    EXPECT_THAT(split_lines("a\rb\r\r\n"), ElementsAre("a\rb\r"));
}

TEST(Trimmed, TakesBlanksAndTabsOff) {
    EXPECT_EQ(trimmed(" \t a b\t "), "a b");
    EXPECT_EQ(trimmed("ab"), "ab");
    EXPECT_EQ(trimmed(" \t "), "");
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(left_adjusted(" \t a b\t "), "a b\t ");
    EXPECT_EQ(left_adjusted("  "), "");
}

TEST(Place, NamesFileAndLine) {
    EXPECT_EQ(place("maps/hill.map", 12), "maps/hill.map, line 12");
}

TEST(TextFile, ExcerptsAreQuotedCutAndFreeOfControlCharacters) {
    EXPECT_EQ(excerpt("abc"), "\"abc\"");
    EXPECT_EQ(excerpt(std::string_view("a\0\x1b", 3)), "\"a??\"");
    EXPECT_EQ(excerpt(std::string(60, 'x')), "\"" + std::string(60, 'x') + "\"");
    EXPECT_EQ(excerpt(std::string(61, 'x')), "\"" + std::string(60, 'x') + "...\"");
}

}  // namespace
}  // namespace torvex
