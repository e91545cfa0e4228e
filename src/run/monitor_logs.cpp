#include "run/monitor_logs.hpp"

#include "base/edit.hpp"
#include "base/run_log.hpp"
#include "base/stop.hpp"

namespace torvex {

namespace {

void open_pair(bool restart, ViewTable& all, const std::string& all_name, ViewTable& wd,
               const std::string& wd_name) {
    using Existing = ViewTable::Existing;
    const bool continued = restart && copy_view_log(wd_name, all_name);
    all.open(all_name, continued ? Existing::keep : Existing::discard);
    wd.open(wd_name, restart ? Existing::keep : Existing::discard);
}

}  // namespace

void open_monitor_logs(const CaseSettings& settings, const std::string& tag, MonitorLogs& logs) {
    const bool restart = settings.RESTART_FLAG != 0;
    const std::string convergence = settings.run_prefix + "view-convergence";
    const std::string monitor = settings.run_prefix + "view-monitor";
    open_pair(restart, logs.conv_all, convergence + ".dat", logs.conv_wd,
              convergence + "-" + tag + ".dat");
    open_pair(restart, logs.mon_all, monitor + ".dat", logs.mon_wd, monitor + "-" + tag + ".dat");
}

void clear_monitor_logs(MonitorLogs& logs) {
    for (ViewTable* table : {&logs.conv_all, &logs.mon_all, &logs.conv_wd, &logs.mon_wd}) {
        clear_view_log(*table);
    }
}

void close_or_stop(ViewTable& table) {
    if (!table.close()) {
        const std::string text = "[main] ERROR: Can't delete logs.";
        console(text);
        stop(1, text);
    }
}

void close_monitor_logs(MonitorLogs& logs) {
    for (ViewTable* table : {&logs.conv_all, &logs.mon_all, &logs.conv_wd, &logs.mon_wd}) {
        close_or_stop(*table);
    }
}

std::string monitor_row(int iteration, const std::array<float, 6>& values) {
    std::string row = edit::I(iteration, 8);
    for (const float value : values) {
        row += edit::E(value, 16, 8);
    }
    return row;
}

}  // namespace torvex
