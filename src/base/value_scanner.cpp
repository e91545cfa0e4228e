#include "base/value_scanner.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <system_error>

namespace torvex {

namespace {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Rewrites a D exponent, or one without a letter, with E; false if the word can be no real.
bool normalised_exponent(std::string_view word, std::string& text) {
    text.clear();
    for (std::size_t n = 0; n < word.size(); ++n) {
        const char c = word[n];
        const bool behind_digits = n > 0 && (is_digit(word[n - 1]) || word[n - 1] == '.');
        if (c == 'd' || c == 'D' || c == 'q' || c == 'Q' || c == 'E') {
            text += 'e';
        } else if ((c == '+' || c == '-') && behind_digits) {
            text += 'e';
            text += c;
        } else if (is_digit(c) || c == '.' || c == '+' || c == '-' || c == 'e') {
            text += c;
        } else {
            return false;
        }
    }
    return true;
}

template <class Real>
bool parse_plain(std::string_view word, Real& value) {
    Real parsed{};
    const char* const end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, parsed);
    if (result.ptr != end) {
        return false;
    }
    if (result.ec == std::errc::result_out_of_range) {
        // Only the sign of the excess matters here; the text is a number from end to end.
        const double wide = std::strtod(std::string(word).c_str(), nullptr);
        if (std::abs(wide) > static_cast<double>(std::numeric_limits<Real>::max())) {
            return false;
        }
        parsed = static_cast<Real>(wide);
    } else if (result.ec != std::errc{}) {
        return false;
    }
    value = parsed;
    return true;
}

template <class Real>
bool parse_any_real(std::string_view word, Real& value) {
    if (!word.empty() && word.front() == '+') {
        word.remove_prefix(1);
        if (word.empty() || word.front() == '-' || word.front() == '+') {
            return false;
        }
    }
    if (parse_plain(word, value)) {
        return true;
    }
    std::string text;
    return normalised_exponent(word, text) && parse_plain(std::string_view(text), value);
}

}  // namespace

bool parse_real(std::string_view word, float& value) {
    return parse_any_real(word, value);
}

bool parse_real(std::string_view word, double& value) {
    return parse_any_real(word, value);
}

bool parse_integer(std::string_view word, std::int32_t& value) {
    if (word.size() > 1 && word.front() == '+' && is_digit(word[1])) {
        word.remove_prefix(1);
    }
    std::int32_t parsed = 0;
    const char* const end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, parsed);
    if (word.empty() || result.ptr != end || result.ec != std::errc{}) {
        return false;
    }
    value = parsed;
    return true;
}

bool parse_logical(std::string_view word, bool& value) {
    if (!word.empty() && word.front() == '.') {
        word.remove_prefix(1);
    }
    if (word.empty()) {
        return false;
    }
    const char c = word.front();
    if (c == 't' || c == 'T') {
        value = true;
    } else if (c == 'f' || c == 'F') {
        value = false;
    } else {
        return false;
    }
    return true;
}

bool ValueScanner::at_line_end() const {
    return cursor_.at == cursor_.end || *cursor_.at == '\n';
}

bool ValueScanner::at_word_end(const char* p) const {
    if (p == cursor_.end) {
        return true;
    }
    switch (*p) {
        case ' ':
        case '\t':
        case '\r':
        case '\n':
        case ',':
            return true;
        case '/':
            return !rules_.slash_in_words;
        case '!':
            return rules_.comments;
        default:
            return false;
    }
}

void ValueScanner::skip_blanks() {
    while (cursor_.at != cursor_.end) {
        const char c = *cursor_.at;
        if (c == ' ' || c == '\t' || c == '\r') {
            ++cursor_.at;
        } else if (c == '\n' && rules_.over_lines) {
            ++cursor_.at;
            ++cursor_.line;
        } else if (c == '!' && rules_.comments) {
            while (!at_line_end()) {
                ++cursor_.at;
            }
        } else {
            return;
        }
    }
}

void ValueScanner::skip_separator() {
    skip_blanks();
    if (value_open_ && cursor_.at != cursor_.end && *cursor_.at == ',') {
        ++cursor_.at;
        skip_blanks();
    }
    value_open_ = false;
}

const ValueToken& ValueScanner::give(ValueToken::Kind kind) {
    token_.kind = kind;
    token_.line = cursor_.line;
    return token_;
}

// The text from `start` to the cursor, as it stands.
const ValueToken& ValueScanner::give(ValueToken::Kind kind, const char* start) {
    token_.text.assign(start, cursor_.at);
    return give(kind);
}

const ValueToken& ValueScanner::scan_quoted() {
    const char* const start = cursor_.at;
    const char quote = *start;
    ++cursor_.at;
    token_.text.clear();
    while (!at_line_end()) {
        const char c = *cursor_.at++;
        if (c != quote) {
            token_.text += c;
        } else if (!at_line_end() && *cursor_.at == quote) {
            token_.text += quote;
            ++cursor_.at;
        } else if (at_word_end(cursor_.at) || *cursor_.at == '/') {
            return give(ValueToken::Kind::quoted);
        } else {
            break;
        }
    }
    while (!at_word_end(cursor_.at)) {
        ++cursor_.at;
    }
    return give(ValueToken::Kind::unclosed, start);
}

const ValueToken& ValueScanner::scan_value() {
    if (*cursor_.at == '\'' || *cursor_.at == '"') {
        return scan_quoted();
    }
    const char* const start = cursor_.at;
    while (!at_word_end(cursor_.at)) {
        ++cursor_.at;
    }
    return give(ValueToken::Kind::word, start);
}

const ValueToken& ValueScanner::next() {
    if (repeats_left_ > 0) {
        --repeats_left_;
        return token_;
    }
    skip_separator();
    if (at_line_end() || (*cursor_.at == '/' && !rules_.slash_in_words)) {
        return give(ValueToken::Kind::end, cursor_.at);
    }
    if (*cursor_.at == ',') {
        ++cursor_.at;
        return give(ValueToken::Kind::null, cursor_.at);
    }
    value_open_ = true;

    // A count that is no positive 32-bit integer is none, and the word stays whole.
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    const char* p = cursor_.at;
    std::int64_t count = 0;
    while (p != cursor_.end && is_digit(*p) && count <= most) {
        count = 10 * count + (*p - '0');
        ++p;
    }
    if (p == cursor_.end || *p != '*' || count < 1 || count > most) {
        return scan_value();
    }
    cursor_.at = p + 1;
    repeats_left_ = count - 1;
    return at_word_end(cursor_.at) ? give(ValueToken::Kind::null, cursor_.at) : scan_value();
}

std::size_t ValueScanner::pass_copies(std::size_t most) {
    const auto passed = std::min(most, static_cast<std::size_t>(repeats_left_));
    repeats_left_ -= static_cast<std::int64_t>(passed);
    return passed;
}

}  // namespace torvex
