#include <csignal>
#include <string>
#include <vector>

#include "run/run_torvex.hpp"
#include "run/runtime_settings.hpp"

int main(int argc, char** argv) {
    torvex::settle_runtime(argv, torvex::Variants::TORVEX_VARIANTS);  // as the build says
    // A closed console or a file size limit is an error to report, not a reason to die.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    return torvex::run_torvex(std::vector<std::string>(argv + 1, argv + argc));
}
