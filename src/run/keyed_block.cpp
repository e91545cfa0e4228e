#include "run/keyed_block.hpp"

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/value_scanner.hpp"
#include "run/value_assignment.hpp"

namespace torvex {

namespace {

struct FoundLine {
    KeyStatus status = KeyStatus::no_rewind;
    std::string_view value;  // text behind the "="
    long line = 0;
};

FoundLine find_key(const CaseText& file, std::string_view block, std::string_view key) {
    if (!file.available) {
        return {};
    }
    FoundLine found{KeyStatus::no_block, {}, 0};
    const std::string head = "&" + std::string(block);
    for (const std::string_view whole_line : split_lines(file.text)) {
        ++found.line;
        const std::string_view line = left_adjusted(whole_line);
        if (found.status == KeyStatus::no_block) {
            if (line.starts_with(head)) {
                found.status = KeyStatus::no_key;
            }
            continue;
        }
        if (line.starts_with('/')) {
            break;
        }
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos && trimmed(line.substr(0, equals)) == key) {
            found.status = KeyStatus::read;
            found.value = line.substr(equals + 1);
            break;
        }
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

bool read_value(const FoundLine& found, const KeyTarget& target, std::size_t length,
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
        if (!assign(target, n, token, length, fault)) {
            return false;
        }
    }
    return true;
}

KeyStatus read_key(const CaseText& file, std::string_view block, std::string_view key,
                   const KeyTarget& target, std::size_t length = 0) {
    const FoundLine found = find_key(file, block, key);
    AssignFault fault;
    if (found.status == KeyStatus::read && !read_value(found, target, length, fault)) {
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
    return read_key(file, block, key, &value, length);
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
        !read_value(found, key.target(settings), key.length, fault)) {
        stop(1,
             "block &" + std::string(block) + ": key " + std::string(key.name) + ": cannot read " +
                 excerpt(fault.text) + ", expected " + fault.expected,
             place(file.name, found.line));
    }
    return found.status;
}

}  // namespace torvex
