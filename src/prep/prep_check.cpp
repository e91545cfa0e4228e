// torvex-prep check: what a run would do with a case, without its files.

#include <algorithm>
#include <iostream>
#include <streambuf>

#include "case/case_directory.hpp"
#include "case/case_file.hpp"
#include "prep/case_check.hpp"
#include "prep/entries.hpp"
#include "prep/prep_case.hpp"
#include "run/runtime_settings.hpp"

namespace torvex {

namespace {

// The steps of a run tell the console what they do. A check tells what it found.
class QuietConsole {
 public:
    QuietConsole() : before_(std::cout.rdbuf(&nothing_)) {}
    ~QuietConsole() { std::cout.rdbuf(before_); }
    QuietConsole(const QuietConsole&) = delete;
    QuietConsole& operator=(const QuietConsole&) = delete;

 private:
    struct Nothing : std::streambuf {
        int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    };
    Nothing nothing_;
    std::streambuf* before_;
};

bool take_switch(std::vector<std::string>& arguments, const std::string& name) {
    const auto given = std::ranges::find(arguments, name);
    if (given == arguments.end()) {
        return false;
    }
    arguments.erase(given);
    return true;
}

}  // namespace

int prep_check(std::vector<std::string> arguments) {
    const std::string case_file = take_case_file(arguments);
    const bool as_json = take_switch(arguments, "--json");
    if (!arguments.empty()) {
        stop(102, "unknown argument \"" + arguments[0] + "\"", {},
             "usage: torvex-prep check [/f CASE_FILE] [--json]");
    }
    cap_threads();
    const std::string path = full_path(case_file);
    const CaseText file = load_case_text(path);
    enter_directory_of(path);
    CaseSettings settings;
    Run run(settings);
    run.leaves_files = false;
    run.log.open(prep_log_name);
    run.log.timed(" torvex-prep check");
    CaseCheck check;
    {
        const QuietConsole quiet;
        check_case(file, settings, run, check);
    }
    for (const std::string& line : check_lines(run, check)) {
        run.log.line(line);
        if (!as_json) {
            console(line);
        }
    }
    if (as_json) {
        std::cout << check_json(run, check) << std::flush;
    }
    if (check.stop) {
        run.log.timed(" A run would end here: " + std::string(check.stop->what()));
        throw *check.stop;  // NOLINT(cert-err60-cpp): run_prep tells it and makes it the status
    }
    run.log.timed(" The case was checked.");
    return 0;
}

}  // namespace torvex
