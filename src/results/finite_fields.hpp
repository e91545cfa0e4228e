#pragma once

#include <optional>
#include <string_view>

#include "solver/flow_state.hpp"

namespace torvex {

// A value of a flow that is no finite number.
struct NotFinite {
    std::string_view field;  // its name in flow_fields.hpp
    int i = 0, j = 0, k = 0;
};

// The first one among the kept fields that have their room, in the order of their records; i runs
// fastest.
std::optional<NotFinite> first_not_finite(const FlowState& flow);

}  // namespace torvex
