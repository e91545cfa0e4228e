#include "solver/solve_record.hpp"

#include "base/edit.hpp"

namespace torvex {

std::string solve_line(std::string_view label, const SolveRecord& record) {
    const std::string r = std::string(", r") + label[label.find_first_not_of(' ')];
    return std::string(label) + ": n=" + edit::I(record.n, 3) + r +
           "0=" + edit::E(record.r0, 14, 7) + r + "1=" + edit::E(record.r1, 14, 7) +
           ", a=" + edit::E(record.a, 14, 7);
}

}  // namespace torvex
