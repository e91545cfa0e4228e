#pragma once

#include "base/line1.hpp"

namespace torvex {

// Index i with line(i) <= x < line(i+1), by bisection; n if x equals the last value, 0 beyond
// either end (also for an x that is not a number), -1 if the list does not rise strictly.
int bracket(float x, const Line1& line);

// A place between two neighbours of a list: index of the lower one and weight of the upper one.
// The last value counts as inside, as the upper end of the last interval.
struct LinePlace {
    int i = 0;  // 0: outside, or the list does not rise
    float w = 0;

    bool inside() const { return i > 0; }
};
// The place of x on a list that rises strictly.
LinePlace place_on(float x, const Line1& line);

// wy (wx c + (1-wx) d) + (1-wy) (wx b + (1-wx) a), with the four values at (i,j), (i+1,j),
// (i+1,j+1), (i,j+1).
inline float bilinear(float wx, float wy, float a, float b, float c, float d) {
    return wy * (wx * c + (1.0F - wx) * d) + (1.0F - wy) * (wx * b + (1.0F - wx) * a);
}

}  // namespace torvex
