#include "base/run_log.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <ctime>
#include <filesystem>
#include <string>

#include "base/date_stamp.hpp"
#include "base/stop.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

constexpr const char* stamp_form = "[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}";

TEST(DateStamp, IsLocalTimeInNineteenCharacters) {
    const std::time_t before = std::time(nullptr);
    const std::string stamp = date_stamp();
    const std::time_t after = std::time(nullptr);
    EXPECT_EQ(stamp.size(), 19U);
    EXPECT_THAT(stamp, MatchesRegex(stamp_form));

    std::tm told{};
    ASSERT_NE(::strptime(stamp.c_str(), "%Y/%m/%d %H:%M:%S", &told), nullptr);
    told.tm_isdst = -1;
    const std::time_t time = std::mktime(&told);
    EXPECT_GE(time, before);
    EXPECT_LE(time, after);
}

TEST(RunLog, KeepsItsLinesUntilItIsOpened) {
    const test::TemporaryDirectory directory;
    RunLog log;
    EXPECT_FALSE(log.is_open());
    log.line("first");
    log.line("");
    EXPECT_EQ(log.kept(), "first\n\n");
    EXPECT_FALSE(directory.has("torvex.log"));
    log.open(directory.file("torvex.log"));
    EXPECT_TRUE(log.is_open());
    EXPECT_EQ(log.kept(), "");
    EXPECT_EQ(directory.read("torvex.log"), "first\n\n");
}

TEST(RunLog, EachLineReachesTheFileAtOnce) {
    const test::TemporaryDirectory directory;
    RunLog log;
    log.open(directory.file("torvex.log"));
    log.line("one");
    EXPECT_EQ(directory.read("torvex.log"), "one\n");
    log.line("two");
    EXPECT_EQ(directory.read("torvex.log"), "one\ntwo\n");
}

TEST(RunLog, IsAppendedToAndNeverTruncated) {
    const test::TemporaryDirectory directory;
    directory.write("torvex.log", "an older run\n");
    for (const char* text : {"second", "third"}) {
        RunLog log;
        log.line(text);
        log.open(directory.file("torvex.log"));
    }
    EXPECT_EQ(directory.read("torvex.log"), "an older run\nsecond\nthird\n");
}

TEST(RunLog, IsAppendedToBehindWhatOthersWrote) {
    const test::TemporaryDirectory directory;
    RunLog log;
    log.open(directory.file("torvex.log"));
    log.line("mine");
    RunLog other;
    other.open(directory.file("torvex.log"));
    other.line("theirs");
    log.line("mine again");
    EXPECT_EQ(directory.read("torvex.log"), "mine\ntheirs\nmine again\n");
}

TEST(RunLog, TimedLinesStandBehindTheDateStamp) {
    const test::TemporaryDirectory directory;
    RunLog log;
    log.open(directory.file("torvex.log"));
    log.timed(" - a step");
    EXPECT_THAT(directory.read("torvex.log"),
                MatchesRegex(std::string(stamp_form) + " - a step\n"));
}

TEST(RunLog, KeepsLinesAgainOnceClosed) {
    const test::TemporaryDirectory directory;
    RunLog log;
    log.open(directory.file("torvex.log"));
    log.close();
    log.line("late");
    EXPECT_FALSE(log.is_open());
    EXPECT_EQ(log.kept(), "late\n");
    EXPECT_EQ(directory.read("torvex.log"), "");
}

TEST(RunLog, StopsWhereItCannotBeOpened) {
    const test::TemporaryDirectory directory;
    RunLog log;
    log.line("kept");
    try {
        log.open(directory.path().string());
        FAIL();
    } catch (const Stop& s) {
        EXPECT_EQ(s.code(), 1);
        EXPECT_THAT(s.reason(), HasSubstr("the log cannot be opened"));
        EXPECT_EQ(s.where(), directory.path().string());
    }
    EXPECT_FALSE(log.is_open());
    EXPECT_EQ(log.kept(), "kept\n");
}

