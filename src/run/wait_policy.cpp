// Short waits at the end of parallel loops.
//
// An outer iteration holds some hundred short loops. A thread that spins for milliseconds at the
// end of each takes the core from the very thread that it waits for as soon as another job runs on
// the machine, and a solve then takes ten times as long. With a short spin an idle machine loses a
// few per cent, a busy one shares fairly.

#include "run/wait_policy.hpp"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace torvex {

void prefer_short_waits(char** argv) {
    constexpr const char* spin_count = "GOMP_SPINCOUNT";
    if (std::getenv("OMP_WAIT_POLICY") != nullptr || std::getenv(spin_count) != nullptr ||
        setenv(spin_count, "1000", 0) != 0) {
        return;
    }
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        execv(program.c_str(), argv);  // comes back only if it fails
    }
}

}  // namespace torvex
