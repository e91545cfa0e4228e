#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/case_settings.hpp"
#include "case/case_text.hpp"

namespace torvex {

// Shows the keys of groups and blocks that the file gives, each with its place.
void for_given_keys(const CaseText& file, const KeyLines& lines,
                    const std::function<void(std::string_view, const std::string&)>& see);

// What became of the keys, in the order of the table of keys.
struct KeyAccount {
    std::vector<std::string> given;
    std::vector<std::string> defaulted;       // of the groups, and of the blocks that are there
    std::vector<std::string> without_effect;  // given, but idle in this case or in any
};

KeyAccount key_account(const CaseText& file, const CaseSettings& settings, const KeyLines& lines);

}  // namespace torvex
