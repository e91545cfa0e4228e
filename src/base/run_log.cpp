#include "base/run_log.hpp"

#include <unistd.h>

#include <iostream>

#include "base/date_stamp.hpp"
#include "base/status_line.hpp"

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

}  // namespace torvex
