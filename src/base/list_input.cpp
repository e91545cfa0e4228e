#include "base/list_input.hpp"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "base/text_file.hpp"

namespace torvex {

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

// Passes blanks, the one comma that belongs to a value before, and blanks, but no line end.
void skip_value_end(TextCursor& cursor) {
    bool comma = false;
    while (cursor.at != cursor.end && *cursor.at != '\n' &&
           (is_blank(*cursor.at) || (*cursor.at == ',' && !comma))) {
        comma = comma || *cursor.at == ',';
        ++cursor.at;
    }
}

bool begins_number(const TextCursor& cursor) {
    if (cursor.at == cursor.end) {
        return false;
    }
    const char c = *cursor.at;
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
}

bool ends_number(const char* p, const char* end) {
    return p == end || *p == ',' || is_blank(*p);
}

}  // namespace

std::string ListFault::message() const {
    if (text.empty()) {
        return "the text ends where " + expected + " should stand";
    }
    return "cannot read \"" + text + "\", expected " + expected;
}

ListInput::ListInput(std::string_view text, long first_line)
    : cursor_{text.data(), text.data() + text.size(), first_line}, scanner_(cursor_, {}) {}

void ListInput::begin() {
    scanner_ = ValueScanner(cursor_, {});
    ended_ = false;
}

bool ListInput::end(bool good) {
    cursor_ = scanner_.cursor();
    if (!good) {
        return false;
    }
    std::string_view rest;
    read_line(rest);
    return true;
}

bool ListInput::read_line(std::string_view& line) {
    if (at_end()) {
        return false;
    }
    const char* const start = cursor_.at;
    cursor_.at = std::find(start, cursor_.end, '\n');
    line = std::string_view(start, static_cast<std::size_t>(cursor_.at - start));
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    if (cursor_.at != cursor_.end) {
        ++cursor_.at;
        ++cursor_.line;
    }
    return true;
}

bool ListInput::fail(const ValueToken& token, const char* expected) {
    const bool quoted = token.kind == ValueToken::Kind::quoted;
    fault_ = {token.line, quoted ? "'" + printable(token.text) + "'" : printable(token.text),
              expected};
    return false;
}

template <class Parse>
bool ListInput::item_as(const char* expected, Parse parse) {
    if (ended_) {
        return true;
    }
    const ValueToken& token = scanner_.next();
    switch (token.kind) {
        case ValueToken::Kind::null:
            return true;
        case ValueToken::Kind::end:
            ended_ = scanner_.cursor().at != scanner_.cursor().end;
            return ended_ || fail(token, expected);
        default:
            return parse(token) || fail(token, expected);
    }
}

bool ListInput::item(float& value) {
    return item_as("a real number", [&value](const ValueToken& token) {
        return token.kind == ValueToken::Kind::word && parse_real(token.text, value);
    });
}

bool ListInput::item(double& value) {
    return item_as("a real number", [&value](const ValueToken& token) {
        return token.kind == ValueToken::Kind::word && parse_real(token.text, value);
    });
}

bool ListInput::item(std::int32_t& value) {
    return item_as("an integer", [&value](const ValueToken& token) {
        return token.kind == ValueToken::Kind::word && parse_integer(token.text, value);
    });
}

bool ListInput::item(bool& value) {
    return item_as("T or F", [&value](const ValueToken& token) {
        return token.kind == ValueToken::Kind::word && parse_logical(token.text, value);
    });
}

bool ListInput::item(std::string& value) {
    return item_as("a text", [&value](const ValueToken& token) {
        if (token.kind == ValueToken::Kind::unclosed) {
            return false;
        }
        value = token.text;
        return true;
    });
}

bool ListInput::read_row(float* values, std::size_t count) {
    // Rows of plain numbers are nearly all there is in a map, so they take a short way; where it
    // meets anything else, the scanner reads the row again from its start.
    TextCursor at = cursor_;
    const auto skip_blanks = [&at] {
        while (at.at != at.end && is_blank(*at.at)) {
            at.line += *at.at == '\n' ? 1 : 0;
            ++at.at;
        }
    };
    std::size_t n = 0;
    while (n < count) {
        skip_blanks();
        float value = 0.0F;
        const auto result = std::from_chars(at.at, at.end, value);
        if (result.ec != std::errc{} || !ends_number(result.ptr, at.end)) {
            break;
        }
        values[n] = value;
        at.at = result.ptr;
        ++n;
        if (n < count) {
            skip_blanks();
            if (at.at != at.end && *at.at == ',') {
                ++at.at;
            }
        }
    }
    row_left_values_ = false;
    if (n < count) {
        return scan_row(values, count);
    }
    cursor_ = at;
    end_record();
    return true;
}

bool ListInput::scan_row(float* values, std::size_t count) {
    begin();
    std::size_t n = 0;
    while (n < count && !ended_) {
        if (!item(values[n])) {
            return end(false);
        }
        // Copies of a value are neither scanned nor parsed again: their text may be of any length.
        const std::size_t copies = scanner_.pass_copies(count - n - 1);
        if (scanner_.last_kind() != ValueToken::Kind::null) {
            std::fill_n(values + n + 1, copies, values[n]);
        }
        n += 1 + copies;
    }
    cursor_ = scanner_.cursor();
    if (ended_) {
        row_line_ = cursor_.line;
        std::string_view rest;
        read_line(rest);
    } else {
        row_left_values_ = scanner_.repeating();
        end_record();
    }
    return true;
}

// From behind the last value of a row to the next record.
void ListInput::end_record() {
    row_line_ = cursor_.line;
    skip_value_end(cursor_);
    row_left_values_ = row_left_values_ || begins_number(cursor_);
    std::string_view rest;
    read_line(rest);
}

bool ListInput::number_follows() {
    while (cursor_.at != cursor_.end && is_blank(*cursor_.at)) {
        cursor_.line += *cursor_.at == '\n' ? 1 : 0;
        ++cursor_.at;
    }
    return begins_number(cursor_);
}

}  // namespace torvex
