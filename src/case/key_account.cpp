#include "case/key_account.hpp"

#include <optional>
#include <set>

#include "base/text_file.hpp"
#include "case/case_keys.hpp"
#include "case/key_effects.hpp"
#include "case/keyed_block.hpp"

namespace torvex {

namespace {

// Whatever key is asked for, the answer tells whether the block is there.
bool has_block(const CaseText& file, std::string_view name) {
    std::string unread;
    return read_text_key(file, name, "any key", unread, 1) != KeyStatus::no_block;
}

}  // namespace

void for_given_keys(const CaseText& file, const KeyLines& lines,
                    const std::function<void(std::string_view, const std::string&)>& see) {
    for (const CaseGroup& group : namelist_groups()) {
        for (const CaseKey& key : group.keys) {
            if (lines.given(key.name) || lines.reached(key.name) > 0) {
                see(key.name, lines.where(file, key.name));
            }
        }
    }
    for (const CaseGroup& block : keyed_blocks()) {
        for (const CaseKey& key : block.keys) {
            if (const auto line = line_of_key(file, block.name, key.name)) {
                see(key.name, place(file.name, *line));
            }
        }
    }
}

KeyAccount key_account(const CaseText& file, const CaseSettings& settings, const KeyLines& lines) {
    KeyAccount account;
    std::set<std::string_view> given;
    for_given_keys(file, lines, [&](std::string_view key, const std::string&) {
        given.insert(key);
        account.given.emplace_back(key);
        const KeyEffect* const effect = effect_of(key);
        if (effect != nullptr && (effect->never() || !effect->acts(settings))) {
            account.without_effect.emplace_back(key);
        }
    });
    const auto add_defaults = [&](const CaseGroup& group) {
        for (const CaseKey& key : group.keys) {
            if (!given.contains(key.name)) {
                account.defaulted.emplace_back(key.name);
            }
        }
    };
    for (const CaseGroup& group : namelist_groups()) {
        add_defaults(group);
    }
    for (const CaseGroup& block : keyed_blocks()) {
        if (has_block(file, block.name)) {
            add_defaults(block);
        }
    }
    return account;
}

}  // namespace torvex
