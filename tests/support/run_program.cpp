#include "support/run_program.hpp"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace torvex::test {

namespace {

[[noreturn]] void become(const std::string& program, const std::vector<std::string>& arguments,
                         const std::filesystem::path& directory, const std::string& out,
                         const std::string& err) {
    constexpr int no_start = 126;
    const int in_file = ::open("/dev/null", O_RDONLY);
    const int out_file = ::open(out.c_str(), O_WRONLY | O_CREAT, 0644);
    const int err_file = ::open(err.c_str(), O_WRONLY | O_CREAT, 0644);
    if (chdir(directory.c_str()) != 0 || dup2(in_file, STDIN_FILENO) < 0 ||
        dup2(out_file, STDOUT_FILENO) < 0 || dup2(err_file, STDERR_FILENO) < 0) {
        _exit(no_start);
    }
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(no_start);
}

}  // namespace

StartedProgram::StartedProgram(const std::string& program,
                               const std::vector<std::string>& arguments,
                               const std::filesystem::path& directory)
    : child_(fork()) {
    if (child_ < 0) {
        throw std::runtime_error("cannot fork");
    }
    if (child_ == 0) {
        become(program, arguments, directory, console_.file("out"), console_.file("err"));
    }
}

StartedProgram::~StartedProgram() {
    kill();
}

bool StartedProgram::running() {
    if (!ended_ && waitpid(child_, &status_, WNOHANG) == child_) {
        ended_ = true;
    }
    return !ended_;
}

void StartedProgram::kill() {
    if (!ended_) {
        ::kill(child_, SIGKILL);
        waitpid(child_, &status_, 0);
        ended_ = true;
    }
}

ProgramRun StartedProgram::wait(int seconds) {
    ProgramRun run;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (running()) {
        if (std::chrono::steady_clock::now() > limit) {
            run.timed_out = true;
            kill();
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    if (WIFEXITED(status_)) {
        run.status = WEXITSTATUS(status_);
    } else if (WIFSIGNALED(status_)) {
        run.signal = WTERMSIG(status_);
    }
    run.out = console_.read("out");
    run.err = console_.read("err");
    return run;
}

ProgramRun run_program(const std::string& program, const std::vector<std::string>& arguments,
                       const std::filesystem::path& directory, int seconds) {
    return StartedProgram(program, arguments, directory).wait(seconds);
}

std::string torvex_program() {
    return TORVEX_PROGRAM;
}

ProgramRun run_torvex_program(const std::vector<std::string>& arguments,
                              const std::filesystem::path& directory, int seconds) {
    return run_program(torvex_program(), arguments, directory, seconds);
}

}  // namespace torvex::test
