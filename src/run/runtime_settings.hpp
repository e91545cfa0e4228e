#pragma once

#include <cstdint>

namespace torvex {

// Whether the program was built for newer processors too (run/processor_variant).
enum class Variants : std::uint8_t { none, beside_the_program };

// Called first of all: makes the settings of the OpenMP runtime in the environment fit this program
// and, where one had to be changed, starts the program anew, since the runtime reads them before
// main. Settings of the user stay, except stacks that no thread could work on or be given. Where
// there are variants, the one for this processor is started instead of the program.
void settle_runtime(char** argv, Variants variants = Variants::none);

// No more threads than `useful`, and never so many that the runtime cannot start them, whatever
// OMP_NUM_THREADS says. Results are the same for any number.
void cap_threads(int useful);
void cap_threads();

}  // namespace torvex
