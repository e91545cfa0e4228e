#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_log.hpp"

namespace torvex {

// The console: one line on standard output, seen at once by whoever watches.
void console(std::string_view line);

// One line on standard error, above the status line of a terminal.
void console_error(std::string_view line);

// What a run has warned of.
struct Warning {
    std::string text;
    std::string reminder;  // a few words for the closing line of the run; may be empty
};

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

    // A warning: " Warning: TEXT" behind the date stamp, and "Warning: TEXT" on standard error. The
    // same text is told once in a run. `reminder` is what the closing line says of it.
    void warn(std::string_view text, std::string_view reminder = {});

    // A warning whose line in the log has a form of its own, `line` behind the date stamp, as often
    // as it comes. Standard error gets it once, without the blanks in front.
    void warn_line(std::string_view line, std::string_view reminder = {});

    // The warnings so far, each text once, in their order.
    const std::vector<Warning>& warnings() const { return warnings_; }

    // "a; b": the reminders, each once, in their order; empty if there are none.
    std::string reminders() const;

 private:
    bool tell_first_time(std::string_view text, std::string_view reminder);

    TextLog file_;
    std::string kept_;
    std::vector<Warning> warnings_;
    std::set<std::string, std::less<>> told_;
};

}  // namespace torvex
