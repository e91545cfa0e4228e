// The sequence of a run: case file, sizing, one direction after the other, exit status.

#include "run/run_torvex.hpp"

#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <string_view>

#include "base/file_names.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "case/case_directory.hpp"
#include "case/case_file.hpp"
#include "nest/parent_state.hpp"
#include "run/closing_line.hpp"
#include "run/command_line.hpp"
#include "run/control_files.hpp"
#include "run/mesh_log.hpp"
#include "run/monitor_logs.hpp"
#include "run/nested_run.hpp"
#include "run/outcome.hpp"
#include "run/outer_iteration.hpp"
#include "run/prepare_direction.hpp"
#include "run/result_writers.hpp"
#include "run/runtime_settings.hpp"
#include "run/settle_case.hpp"
#include "run/write_sites.hpp"

namespace torvex {

namespace {

constexpr const char* version = "5.0176";

CaseText find_case(const std::vector<std::string>& arguments) {
    const std::string case_file = full_path(case_file_argument(arguments));
    CaseText file = load_case_text(case_file);
    enter_directory_of(case_file);
    return file;
}

// Opens the table of directions before anything else is touched: its lock says that no other run
// is at work in this directory. It is emptied rather than deleted, so that the lock lives on; this
// happens on a restart too.
void open_directions_table(Run& run) {
    using Existing = ViewTable::Existing;
    try {
        if (run.settings.nested()) {
            require_idle_parent();
        }
        run.directions.open(run.settings.run_prefix + std::string(file_names::directions_table),
                            run.settings.RESTART_FLAG == 0 ? Existing::discard : Existing::keep);
    } catch (const Stop&) {
        run.log.discard();
        throw;
    }
    clear_view_log(run.directions);
}

DirectionEnd end_of(const Run& run, const Direction& direction) {
    if (direction.converged) {
        return DirectionEnd::converged;
    }
    if (direction.diverged) {
        return DirectionEnd::diverged;
    }
    return run.settings.MAXIT > 0 ? DirectionEnd::not_converged : DirectionEnd::not_iterated;
}

// Takes the outcome of a direction out of the table again. What broke the direction off is on its
// way to standard error, and must not give way to a table that cannot be written either.
void take_back_outcome(const Direction& direction, ViewTable& directions) {
    try {
        set_status(direction, DirectionStatus::entered, directions);
    } catch (const Stop&) {
        console_error("the row of the direction cannot be put back to 0");
    }
}

// A direction counts as ended when its results are there: where they, or the lines of its outcome
// before them, cannot be written, its row in the table of directions goes back to "entered". A
// diverged direction has written its results already.
void finish_direction(Run& run, Direction& direction) {
    try {
        report_outcome(direction, run.log, run.directions);
        if (!direction.diverged) {
            write_final_result(run, direction);
        }
    } catch (...) {
        if (!direction.diverged) {
            take_back_outcome(direction, run.directions);
        }
        throw;
    }
}

// One direction from its entry to its outcome.
bool run_direction(Run& run, int iwd, const Solve& solve) {
    DirectionRecord& record = run.records[static_cast<std::size_t>(iwd - 1)];
    record.end = DirectionEnd::broken_off;
    Direction direction;
    begin_direction(run, iwd, direction);
    open_monitor_logs(run.settings, direction.tag, direction.logs);
    run.log.timed(" Input parameters were read.");
    enter_direction(direction, run.log, run.directions);

    switch (prepare_direction(run, direction)) {
        case Prepared::to_solve:
            warn_of_sites_outside(run, direction);
            solve(run, direction);
            finish_direction(run, direction);
            break;
        case Prepared::unusable:
            report_outcome(direction, run.log, run.directions);
            break;
        case Prepared::done:
            break;
    }
    record.end = end_of(run, direction);
    if (is_accelerated(run.settings)) {
        record.stage = direction.acceleration.stage;
    }
    release_fields(run, direction);
    close_monitor_logs(direction.logs);
    return direction.stop_requested;
}

std::string closing_line(const Run& run) {
    return closing_line(run.records, run.log.reminders());
}

int run_case(const std::vector<std::string>& arguments, const Solve& solve, CaseSettings& settings,
             Run& run) {
    cap_threads();
    console(" * Initialization");
    KeyLines lines;
    const CaseText file = find_case(arguments);
    run.log.line("------------------------------------------");
    run.log.timed(" Torvex Basic Started");
    run.log.timed(std::string(" Torvex Version ") + version);
    read_settings(file, settings, lines, run);

    open_directions_table(run);
    run.log.open(std::string(file_names::run_log));
    run.log.timed(" Input parameters were read.");

    size_run(settings, run);
    for (int iwd = 1; iwd <= run.settings.N_WIND_DIRECTION; ++iwd) {
        run.records.push_back({.angle = run.settings.WIND_DIRECTION_ANGLE(iwd)});
    }
    if (run.settings.TORVEX_MODE == 0) {
        write_mesh_log(run.settings.run_prefix, run.lines);
    }
    delete_stop_message();

    warn_of_small_maps(run);

    bool stopped = false;
    for (int iwd = 1; iwd <= run.settings.N_WIND_DIRECTION && !stopped; ++iwd) {
        stopped = run_direction(run, iwd, solve);
    }
    run.log.timed(" " + closing_line(run));
    run.log.timed(" Computation Finished. ");
    run.log.close();
    close_or_stop(run.directions);
    console_error("torvex: " + closing_line(run));
    return stopped ? 2 : 0;
}

// True if some run is at work in the current directory, under whatever prefix.
bool directory_is_taken() {
    constexpr std::array prefixes{"", "atlas-", "flat-", "flat2-", "nest-"};
    return std::ranges::any_of(prefixes, [](const char* prefix) {
        return table_is_held(prefix + std::string(file_names::directions_table));
    });
}

// Tells the log why the run ends before its time, and what it came to. A case that cannot be read
// ends before the log is open; what was told until then belongs there too, unless it is the log of
// another run. A run that told nothing yet (no case file, another run in its directory) leaves no
// trace. The reason stands on standard error already, so a log that takes nothing is let go.
void tell_end(RunLog& log, const std::vector<std::string>& reason) {
    if (!log.is_open() && (log.kept().empty() || directory_is_taken())) {
        log.discard();
        return;
    }
    try {
        if (!log.is_open()) {
            log.open(std::string(file_names::run_log));
        }
        log.timed(" " + reason.front());
        const std::string indent(20, ' ');
        for (std::size_t n = 1; n < reason.size(); ++n) {
            log.line(indent + reason[n]);
        }
    } catch (const Stop&) {
        log.discard();
    }
}

// A run that ends before its time: the reason, in lines, then what the run came to.
int end_run(Run& run, int status, const std::vector<std::string>& reason) {
    for (const std::string& line : reason) {
        console_error(line);
    }
    const bool told = run.log.is_open() || !run.log.kept().empty();
    std::vector<std::string> lines = reason;
    lines.push_back(closing_line(run));
    tell_end(run.log, lines);
    if (told) {
        console_error("torvex: " + closing_line(run));
    }
    return status;
}

}  // namespace

int run_torvex(const std::vector<std::string>& arguments) {
    return run_torvex(arguments,
                      [](Run& run, Direction& direction) { OUTER_ITERATION(run, direction); });
}

int run_torvex(const std::vector<std::string>& arguments, const Solve& solve) {
    CaseSettings settings;
    Run run(settings);
    try {
        return run_case(arguments, solve, settings, run);
    } catch (const Stop& stopped) {
        std::vector<std::string> reason;
        for (const std::string_view line : split_lines(stopped.what())) {
            reason.emplace_back(line);
        }
        return end_run(run, stopped.code(), reason);
    } catch (const std::bad_alloc&) {
        return end_run(run, 1, {"out of memory"});
    } catch (const std::exception& failure) {
        return end_run(run, 1, {failure.what()});
    }
}

}  // namespace torvex
