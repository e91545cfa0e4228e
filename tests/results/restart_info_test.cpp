#include "results/restart_info.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "base/text_file.hpp"
#include "support/failures.hpp"
#include "support/memory_file.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::MemoryFile;
using test::TemporaryDirectory;

const RestartInfo sample{.outer_count = 480,
                         .resid_m = 1.234567e-5F,
                         .resid_u = 0.25F,
                         .resid_v = 3.0e-4F,
                         .resid_w = 1.0e25F};

std::optional<RestartInfo> read_text(const std::string& text) {
    const MemoryFile file;
    file.set(text);
    return read_restart_info(file.path());
}

void expect_residuals(const RestartInfo& info, float m, float u, float v, float w) {
    EXPECT_EQ(info.resid_m, m);
    EXPECT_EQ(info.resid_u, u);
    EXPECT_EQ(info.resid_v, v);
    EXPECT_EQ(info.resid_w, w);
}

TEST(WriteRestartInfo, WritesTheTextOfFortran) {
    const TemporaryDirectory dir;
    RestartInfo info = sample;
    info.nest_extents = Extents{3, 2, 2};
    RestartInfoName name;
    write_restart_info(name, dir.file("restart-022_5-"), info);
    EXPECT_EQ(dir.read("restart-022_5-restart.info"),
              read_text_file(std::string(TORVEX_TEST_DATA) + "/restart.info"));
}

TEST(WriteRestartInfo, ThirdLineIsForNestedRunsOnly) {
    const TemporaryDirectory dir;
    RestartInfoName name;
    write_restart_info(name, dir.file(""), sample);
    EXPECT_EQ(split_lines(dir.read("restart.info")).size(), 2U);
    const std::optional<RestartInfo> read = read_restart_info(dir.file("restart.info"));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->outer_count, 480);
    EXPECT_EQ(read->residuals_read, 4);
    expect_residuals(*read, sample.resid_m, sample.resid_u, sample.resid_v, sample.resid_w);
}

TEST(WriteRestartInfo, FlagChoosesTheName) {
    const TemporaryDirectory dir;
    RestartInfoName name;
    write_restart_info(name, dir.file("s-"), {.outer_count = 50}, true);
    EXPECT_TRUE(dir.has("s-restart-00050.info"));
    EXPECT_FALSE(dir.has("s-restart.info"));
    write_restart_info(name, dir.file("s-"), {.outer_count = 60}, false);
    EXPECT_TRUE(dir.has("s-restart.info"));
    write_restart_info(name, dir.file("s-"), {.outer_count = 61});
    EXPECT_EQ(read_restart_info(dir.file("s-restart.info"))->outer_count, 61);
}

TEST(WriteRestartInfo, LastNameStaysInForceWithoutFlag) {
    const TemporaryDirectory dir;
    RestartInfoName name;
    write_restart_info(name, dir.file(""), {.outer_count = 100}, true);
    // A divergence behind an intermediate write: the previous iteration under the numbered name.
    write_restart_info(name, dir.file(""), {.outer_count = 123});
    EXPECT_EQ(read_restart_info(dir.file("restart-00100.info"))->outer_count, 123);
    EXPECT_FALSE(dir.has("restart.info"));
    EXPECT_FALSE(dir.has("restart-00123.info"));
}

TEST(WriteRestartInfo, NewDirectionStartsWithThePlainName) {
    const TemporaryDirectory dir;
    RestartInfoName name;
    write_restart_info(name, dir.file("a-"), {.outer_count = 100}, true);
    name = {};
    write_restart_info(name, dir.file("b-"), {.outer_count = 7});
    EXPECT_TRUE(dir.has("b-restart.info"));
    EXPECT_EQ(read_restart_info(dir.file("a-restart-00100.info"))->outer_count, 100);
}

TEST(WriteRestartInfo, FinalWriteLeavesTheRememberedName) {
    const TemporaryDirectory dir;
    RestartInfoName name;
    write_restart_info(name, dir.file(""), {.outer_count = 100}, true);
    write_restart_file(dir.file("restart.info"), {.outer_count = 101});
    write_restart_info(name, dir.file(""), {.outer_count = 102});
    EXPECT_EQ(read_restart_info(dir.file("restart.info"))->outer_count, 101);
    EXPECT_EQ(read_restart_info(dir.file("restart-00100.info"))->outer_count, 102);
}

