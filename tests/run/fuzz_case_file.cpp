// fuzz_case_file CORPUS COUNT SEED: reads COUNT distorted case files, made from the *.tin files of
// a directory, as a run does before its first step. Each must either be accepted or end in a stop
// whose message says what is wrong and where. Built with the address and undefined behaviour
// sanitizers in every preset; an input that fails is left in fuzz_case_file.bad.

#include <fcntl.h>
#include <sanitizer/common_interface_defs.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "run/case_blocks.hpp"
#include "run/case_checks.hpp"
#include "run/case_file.hpp"
#include "run/mutations.hpp"

namespace torvex::test {
namespace {

constexpr const char* case_name = "fuzzed.tin";
constexpr unsigned longest_seconds = 10;

std::string input;  // the text being read, for whoever has to save it

void save_input() {
    const int file = ::open("fuzz_case_file.bad", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file >= 0) {
        const ssize_t written = ::write(file, input.data(), input.size());
        static_cast<void>(written);
        ::close(file);
    }
}

void hung(int /*signal*/) {
    constexpr char text[] = "an input took too long; it is in fuzz_case_file.bad\n";
    const ssize_t written = ::write(STDERR_FILENO, text, sizeof text - 1);
    static_cast<void>(written);
    save_input();
    _exit(1);
}

// The corpus in the order of the names, so that a seed means the same everywhere.
std::vector<std::string> read_corpus(const std::string& directory) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        if (entry.path().extension() == ".tin") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> texts;
    texts.reserve(paths.size());
    for (const auto& path : paths) {
        texts.push_back(read_text_file(path.string()).value_or(""));
    }
    return texts;
}

void read_everything(const CaseText& file) {
    CaseSettings settings;
    KeyLines lines;
    RunLog log;
    read_case_file(file, settings, lines, log);
    read_nest_points(file, settings, log);
    read_canopy_parameters(file, settings);
    read_shape_parameters(file, settings);
    read_user_domain(file, settings);
    check_limits(file, settings, lines);
    warn_of_mixed_signs(file, settings, lines, log);
}

// How a text was received.
struct Reception {
    bool accepted = false;
    std::string message;    // of the stop
    std::string complaint;  // what is wrong with that, blank if nothing is
};

// What is wrong with a stop, blank if nothing is.
std::string complaint_of(const Stop& stopped) {
    const std::string text = stopped.what();
    if (stopped.code() < 1 || stopped.reason().empty()) {
        return "a stop without code or reason";
    }
    // The table of directional alpha is the one other file that is read here.
    if (text.find(case_name) == std::string::npos &&
        text.find("directional alpha") == std::string::npos) {
        return "a message that names no file: " + text;
    }
    return {};
}

Reception received() {
    Reception reception;
    try {
        read_everything({case_name, input});
        reception.accepted = true;
    } catch (const Stop& stopped) {
        reception.message = stopped.what();
        reception.complaint = complaint_of(stopped);
    } catch (const std::exception& failure) {
        reception.complaint = std::string("an exception that is no stop: ") + failure.what();
    }
    return reception;
}

int fuzz(const std::string& directory, long count, std::uint32_t seed) {
    const std::vector<std::string> corpus = read_corpus(directory);
    if (corpus.empty()) {
        std::cerr << "no *.tin file in " << directory << '\n';
        return 1;
    }
    for (const std::string& text : corpus) {
        input = text;
        const Reception reception = received();
        if (!reception.accepted) {
            std::cerr << "a file of the corpus is refused: " << reception.message
                      << reception.complaint << '\n';
            save_input();
            return 1;
        }
    }
    Mutator mutator(corpus, seed);
    long accepted = 0;
    for (long n = 1; n <= count; ++n) {
        input = mutator.next();
        alarm(longest_seconds);
        const Reception reception = received();
        alarm(0);
        if (!reception.complaint.empty()) {
            std::cerr << "input " << n << " met " << reception.complaint << '\n';
            save_input();
            return 1;
        }
        accepted += reception.accepted ? 1 : 0;
    }
    std::cerr << count << " inputs, " << accepted << " accepted, " << count - accepted
              << " refused\n";
    return 0;
}

}  // namespace
}  // namespace torvex::test

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: fuzz_case_file CORPUS COUNT SEED\n";
        return 1;
    }
    std::signal(SIGALRM, torvex::test::hung);
    __sanitizer_set_death_callback(torvex::test::save_input);
    std::cout.setstate(std::ios::failbit);  // what a run shows on its console is of no interest
    return torvex::test::fuzz(argv[1], std::stol(argv[2]),
                              static_cast<std::uint32_t>(std::stoul(argv[3])));
}
