#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/temporary_directory.hpp"

namespace torvex::test {

// What a finished program left behind.
struct ProgramRun {
    int status = -1;         // exit status; -1 if it did not end by itself
    int signal = 0;          // signal that ended it, 0 if none
    bool timed_out = false;  // killed after the time limit
    std::string out;         // standard output
    std::string err;         // standard error
};

// A program at work in a directory, killed with its owner if it still runs then.
class StartedProgram {
 public:
    StartedProgram(const std::string& program, const std::vector<std::string>& arguments,
                   const std::filesystem::path& directory);
    ~StartedProgram();
    StartedProgram(const StartedProgram&) = delete;
    StartedProgram& operator=(const StartedProgram&) = delete;

    bool running();
    void kill();  // as a power failure would, without a chance to tidy up
    ProgramRun wait(int seconds = 60);

 private:
    TemporaryDirectory console_;
    pid_t child_;
    int status_ = 0;
    bool ended_ = false;
};

// Runs a program in a directory and waits for its end, at most `seconds`.
ProgramRun run_program(const std::string& program, const std::vector<std::string>& arguments,
                       const std::filesystem::path& directory, int seconds = 60);

// Path of the program under test.
std::string torvex_program();

// The same for torvex itself.
ProgramRun run_torvex_program(const std::vector<std::string>& arguments,
                              const std::filesystem::path& directory, int seconds = 60);

}  // namespace torvex::test
