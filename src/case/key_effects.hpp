#pragma once

#include <span>
#include <string_view>

#include "base/case_settings.hpp"

namespace torvex {

// When a key of the case file acts. Keys that are not in this table always do. The reference page
// and the warnings of keys given in vain follow it.
struct KeyEffect {
    std::string_view key;
    std::string_view condition;           // as "USE_DEFAULT_MAX_Z = F"; blank: never
    bool (*acts)(const CaseSettings& s);  // nullptr: never

    bool never() const { return acts == nullptr; }
};

// The whole table, in the order of the case file.
std::span<const KeyEffect> key_effects();

// Nothing for a key that always acts.
const KeyEffect* effect_of(std::string_view key);

}  // namespace torvex
