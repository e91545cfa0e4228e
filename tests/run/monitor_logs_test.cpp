// The four tables of a direction: how they begin with and without a restart, their rows, and what
// happens when one cannot be closed.

#include "run/monitor_logs.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "run/working_directory.hpp"
#include "support/failures.hpp"
#include "support/file_descriptors.hpp"

namespace torvex {
namespace {

using test::stop_of;
using ::testing::HasSubstr;

// A table as it stands on disk: slot 1, then rows, 120 bytes each.
std::string table(const std::vector<std::string>& slots) {
    std::string text;
    for (const std::string& slot : slots) {
        text += slot + std::string(119 - slot.size(), ' ') + "\n";
    }
    return text;
}

const std::string empty_table = table({"       1"});

class MonitorLogsTest : public ::testing::Test {
 protected:
    void open(int restart_flag, const std::string& prefix = "") {
        settings.RESTART_FLAG = restart_flag;
        settings.run_prefix = prefix;
        open_monitor_logs(settings, "022_5", logs);
    }
    void write_all_old() const {
        directory.write("view-convergence.dat", table({"       3", "old all", "old all"}));
        directory.write("view-monitor.dat", table({"       2", "old mon"}));
        directory.write("view-convergence-022_5.dat", table({"       3", "conv 1", "conv 2"}));
        directory.write("view-monitor-022_5.dat", table({"       2", "mon 1"}));
    }

    test::WorkingDirectory directory;
    CaseSettings settings;
    MonitorLogs logs;
};

TEST_F(MonitorLogsTest, BeginEmptyWithoutARestart) {
    write_all_old();
    open(0);
    for (const char* name : {"view-convergence.dat", "view-monitor.dat",
                             "view-convergence-022_5.dat", "view-monitor-022_5.dat"}) {
        EXPECT_EQ(directory.read(name), empty_table) << name;
    }
}

TEST_F(MonitorLogsTest, NewOnesAreMadeWithTheirPrefix) {
    open(0, "flat2-");
    for (const char* name : {"flat2-view-convergence.dat", "flat2-view-monitor.dat",
                             "flat2-view-convergence-022_5.dat", "flat2-view-monitor-022_5.dat"}) {
        EXPECT_EQ(directory.read(name), empty_table) << name;
    }
    EXPECT_FALSE(directory.has("view-monitor.dat"));
}

TEST_F(MonitorLogsTest, RestartGoesOnWithTheDirectionsOwn) {
    for (const int flag : {1, 2, -1}) {
        write_all_old();
        open(flag);
        EXPECT_EQ(logs.conv_all.count(), 3);
        EXPECT_EQ(logs.conv_all.slot(2), "conv 1");
        EXPECT_EQ(logs.conv_all.slot(3), "conv 2");
        EXPECT_EQ(logs.mon_all.slot(2), "mon 1");
        EXPECT_EQ(directory.read("view-convergence-022_5.dat"),
                  table({"       3", "conv 1", "conv 2"}));
        close_monitor_logs(logs);
    }
}

TEST_F(MonitorLogsTest, RestartWithoutTheDirectionsOwnBeginsEmpty) {
    directory.write("view-convergence.dat", table({"       3", "old all", "old all"}));
    directory.write("view-monitor.dat", table({"       2", "old mon"}));
    directory.write("view-monitor-022_5.dat", table({"       2", "mon 1"}));
    open(1);
    EXPECT_EQ(directory.read("view-convergence.dat"), empty_table)
        << "another direction's rows must not stay";
    EXPECT_EQ(directory.read("view-convergence-022_5.dat"), empty_table);
    EXPECT_EQ(logs.mon_all.slot(2), "mon 1") << "each pair for itself";
}

TEST_F(MonitorLogsTest, AppendingGoesOnBehindTheLastRow) {
    write_all_old();
    open(1);
    logs.conv_all.append("conv 3");
    logs.conv_wd.append("conv 3");
    EXPECT_EQ(logs.conv_all.count(), 4);
    EXPECT_EQ(directory.read("view-convergence.dat"), directory.read("view-convergence-022_5.dat"));
}

TEST_F(MonitorLogsTest, ClearingBlanksAllFour) {
    write_all_old();
    open(1);
    clear_monitor_logs(logs);
    EXPECT_EQ(directory.read("view-convergence.dat"), table({"       1", "", ""}));
    EXPECT_EQ(directory.read("view-monitor-022_5.dat"), table({"       1", ""}));
    EXPECT_EQ(logs.mon_all.count(), 1);
    EXPECT_EQ(logs.conv_wd.count(), 1);
}

TEST_F(MonitorLogsTest, NextDirectionShowsOnlyItself) {
    open(0);
    logs.conv_all.append("first");
    logs.conv_wd.append("first");
    close_monitor_logs(logs);
    open_monitor_logs(settings, "045_0", logs);
    EXPECT_EQ(logs.conv_all.count(), 1);
    EXPECT_EQ(directory.read("view-convergence.dat"), empty_table);
    EXPECT_EQ(directory.read("view-convergence-022_5.dat"), table({"       2", "first"}));
}

TEST_F(MonitorLogsTest, RowIsAnIntegerAndSixReals) {
    const std::string row = monitor_row(50, {0.5F, -1.5F, 0.001F, 12.0F, 0.0F, 1024.0F});
    EXPECT_EQ(row,
              "      50  0.50000000E+00 -0.15000000E+01  0.10000000E-02  0.12000000E+02"
              "  0.00000000E+00  0.10240000E+04");
    EXPECT_EQ(row.size(), 104U);
}

TEST_F(MonitorLogsTest, TenRowsMakeElevenSlots) {
    open(0);
    for (int iteration = 50; iteration <= 500; iteration += 50) {
        logs.conv_wd.append(monitor_row(iteration, {}));
    }
    const std::string text = directory.read("view-convergence-022_5.dat");
    EXPECT_EQ(text.size(), 11U * 120U);
    EXPECT_EQ(text.substr(0, 8), "      11");
    EXPECT_EQ(text.substr(10 * 120, 8), "     500");
    for (std::size_t slot = 1; slot <= 11; ++slot) {
        EXPECT_EQ(text[slot * 120 - 1], '\n');
    }
}

TEST_F(MonitorLogsTest, ClosingFailureHasItsText) {
    open(0);
    ::testing::internal::CaptureStdout();
    test::close_descriptor_of(directory.file("view-monitor.dat"));
    const auto stopped = stop_of([&] { close_monitor_logs(logs); });
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "[main] ERROR: Can't delete logs.\n");
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_EQ(stopped->reason(), "[main] ERROR: Can't delete logs.");
}

TEST_F(MonitorLogsTest, FileThatCannotBeOpenedIsNamed) {
    std::filesystem::create_directory("view-monitor-022_5.dat");
    for (const int flag : {0, 1}) {
        const auto stopped = stop_of([&] { open(flag); });
        ASSERT_TRUE(stopped);
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("view-monitor"));
    }
}

}  // namespace
}  // namespace torvex
