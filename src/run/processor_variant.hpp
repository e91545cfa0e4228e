#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace torvex {

// A build for any machine of the x86-64 architecture has its programs once more for processors of
// its third level (AVX2, which all had from about 2015 on). They compute the same bits in two
// thirds of the time. What the fourth level (AVX-512) adds is one or two per cent.
inline constexpr std::string_view variant_level = "x86-64-v3";

// True if this processor has all instructions of that level.
bool processor_has_variant_level();

// Whether TORVEX_VARIANT, which may be blank, leaves the choice to the processor: not where it is
// "baseline". A word that is neither that nor the level is told on standard error.
bool variant_wanted(std::string_view TORVEX_VARIANT);

// "torvex-x86-64-v3" for the program "torvex", beside it or in ../lib/torvex.
std::optional<std::filesystem::path> find_variant(const std::filesystem::path& program);

}  // namespace torvex
