#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvex {

// A build for any machine of the x86-64 architecture has its programs once more for newer levels of
// the instruction set, which compute the same bits in less time: `torvex-x86-64-v3` beside `torvex`
// or in ../lib/torvex.

// The levels that this processor has all instructions of, the best one first.
std::vector<std::string_view> processor_levels();

// What TORVEX_VARIANT leaves of them: all where it is blank, none for "baseline", the one level
// that it names if the processor has it. Another word is told on standard error and leaves all.
std::vector<std::string_view> wanted_levels(std::string_view variant,
                                            std::vector<std::string_view> levels);

// The variant of `program` for the first of the levels that there is one for.
std::optional<std::filesystem::path> find_variant(const std::filesystem::path& program,
                                                  const std::vector<std::string_view>& levels);

}  // namespace torvex
