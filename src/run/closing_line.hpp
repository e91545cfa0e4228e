#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "solver/accelerated/stage.hpp"

namespace torvex {

// How a direction of the run ended, or how far it came.
enum class DirectionEnd : std::uint8_t {
    not_begun,
    broken_off,    // begun, but the run ended in it
    converged,     // in this run, or found so by a resume
    not_iterated,  // MAXIT allowed no iteration
    not_converged,
    diverged
};

// A direction of the run for its last line.
struct DirectionRecord {
    float angle = 0;  // where the wind comes from [deg]
    DirectionEnd end = DirectionEnd::not_begun;
    Stage stage = Stage::common;  // of the acceleration where it ended; common without one
};

// What a run came to, in one line: how many directions converged, which did not, which diverged,
// which the common acceleration did not serve, what was warned of that makes a result doubtful
// (`reminders`), and where to read on. An empty list stands for a run that ended before its
// directions were known.
std::string closing_line(const std::vector<DirectionRecord>& directions,
                         std::string_view reminders);

}  // namespace torvex
