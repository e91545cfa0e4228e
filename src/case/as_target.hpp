#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/fixed_array.hpp"
#include "case/case_keys.hpp"

namespace torvex {

// A member of a record as the place that a key fills.
inline KeyTarget as_target(std::int32_t& value) {
    return std::span(&value, 1);
}
inline KeyTarget as_target(float& value) {
    return std::span(&value, 1);
}
inline KeyTarget as_target(bool& value) {
    return &value;
}
inline KeyTarget as_target(std::string& value) {
    return &value;
}
inline KeyTarget as_target(std::vector<float>& value) {
    return &value;
}
inline KeyTarget as_target(std::vector<Site>& value) {
    return std::span(value);
}
template <class T, int N>
KeyTarget as_target(FixedArray<T, N>& value) {
    return value.span();
}

}  // namespace torvex
