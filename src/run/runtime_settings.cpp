// Settings of the OpenMP runtime, and the program that fits the processor.
//
// Waits: an outer iteration holds some hundred short loops. A thread that spins for milliseconds at
// the end of each takes the core from the very thread that it waits for as soon as another job runs
// on the machine, and a solve then takes ten times as long. With a short spin an idle machine loses
// a few per cent, a busy one shares fairly.
//
// Stacks: a thread whose stack is smaller than what a loop keeps there ends the program by a
// signal. One that finds no room among the addresses keeps the runtime from starting the thread,
// which ends the program without a word in its log.
//
// Threads: the runtime takes room for all of them on the stack of the first, which a million of
// them overflows.

#include "run/runtime_settings.hpp"

#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

#include "base/text_file.hpp"
#include "base/value_scanner.hpp"
#include "run/processor_variant.hpp"

namespace torvex {

namespace {

bool prefer_short_waits() {
    constexpr const char* spin_count = "GOMP_SPINCOUNT";
    return std::getenv("OMP_WAIT_POLICY") == nullptr && std::getenv(spin_count) == nullptr &&
           setenv(spin_count, "3000", 0) == 0;
}

// True for a size as OMP_STACKSIZE takes it ("512", "20k", "1 M"; kilobytes without a letter) that
// is below a megabyte or above a gigabyte. What is no size is left to the runtime, which then takes
// its own.
bool is_useless_stack(std::string_view text) {
    constexpr double least = 0x1p20;
    constexpr double most = 0x1p30;
    text = trimmed(text);
    char unit = 'K';
    if (!text.empty() && std::isalpha(static_cast<unsigned char>(text.back())) != 0) {
        unit = static_cast<char>(std::toupper(static_cast<unsigned char>(text.back())));
        text = trimmed(text.substr(0, text.size() - 1));
    }
    constexpr std::string_view units = "BKMG";
    const std::size_t power = units.find(unit);
    double size = 0;  // the runtime reads sizes beyond 32 bits
    if (power == std::string_view::npos ||
        text.find_first_not_of("0123456789") != std::string_view::npos || !parse_real(text, size)) {
        return false;
    }
    size = std::ldexp(size, 10 * static_cast<int>(power));
    return size < least || size > most;
}

bool drop_useless_stacks() {
    bool changed = false;
    for (const char* name : {"OMP_STACKSIZE", "GOMP_STACKSIZE"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr && is_useless_stack(value)) {
            changed = unsetenv(name) == 0 || changed;
        }
    }
    return changed;
}

std::optional<std::filesystem::path> variant_for_processor(const std::filesystem::path& program) {
    const char* const choice = std::getenv("TORVEX_VARIANT");
    if (!variant_wanted(choice == nullptr ? "" : choice) || !processor_has_variant_level()) {
        return std::nullopt;
    }
    return find_variant(program);
}

}  // namespace

void settle_runtime(char** argv, Variants variants) {
    const bool waits = prefer_short_waits();
    const bool stacks = drop_useless_stacks();
    if (!waits && !stacks && variants == Variants::none) {
        return;
    }
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        return;
    }
    // An execv comes back only if it fails.
    if (variants == Variants::beside_the_program) {
        if (const auto variant = variant_for_processor(program)) {
            execv(variant->c_str(), argv);
        }
    }
    if (waits || stacks) {
        execv(program.c_str(), argv);
    }
}

void cap_threads(int useful) {
    constexpr int always_allowed = 8;  // more threads than cores only wait for each other
    const int most =
        std::max(1, std::min(useful, std::max(2 * omp_get_num_procs(), always_allowed)));
    const int wanted = omp_get_max_threads();  // below 0 where it is too large for an int
    if (wanted > most || wanted < 1) {
        omp_set_num_threads(most);
    }
}

void cap_threads() {
    cap_threads(std::numeric_limits<int>::max());
}

}  // namespace torvex
