#include "case/keyed_block.hpp"

#include <algorithm>

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/value_scanner.hpp"
#include "case/shape_set_keys.hpp"
#include "case/value_assignment.hpp"

namespace torvex {

namespace {

// Shows the lines of a block to `see(line, number)` until that returns false. False if there is no
// such block.
template <class See>
bool walk_block(const CaseText& file, std::string_view block, const See& see) {
    const std::string head = "&" + std::string(block);
    bool inside = false;
    long number = 0;
    for (const std::string_view whole_line : split_lines(file.text)) {
        ++number;
        const std::string_view line = left_adjusted(whole_line);
        if (!inside) {
            inside = line.starts_with(head);
        } else if (line.starts_with('/') || !see(line, number)) {
            break;
        }
    }
    return inside;
}

// The key of a line of a block; blank if it has none.
std::string_view key_of(std::string_view line) {
    const std::size_t equals = line.find('=');
    return equals == std::string_view::npos ? std::string_view{} : trimmed(line.substr(0, equals));
}

struct FoundLine {
    KeyStatus status = KeyStatus::no_rewind;
    std::string_view value;  // text behind the "="
    long line = 0;
};

FoundLine find_key(const CaseText& file, std::string_view block, std::string_view key) {
    if (!file.available) {
        return {};
    }
    FoundLine found{KeyStatus::no_key, {}, 0};
    const bool there = walk_block(file, block, [&](std::string_view line, long number) {
        if (key_of(line) != key) {
            return true;
        }
        found = {KeyStatus::read, line.substr(line.find('=') + 1), number};
        return false;
    });
    if (!there) {
        found.status = KeyStatus::no_block;
    }
    return found;
}

// Texts may stand without quotes here, and may be blank.
ValueToken as_text(ValueToken token) {
    if (token.kind == ValueToken::Kind::word || token.kind == ValueToken::Kind::end) {
        token.kind = ValueToken::Kind::quoted;
    }
    return token;
}

bool read_value(const FoundLine& found, const KeyTarget& target, TextRule text,
                AssignFault& fault) {
    const bool is_text = std::holds_alternative<std::string*>(target);
    const char* const start = found.value.data();
    ValueScanner scanner({start, start + found.value.size(), found.line},
                         {.comments = true, .over_lines = false, .slash_in_words = is_text});
    for (std::size_t n = 0; n < capacity(target); ++n) {
        ValueToken token = scanner.next();
        if (is_text) {
            token = as_text(std::move(token));
        } else if (token.kind == ValueToken::Kind::end && n > 0) {
            break;
        }
        if (!assign(target, n, token, text, fault)) {
            return false;
        }
    }
    return true;
}

KeyStatus read_key(const CaseText& file, std::string_view block, std::string_view key,
                   const KeyTarget& target, TextRule text = {}) {
    const FoundLine found = find_key(file, block, key);
    AssignFault fault;
    if (found.status == KeyStatus::read && !read_value(found, target, text, fault)) {
        return KeyStatus::bad_value;
    }
    return found.status;
}

}  // namespace

KeyStatus read_integer_key(const CaseText& file, std::string_view block, std::string_view key,
                           std::int32_t& value) {
    return read_key(file, block, key, std::span(&value, 1));
}

KeyStatus read_real_array_key(const CaseText& file, std::string_view block, std::string_view key,
                              std::span<float> values) {
    return read_key(file, block, key, values);
}

KeyStatus read_real_key(const CaseText& file, std::string_view block, std::string_view key,
                        float& value) {
    return read_key(file, block, key, std::span(&value, 1));
}

KeyStatus read_text_key(const CaseText& file, std::string_view block, std::string_view key,
                        std::string& value, std::size_t length) {
    return read_key(file, block, key, &value, {.length = length});
}

KeyStatus read_logical_key(const CaseText& file, std::string_view block, std::string_view key,
                           bool& value) {
    return read_key(file, block, key, &value);
}

KeyStatus read_table_key(const CaseText& file, std::string_view block, const CaseKey& key,
                         CaseSettings& settings) {
    const FoundLine found = find_key(file, block, key.name);
    AssignFault fault;
    if (found.status == KeyStatus::read &&
        !read_value(found, key.target(settings), {key.length, key.names_a_file()}, fault)) {
        stop(1,
             "block &" + std::string(block) + ": key " + std::string(key.name) + ": cannot read " +
                 excerpt(fault.text) + ", expected " + fault.expected,
             place(file.name, found.line));
    }
    return found.status;
}

std::optional<long> line_of_key(const CaseText& file, std::string_view block,
                                std::string_view key) {
    const FoundLine found = find_key(file, block, key);
    return found.status == KeyStatus::read ? std::optional(found.line) : std::nullopt;
}

std::vector<UnknownKey> unknown_keys(const CaseText& file, const CaseGroup& block) {
    std::vector<UnknownKey> unknown;
    walk_block(file, block.name, [&](std::string_view line, long number) {
        const std::string_view name = key_of(line);
        const bool known = std::ranges::any_of(
            block.keys, [name](const CaseKey& key) { return key.name == name; });
        if (!name.empty() && !line.starts_with('!') && !known &&
            !(block.name == "shp_parameters" && is_shape_set_key(name))) {
            unknown.push_back({std::string(name), number});
        }
        return true;
    });
    return unknown;
}

}  // namespace torvex
