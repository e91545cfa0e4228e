#include <string>
#include <vector>

#include "prep/run_prep.hpp"
#include "run/runtime_settings.hpp"

int main(int argc, char** argv) {
    torvex::settle_runtime(argv, torvex::Variants::TORVEX_VARIANTS);  // as the build says
    return torvex::run_prep(std::vector<std::string>(argv + 1, argv + argc));
}
