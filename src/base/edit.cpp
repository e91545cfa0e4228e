#include "base/edit.hpp"

#include <charconv>
#include <cmath>
#include <cstdlib>

namespace torvex::edit {

namespace {

std::string stars(int w) {
    std::string field(static_cast<std::size_t>(w), '*');
    return field;
}

std::string right_adjusted(std::string_view text, int w) {
    const auto width = static_cast<std::size_t>(w);
    if (text.size() > width) {
        return stars(w);
    }
    std::string field(width - text.size(), ' ');
    field += text;
    return field;
}

// NaN and the infinities have no digits; the long word is used where it fits with its sign.
template <class Real>
std::string not_finite(Real value, int w) {
    if (std::isnan(value)) {
        return right_adjusted("NaN", w);
    }
    const bool negative = std::signbit(value);
    const std::string sign = negative ? "-" : "";
    const int needed = negative ? 9 : 8;
    return right_adjusted(sign + (w >= needed ? "Infinity" : "Inf"), w);
}

// Sign and body of a real field. The body begins with "0." where the value is below one, and that
// zero is given up when the field is one column short.
std::string adjusted_real(bool negative, std::string_view body, int w) {
    const std::size_t sign_width = negative ? 1 : 0;
    const auto width = static_cast<std::size_t>(w);
    if (body.size() + sign_width > width && body.size() > 2 && body.substr(0, 2) == "0.") {
        body.remove_prefix(1);
    }
    std::string text = negative ? "-" : "";
    text += body;
    return right_adjusted(text, w);
}

template <class Real>
std::string fixed_digits(Real magnitude, int d) {
    // The longest value is 10^308, with all decimals behind it.
    std::string digits(static_cast<std::size_t>(320 + d), '\0');
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), magnitude,
                                   std::chars_format::fixed, d);
    digits.resize(static_cast<std::size_t>(end.ptr - digits.data()));
    if (d == 0) {
        digits += '.';
    }
    return digits;
}

// A value as 0.digits * 10^exponent with `count` correctly rounded digits.
struct Decimal {
    std::string digits;
    int exponent = 0;
};

template <class Real>
Decimal decimal(Real magnitude, int count) {
    std::string text(static_cast<std::size_t>(count + 32), '\0');
    const auto end = std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                   std::chars_format::scientific, count - 1);
    text.resize(static_cast<std::size_t>(end.ptr - text.data()));
    const std::size_t mark = text.find('e');
    Decimal result;
    for (const char c : text.substr(0, mark)) {
        if (c != '.') {
            result.digits += c;
        }
    }
    if (magnitude != Real{0}) {
        const char* first = text.data() + mark + 1;
        if (*first == '+') {
            ++first;
        }
        std::from_chars(first, text.data() + text.size(), result.exponent);
        ++result.exponent;
    }
    return result;
}

std::string exponent_part(int exponent) {
    const int magnitude = std::abs(exponent);
    std::string text = exponent < 0 ? "-" : "+";
    if (magnitude < 10) {
        text += '0';
    }
    text += std::to_string(magnitude);
    return magnitude > 99 ? text : "E" + text;
}

template <class Real>
std::string fixed(Real value, int w, int d) {
    if (!std::isfinite(value)) {
        return not_finite(value, w);
    }
    return adjusted_real(std::signbit(value), fixed_digits(std::abs(value), d), w);
}

template <class Real>
std::string exponential(Real value, int w, int d) {
    if (!std::isfinite(value)) {
        return not_finite(value, w);
    }
    const Decimal number = decimal(std::abs(value), d);
    return adjusted_real(std::signbit(value), "0." + number.digits + exponent_part(number.exponent),
                         w);
}

// The default field of a free-form real: `count` significant digits in fixed point for magnitudes
// from 0.1 up to 10^count, followed by the blanks of the absent exponent, and otherwise the form
// d.ddE+ee.
template <class Real>
std::string free_form(Real value, int w, int count, int exponent_digits) {
    if (!std::isfinite(value)) {
        return not_finite(value, w);
    }
    const Real magnitude = std::abs(value);
    const Decimal number = decimal(magnitude, count);
    const bool is_zero = magnitude == Real{0};
    const int blanks = exponent_digits + 2;
    if (is_zero || (magnitude >= Real(0.1L) && number.exponent <= count)) {
        const int decimals = is_zero ? count - 1 : count - number.exponent;
        const std::string body = fixed_digits(magnitude, decimals);
        return adjusted_real(std::signbit(value), body, w - blanks) +
               std::string(static_cast<std::size_t>(blanks), ' ');
    }
    const int exponent = number.exponent - 1;
    std::string digits = std::to_string(std::abs(exponent));
    digits.insert(0, static_cast<std::size_t>(exponent_digits) - digits.size(), '0');
    std::string body = number.digits;
    body.insert(1, ".");
    body += exponent < 0 ? "E-" : "E+";
    body += digits;
    return adjusted_real(std::signbit(value), body, w);
}

}  // namespace

std::string I(std::int64_t value, int w, int m) {
    const bool negative = value < 0;
    std::string digits = std::to_string(value);
    if (negative) {
        digits.erase(0, 1);
    }
    if (m == 0 && value == 0) {
        digits.clear();
    }
    const auto least = static_cast<std::size_t>(m);
    if (digits.size() < least) {
        digits.insert(0, least - digits.size(), '0');
    }
    return right_adjusted((negative ? "-" : "") + digits, w);
}

std::string F(float value, int w, int d) {
    return fixed(value, w, d);
}

std::string F(double value, int w, int d) {
    return fixed(value, w, d);
}

std::string E(float value, int w, int d) {
    return exponential(value, w, d);
}

std::string E(double value, int w, int d) {
    return exponential(value, w, d);
}

std::string A(std::string_view text, int w) {
    return right_adjusted(text.substr(0, static_cast<std::size_t>(w)), w);
}

std::string L(bool value, int w) {
    return right_adjusted(value ? "T" : "F", w);
}

void ListLine::separate(bool is_text) {
    if (!(is_text && after_text_)) {
        line_ += ' ';
    }
    after_text_ = is_text;
}

ListLine& ListLine::operator<<(std::int32_t value) {
    separate(false);
    line_ += I(value, 11);
    return *this;
}

ListLine& ListLine::operator<<(float value) {
    separate(false);
    line_ += free_form(value, 16, 9, 2);
    return *this;
}

ListLine& ListLine::operator<<(double value) {
    separate(false);
    line_ += free_form(value, 25, 17, 3);
    return *this;
}

ListLine& ListLine::operator<<(bool value) {
    separate(false);
    line_ += L(value, 1);
    return *this;
}

ListLine& ListLine::operator<<(std::string_view text) {
    separate(true);
    line_ += text;
    return *this;
}

}  // namespace torvex::edit
