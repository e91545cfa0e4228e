#pragma once

#include <cstdint>

namespace torvex {

// What a direction's iterations go by: the two working sets, then the case's own keys and the plain
// iteration. Each begins where the one before it fails.
enum class Stage : std::uint8_t { common, robust, plain };

}  // namespace torvex
