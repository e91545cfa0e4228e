// fuzz_case_file CORPUS COUNT SEED: reads COUNT distorted case files, made from the *.tin files of
// a directory, as a run does before its first step. Each must either be accepted or end in a stop
// whose message says what is wrong and where. Built with the address and undefined behaviour
// sanitizers in every preset; an input that fails is left in fuzz_case_file.bad.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "case/case_blocks.hpp"
#include "case/case_checks.hpp"
#include "case/case_file.hpp"
#include "case/case_warnings.hpp"
#include "case/fuzzing.hpp"
#include "case/mutations.hpp"

namespace torvex::test {
namespace {

constexpr const char* case_name = "fuzzed.tin";
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

// Warnings go to standard error, thirty thousand times.
class MutedErrors {
 public:
    MutedErrors() { std::cerr.setstate(std::ios::failbit); }
    ~MutedErrors() { std::cerr.clear(); }
    MutedErrors(const MutedErrors&) = delete;
    MutedErrors& operator=(const MutedErrors&) = delete;
};

void read_everything(const CaseText& file) {
    const MutedErrors muted;
    CaseSettings settings;
    KeyLines lines;
    RunLog log;
    read_case_file(file, settings, lines, log);
    read_nest_points(file, settings, log);
    read_canopy_parameters(file, settings);
    read_shape_parameters(file, settings);
    read_user_domain(file, settings);
    check_limits(file, settings, lines);
    warn_of_case(file, settings, lines, log);
}

// The table of directional alpha is the one other file that is read here.
bool names_file(const std::string& message) {
    return message.find(case_name) != std::string::npos ||
           message.find("directional alpha") != std::string::npos;
}

Reception receive(const std::string& text) {
    return received(
        text,
        [](const std::string& input) {
            read_everything({case_name, input});
        },
        names_file);
}

int fuzz(const std::string& directory, long count, std::uint32_t seed) {
    const std::vector<std::string> corpus = read_corpus(directory);
    if (corpus.empty()) {
        std::cerr << "no *.tin file in " << directory << '\n';
        return 1;
    }
    for (const std::string& text : corpus) {
        const Reception reception = receive(text);
        if (!reception.accepted) {
            std::cerr << "a file of the corpus is refused: " << reception.message
                      << reception.complaint << '\n';
            return 1;
        }
    }
    Mutator mutator(corpus, seed);
    long accepted = 0;
    for (long n = 1; n <= count; ++n) {
        const Reception reception = receive(mutator.next());
        if (!reception.complaint.empty()) {
            std::cerr << "input " << n << " met " << reception.complaint << '\n';
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
    torvex::test::keep_failing_input("fuzz_case_file.bad");
    std::cout.setstate(std::ios::failbit);  // what a run shows on its console is of no interest
    return torvex::test::fuzz(argv[1], std::stol(argv[2]),
                              static_cast<std::uint32_t>(std::stoul(argv[3])));
}
