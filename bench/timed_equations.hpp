#pragma once

#include <array>
#include <functional>
#include <string_view>

#include "solver/equations.hpp"

namespace torvex::bench {

enum class Routine {
    CALCU,
    CALCV,
    CALCW,
    CALCP,
    CALCKE,
    CALCED,
    CALCKLM,
    CALCLM,
    CALCLM_,
    CALCVIS
};
inline constexpr int routines = 10;
inline constexpr std::array<std::string_view, routines> routine_names{
    "CALCU",  "CALCV",   "CALCW",  "CALCP",   "CALCKE",
    "CALCED", "CALCKLM", "CALCLM", "CALCLM_", "CALCVIS"};

using RoutineSeconds = std::array<double, routines>;

// The equations of the flow; each call adds its wall time to its place in `seconds`. `behind` is
// called behind CALCVIS, the last of an iteration.
torvex::Equations timed_equations(RoutineSeconds& seconds,
                                  const std::function<void(const SolverContext&)>& behind);

}  // namespace torvex::bench
