#pragma once

#include <string>
#include <string_view>

#include "base/text_log.hpp"

namespace torvex {

// The console: one line on standard output, seen at once by whoever watches.
void console(std::string_view line);

// The run log "torvex.log", appended to and never truncated. Until open() the lines are kept, so
// that a run which finds its directory taken by another one leaves no trace in that run's log.
class RunLog {
 public:
    // Opens the file for appending and writes what has been kept; a failure stops the run.
    void open(const std::string& path);
    void close() { file_.close(); }
    bool is_open() const { return file_.is_open(); }

    // Lines told so far that no open() has written yet.
    const std::string& kept() const { return kept_; }
    void discard() { kept_.clear(); }

    void line(std::string_view text);   // as it stands
    void timed(std::string_view text);  // behind the date stamp

 private:
    TextLog file_;
    std::string kept_;
};

}  // namespace torvex
