#include "base/run_log.hpp"

#include <unistd.h>

#include <iostream>

#include "base/date_stamp.hpp"
#include "base/status_line.hpp"
#include "base/text_file.hpp"

namespace torvex {

void console(std::string_view line) {
    // Only lines on the same terminal need room.
    static const bool is_terminal = isatty(STDOUT_FILENO) == 1;
    if (is_terminal) {
        status_line().hide();
    }
    std::cout << line << '\n' << std::flush;
    if (is_terminal) {
        status_line().redraw();
    }
}

void console_error(std::string_view line) {
    // The status line hides and returns by itself only where standard error is a terminal.
    status_line().hide();
    std::cerr << std::string(line) + '\n' << std::flush;
    status_line().redraw();
}

void RunLog::open(const std::string& path) {
    file_.open(path, TextLog::Existing::append);
    file_.write(kept_);
    kept_.clear();
}

void RunLog::line(std::string_view text) {
    if (is_open()) {
        file_.line(text);
    } else {
        kept_ += text;
        kept_ += '\n';
    }
}

void RunLog::timed(std::string_view text) {
    line(date_stamp() + std::string(text));
}

// Standard error comes first: a full disk must not swallow what the log cannot take.
bool RunLog::tell_first_time(std::string_view text, std::string_view reminder) {
    if (!told_.emplace(text).second) {
        return false;
    }
    warnings_.push_back({std::string(text), std::string(reminder)});
    console_error(text);
    return true;
}

void RunLog::warn(std::string_view text, std::string_view reminder) {
    const std::string warning = "Warning: " + std::string(text);
    if (tell_first_time(warning, reminder)) {
        timed(" " + warning);
    }
}

void RunLog::warn_line(std::string_view line, std::string_view reminder) {
    tell_first_time(left_adjusted(line), reminder);
    timed(line);
}

std::string RunLog::reminders() const {
    std::string text;
    std::set<std::string_view> named;
    for (const Warning& warning : warnings_) {
        if (!warning.reminder.empty() && named.insert(warning.reminder).second) {
            text += (text.empty() ? "" : "; ") + warning.reminder;
        }
    }
    return text;
}

}  // namespace torvex
