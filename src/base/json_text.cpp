#include "base/json_text.hpp"

#include <cmath>
#include <cstddef>

#include "base/edit.hpp"
#include "base/text_file.hpp"

namespace torvex::json {

namespace {

unsigned byte(char c) {
    return static_cast<unsigned char>(c);
}

// Bytes of the UTF-8 sequence at the head of a text; 0 if there is none (Unicode 15, table 3-7).
std::size_t sequence_length(std::string_view text) {
    const unsigned lead = byte(text[0]);
    if (lead < 0x80) {
        return 1;
    }
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 0 || lead > 0xF4 || text.size() < length) {
        return 0;
    }
    const unsigned least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (byte(text[1]) < least || byte(text[1]) > most) {
        return 0;
    }
    for (std::size_t n = 2; n < length; ++n) {
        if ((byte(text[n]) & 0xC0U) != 0x80) {
            return 0;
        }
    }
    return length;
}

std::string escaped(char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    if (c == '"' || c == '\\') {
        return {'\\', c};
    }
    if (byte(c) < 0x20) {
        return std::string("\\u00") + digits[byte(c) / 16] + digits[byte(c) % 16];
    }
    return {c};
}

std::string joined(Members members, std::string_view separator) {
    std::string all;
    for (const auto& [name, value] : members) {
        all += (all.empty() ? "" : std::string(separator)) + text(name) + ": " + value;
    }
    return all;
}

}  // namespace

std::string text(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const std::size_t length = sequence_length(text);
        if (length == 1) {
            quoted += escaped(text[0]);
        } else if (length > 1) {
            quoted += text.substr(0, length);
        } else {
            quoted += "\\ufffd";
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return quoted + '"';
}

std::string number(double value, int decimals) {
    constexpr int digits = 40;
    const std::string field =
        std::isfinite(value) ? edit::F(value, digits + decimals, decimals) : "*";
    std::string plain(trimmed(field));
    if (plain.find('*') != std::string::npos) {
        return null;
    }
    if (plain.ends_with('.')) {
        plain.pop_back();  // of a number without decimals
    }
    return plain;
}

std::string integer(std::int64_t value) {
    return std::to_string(value);
}

std::string boolean(bool value) {
    return value ? "true" : "false";
}

std::string array(const std::vector<std::string>& values) {
    std::string all;
    for (const std::string& value : values) {
        all += (all.empty() ? "" : ", ") + value;
    }
    return "[" + all + "]";
}

std::string texts(const std::vector<std::string>& texts) {
    std::vector<std::string> values;
    values.reserve(texts.size());
    for (const std::string& one : texts) {
        values.push_back(text(one));
    }
    return array(values);
}

std::string object(Members members) {
    return "{" + joined(members, ", ") + "}";
}

std::string document(Members members) {
    return "{\n  " + joined(members, ",\n  ") + "\n}\n";
}

}  // namespace torvex::json
