#include "run/iteration_table.hpp"

#include "base/edit.hpp"

namespace torvex {

std::string iteration_rule() {
    return "   " + std::string(69, '-');
}

std::vector<std::string> iteration_block(int iteration, const std::array<float, 6>& residuals) {
    std::string dashes = "   ";
    for (int n = 0; n < 35; ++n) {
        dashes += "- ";
    }
    std::string header = edit::A("it", 6);
    for (const char* name :
         {"residual-m", "residual-u", "residual-v", "residual-w", "residual-k", "residual-e"}) {
        header += edit::A(name, 11);
    }
    std::string row = edit::I(iteration, 6);
    for (const float residual : residuals) {
        row += " " + edit::E(residual, 10, 4);
    }
    return {dashes, header, row, iteration_rule()};
}

}  // namespace torvex
