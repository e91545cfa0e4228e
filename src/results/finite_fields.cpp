#include "results/finite_fields.hpp"

#include <cmath>

#include "solver/flow_fields.hpp"

namespace torvex {

namespace {

// x - x is 0 for every finite number and NaN otherwise, so that the sum of a row tells about all of
// it without a branch.
bool row_is_finite(const float* row, int n) {
    float sum = 0.0F;
    for (int i = 0; i < n; ++i) {
        sum += row[i] - row[i];
    }
    return sum == 0.0F;
}

std::optional<NotFinite> first_in(std::string_view name, const Field3& field) {
    for (int k = 1; k <= field.nk(); ++k) {
        for (int j = 1; j <= field.nj(); ++j) {
            if (row_is_finite(&field(1, j, k), field.ni())) {
                continue;
            }
            for (int i = 1; i <= field.ni(); ++i) {
                if (!std::isfinite(field(i, j, k))) {
                    return NotFinite{name, i, j, k};
                }
            }
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<NotFinite> first_not_finite(const FlowState& flow) {
    for (const FlowField& field : kept_fields) {
        if (const auto found = first_in(field.name, flow.*field.member)) {
            return found;
        }
    }
    return std::nullopt;
}

}  // namespace torvex
