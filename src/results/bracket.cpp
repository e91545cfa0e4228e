#include "results/bracket.hpp"

namespace torvex {

int bracket(float x, const Line1& line) {
    const int n = line.size();
    for (int i = 1; i < n; ++i) {
        if (!(line(i) < line(i + 1))) {
            return -1;
        }
    }
    if (n < 1 || !(x >= line(1)) || !(x <= line(n))) {
        return 0;
    }
    if (x == line(n)) {
        return n;
    }
    int low = 1;
    int high = n;
    while (high - low > 1) {
        const int middle = low + (high - low) / 2;
        (line(middle) <= x ? low : high) = middle;
    }
    return low;
}

LinePlace place_on(float x, const Line1& line) {
    const int i = bracket(x, line);
    if (i < 1 || line.size() < 2) {
        return {};
    }
    if (i == line.size()) {
        return {i - 1, 1.0F};
    }
    return {i, (x - line(i)) / (line(i + 1) - line(i))};
}

}  // namespace torvex
