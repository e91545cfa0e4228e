// A program that has variants, for processor_variant_test: tells that it is the baseline, and with
// what it was started.

#include <cstdlib>
#include <iostream>

#include "run/runtime_settings.hpp"

int main(int argc, char** argv) {
    torvex::settle_runtime(argv, torvex::Variants::beside_the_program);
    std::cout << "baseline";
    for (int n = 1; n < argc; ++n) {
        std::cout << ' ' << argv[n];
    }
    const char* const spin = std::getenv("GOMP_SPINCOUNT");
    std::cout << ' ' << (spin == nullptr ? "unset" : spin) << '\n';
}
