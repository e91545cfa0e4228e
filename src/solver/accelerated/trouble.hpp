#pragma once

#include <cstdint>
#include <limits>

namespace torvex {

// The course of the mass residual since a working set began.
struct Course {
    int seen = 0;                                        // iterations
    float smallest = std::numeric_limits<float>::max();  // behind the fourth of them
    int smallest_at = 0;
};

enum class Trouble : std::uint8_t { none, rising, hanging };

// Takes the normalised mass residual behind iteration `seen` of the set. Rising: above five times
// the smallest value, which a run on its way to convergence does not show. Hanging: no new smallest
// value in 40 iterations above 1e-4.
Trouble judge(Course& course, int seen, float resid_m);

}  // namespace torvex
