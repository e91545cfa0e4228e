#pragma once

#include <array>
#include <string>
#include <vector>

namespace torvex {

// 3 blanks and 69 "-": stands over the first iteration and under each block.
std::string iteration_rule();

// The block of a monitor step: a dashed rule, the header, the row of iteration (I6) and six
// residuals (E10.4), the rule.
std::vector<std::string> iteration_block(int iteration, const std::array<float, 6>& residuals);

}  // namespace torvex
