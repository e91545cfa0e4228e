#pragma once

#include <exception>
#include <span>
#include <string>
#include <string_view>

namespace torvex {

// The end of a run, on its way to main. Nothing between stop() and main keeps it but the writer of
// the label list, so every file that is open on the way is closed by its owner.
class Stop : public std::exception {
 public:
    Stop(int code, std::string what, std::string where, std::string fix);

    int code() const { return code_; }
    const std::string& reason() const { return reason_; }
    const std::string& where() const { return where_; }
    const std::string& fix() const { return fix_; }

    // The lines for standard error: the reason (behind "stop CODE: " where the code is a numbered
    // one), then the place and the way out, each on an indented line of its own.
    const char* what() const noexcept override { return message_.c_str(); }

 private:
    int code_;
    std::string reason_;
    std::string where_;
    std::string fix_;
    std::string message_;
};

// Ends the run with `code` as the exit status. Codes stand in stop_codes(); 1 is the code of all
// failures that have a text only. `where` names file, line or key, `fix` what to do about it.
// Not to be called inside a parallel region.
[[noreturn]] void stop(int code, std::string_view what, std::string_view where = {},
                       std::string_view fix = {});

// A row of the table of codes.
struct StopCode {
    int code;                  // exit status; 1 for failures known by their text alone
    std::string_view subject;  // part of the program, or the text itself where the code is 1
    std::string_view meaning;  // what went wrong
    std::string_view fix;      // what the user can do
};

// Every way in which a run can end before its time, in rising order. The reference page on stop
// codes is written from this table.
std::span<const StopCode> stop_codes();

}  // namespace torvex
