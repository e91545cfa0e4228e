#include "base/run_log.hpp"

#include <iostream>

#include "base/date_stamp.hpp"
#include "base/status_line.hpp"

namespace torvex {

void console(std::string_view line) {
    StatusLine& status = status_line();
    status.hide();
    std::cout << line << '\n' << std::flush;
    status.redraw();
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
