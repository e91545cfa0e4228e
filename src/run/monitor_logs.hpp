#pragma once

#include <array>
#include <span>
#include <string>

#include "base/case_settings.hpp"
#include "results/view_table.hpp"

namespace torvex {

// The convergence and monitor tables of the current direction. The all-directions files show the
// direction in hand, the per-direction files keep its whole history.
struct MonitorLogs {
    ViewTable conv_all;  // view-convergence.dat
    ViewTable mon_all;   // view-monitor.dat
    ViewTable conv_wd;   // view-convergence-TAG.dat
    ViewTable mon_wd;    // view-monitor-TAG.dat
};

// Opens the four tables. With RESTART_FLAG they continue: the all-directions ones as copies of the
// per-direction ones, or empty where there is none. Without it all four begin empty.
void open_monitor_logs(const CaseSettings& settings, const std::string& tag, MonitorLogs& logs);

// Blanks all rows of all four tables.
void clear_monitor_logs(MonitorLogs& logs);

// "[main] ERROR: Can't delete logs." and exit status 1 if one of them cannot be closed.
void close_monitor_logs(MonitorLogs& logs);
void close_or_stop(ViewTable& table);

// iteration (I8) and six values (E16.8).
std::string monitor_row(int iteration, const std::array<float, 6>& values);

}  // namespace torvex
