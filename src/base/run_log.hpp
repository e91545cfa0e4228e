#pragma once

#include <string>
#include <string_view>

namespace torvex {

// The console: one line on standard output, seen at once by whoever watches.
void console(std::string_view line);

// The run log "torvex.log". It is appended to and never truncated, each line reaching the file
// before the next step of the run. Until open() the lines are kept, so that a run which finds its
// directory taken by another one leaves no trace in that run's log.
class RunLog {
 public:
    RunLog() = default;
    ~RunLog();
    RunLog(const RunLog&) = delete;
    RunLog& operator=(const RunLog&) = delete;

    // Opens the file for appending and writes what has been kept; a failure stops the run.
    void open(const std::string& path);
    void close();
    bool is_open() const { return descriptor_ >= 0; }

    // Lines told so far that no open() has written yet.
    const std::string& kept() const { return kept_; }
    void discard() { kept_.clear(); }

    void line(std::string_view text);   // as it stands
    void timed(std::string_view text);  // behind the date stamp

 private:
    int descriptor_ = -1;
    std::string path_;
    std::string kept_;
};

}  // namespace torvex