// Opening a pipe that nobody reads would wait for ever.
TEST(RunLog, StopsAtAPipeThatNobodyReads) {
    const test::TemporaryDirectory directory;
    ASSERT_EQ(::mkfifo(directory.file("torvex.log").c_str(), 0600), 0);
    RunLog log;
    EXPECT_THROW(log.open(directory.file("torvex.log")), Stop);
    EXPECT_FALSE(log.is_open());
}

TEST(RunLog, StopsWhereTheDiskIsFull) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP();
    }
    RunLog log;
    log.open("/dev/full");
    EXPECT_THROW(log.line("lost"), Stop);
}

// Standard error of what `tell` does.
template <class Tell>
std::string error_of(Tell tell) {
    ::testing::internal::CaptureStderr();
    tell();
    return ::testing::internal::GetCapturedStderr();
}

TEST(RunLog, WarnsOnStandardErrorAndInTheLog) {
    const test::TemporaryDirectory directory;
    RunLog log;
    log.open(directory.file("torvex.log"));
    EXPECT_EQ(error_of([&log] { log.warn("the map is odd."); }), "Warning: the map is odd.\n");
    EXPECT_THAT(directory.read("torvex.log"),
                MatchesRegex(std::string(stamp_form) + " Warning: the map is odd.\n"));
}

TEST(RunLog, TellsTheSameWarningOnce) {
    const test::TemporaryDirectory directory;
    RunLog log;
    log.open(directory.file("torvex.log"));
    log.warn("odd", "an odd map");
    const std::string first = directory.read("torvex.log");
    EXPECT_EQ(error_of([&log] { log.warn("odd", "an odd map"); }), "");
    EXPECT_EQ(directory.read("torvex.log"), first);
    ASSERT_EQ(log.warnings().size(), 1U);
    EXPECT_EQ(error_of([&log] { log.warn("even"); }), "Warning: even\n");
    ASSERT_EQ(log.warnings().size(), 2U);
    EXPECT_EQ(log.warnings()[1].text, "Warning: even");
    EXPECT_EQ(log.warnings()[1].reminder, "");
}

// Lines of the log that other programs look for keep their bytes and come as often as ever.
TEST(RunLog, LeavesTheLineOfAWarningAsItIs) {
    const test::TemporaryDirectory directory;
    RunLog log;
    log.open(directory.file("torvex.log"));
    const std::string told = error_of([&log] {
        log.warn_line(" WD 270.0: (Warning) no mast");
        log.warn_line(" WD 270.0: (Warning) no mast");
    });
    EXPECT_EQ(told, "WD 270.0: (Warning) no mast\n");
    const std::string line = std::string(stamp_form) + " WD 270.0: \\(Warning\\) no mast\n";
    EXPECT_THAT(directory.read("torvex.log"), MatchesRegex(line + line));
    EXPECT_EQ(log.warnings().size(), 1U);
}

TEST(RunLog, KeepsItsWarningsUntilItIsOpened) {
    RunLog log;
    EXPECT_EQ(error_of([&log] { log.warn("early"); }), "Warning: early\n");
    EXPECT_THAT(log.kept(), MatchesRegex(std::string(stamp_form) + " Warning: early\n"));
}

TEST(RunLog, NamesEachReminderOnce) {
    RunLog log;
    EXPECT_EQ(log.reminders(), "");
    error_of([&log] {
        log.warn("first", "holes in a.map");
        log.warn("second");
        log.warn("third", "coarse b.map");
        log.warn_line(" fourth", "holes in a.map");
    });
    EXPECT_EQ(log.reminders(), "holes in a.map; coarse b.map");
}

TEST(RunLog, WarnsOnStandardErrorWhereTheDiskIsFull) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP();
    }
    RunLog log;
    log.open("/dev/full");
    EXPECT_EQ(error_of([&log] { EXPECT_THROW(log.warn("lost"), Stop); }), "Warning: lost\n");
}

TEST(Console, PrintsErrorsOnTheirOwnLines) {
    EXPECT_EQ(error_of([] { console_error("a fault"); }), "a fault\n");
}

TEST(Console, PrintsOneLine) {
    ::testing::internal::CaptureStdout();
    console("- a step");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "- a step\n");
}

}  // namespace
}  // namespace torvex
