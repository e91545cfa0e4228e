#pragma once

#include <cstdio>
#include <cstdlib>

namespace torvex {

#ifdef TORVEX_CHECKS
inline constexpr bool checks_on = true;
#else
inline constexpr bool checks_on = false;
#endif

// A condition that only a programming error can break: tested in debug, asan and audit builds,
// free in release.
inline void require(bool condition, const char* what) {
    if constexpr (checks_on) {
        if (!condition) {
            std::fprintf(stderr, "torvex: internal error: %s\n", what);
            std::abort();
        }
    }
}

}  // namespace torvex
