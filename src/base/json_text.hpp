#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// JSON (RFC 8259) as text, put together from its parts: every function returns a whole value, and
// arrays and objects take values.
namespace torvex::json {

// In quotes. Quotes, backslashes and control characters are escaped; bytes that are no UTF-8, which
// a file in another encoding may hold, become the replacement character.
std::string text(std::string_view text);

// Fixed point; null for what is no finite number or needs more than 40 digits.
std::string number(double value, int decimals);

std::string integer(std::int64_t value);
std::string boolean(bool value);
inline constexpr const char* null = "null";

std::string array(const std::vector<std::string>& values);
std::string texts(const std::vector<std::string>& texts);  // an array of texts

using Members = std::initializer_list<std::pair<std::string_view, std::string>>;
std::string object(Members members);

// An object with each member on a line of its own, and an end of line.
std::string document(Members members);

}  // namespace torvex::json