TEST(WriteRestartInfo, CountBeyondFiveDigitsBecomesStars) {
    const TemporaryDirectory dir;
    RestartInfoName name;
    write_restart_info(name, dir.file(""), {.outer_count = 100000}, true);
    EXPECT_TRUE(dir.has("restart-*****.info"));
}

TEST(WriteRestartInfo, FullDiskStopsAndKeepsTheEarlierFile) {
    const TemporaryDirectory dir;
    RestartInfoName name;
    write_restart_info(name, dir.file(""), {.outer_count = 7});
    const test::FileSizeLimit limit(10);
    EXPECT_EQ(
        test::stop_code_of([&] { write_restart_info(name, dir.file(""), {.outer_count = 8}); }), 1);
    EXPECT_EQ(read_restart_info(dir.file("restart.info"))->outer_count, 7);
    EXPECT_FALSE(dir.has("restart.info.tmp"));
}

TEST(ReadRestartInfo, ReadsWhatFortranWrote) {
    const std::optional<RestartInfo> info =
        read_restart_info(std::string(TORVEX_TEST_DATA) + "/restart.info");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->outer_count, 480);
    expect_residuals(*info, 1.234567e-5F, 0.25F, 3.0e-4F, 1.0e25F);
    EXPECT_EQ(info->residuals_read, 4);
    EXPECT_FALSE(info->nest_extents) << "line 3 is not looked at";
}

TEST(ReadRestartInfo, MissingFileIsNothing) {
    const TemporaryDirectory dir;
    EXPECT_FALSE(read_restart_info(dir.file("restart.info")));
    EXPECT_FALSE(read_restart_info(dir.path()));
}

TEST(ReadRestartInfo, UnreadableCountCountsAsMissingFile) {
    for (const char* text : {"", "\n\n", "abc\n1 2 3 4\n", "12.5\n1 2 3 4\n", "99999999999\n",
                             "/\n", ",5\n", "***********\n"}) {
        EXPECT_FALSE(read_text(text)) << text;
    }
}

TEST(ReadRestartInfo, GivesUpAtTheFirstUnreadableResidual) {
    const float none = 1.0e25F;
    const std::optional<RestartInfo> broken = read_text("12\n0.5 0.25 x 0.125\n");
    ASSERT_TRUE(broken);
    EXPECT_EQ(broken->outer_count, 12);
    EXPECT_EQ(broken->residuals_read, 2);
    expect_residuals(*broken, 0.5F, 0.25F, none, none);

    const std::optional<RestartInfo> count_only = read_text("12\n");
    ASSERT_TRUE(count_only);
    EXPECT_EQ(count_only->residuals_read, 0);
    expect_residuals(*count_only, none, none, none, none);

    const std::optional<RestartInfo> overflow = read_text("12\n1e99 1 1 1\n");
    ASSERT_TRUE(overflow);
    expect_residuals(*overflow, none, none, none, none);
}

TEST(ReadRestartInfo, ThirdLineNeverStandsInForResiduals) {
    const std::optional<RestartInfo> info = read_text("12\n0.5 0.25\n3 2 2\n");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->residuals_read, 2);
    expect_residuals(*info, 0.5F, 0.25F, 1.0e25F, 1.0e25F);
}

TEST(ReadRestartInfo, TakesFreeForm) {
    const std::optional<RestartInfo> info = read_text("\r\n 12, remark\r\n\r\n 1d-3, 2*0.5 7\r\n");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->outer_count, 12);
    EXPECT_EQ(info->residuals_read, 4);
    expect_residuals(*info, 0.001F, 0.5F, 0.5F, 7.0F);
}

TEST(ReadRestartInfo, ValueThatIsNoNumberCannotPassAsSmall) {
    const std::optional<RestartInfo> info = read_text("12\nNaN Infinity 0 0\n");
    ASSERT_TRUE(info);
    EXPECT_TRUE(std::isnan(info->resid_m));
    EXPECT_TRUE(std::isinf(info->resid_u));
}

TEST(ReadRestartInfo, AnyBytesAreReadToAnEnd) {
    const std::string whole = *read_text_file(std::string(TORVEX_TEST_DATA) + "/restart.info");
    const MemoryFile file;
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        std::string text = whole.substr(0, round % 2 == 0 ? whole.size() : random() % whole.size());
        for (int n = 0; n <= round % 3 && !text.empty(); ++n) {
            text[random() % text.size()] = static_cast<char>(random());
        }
        file.set(text);
        const std::optional<RestartInfo> info = read_restart_info(file.path());
        if (info) {
            EXPECT_LE(info->residuals_read, 4);
        }
    }
}

}  // namespace
}  // namespace torvex
