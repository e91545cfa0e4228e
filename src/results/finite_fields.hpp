#pragma once

#include <optional>
#include <string_view>

#include "results/result_files.hpp"

namespace torvex {

// A value of a flow that is no finite number.
struct NotFinite {
    std::string_view field;  // as in FlowArrays
    int i = 0, j = 0, k = 0;
};

// The first one among the arrays that are there, in the order of FlowArrays; i runs fastest.
std::optional<NotFinite> first_not_finite(const ResultFields& fields);

}  // namespace torvex
