#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvex {

// A whole text file in memory, without the mark that some editors put in front; nothing if it is
// absent, no regular file, unreadable, or larger than any text of a run (largest_text_bytes).
std::optional<std::string> read_text_file(const std::string& path);

inline constexpr std::size_t largest_text_bytes = std::size_t{256} * 1024 * 1024;

// A text without the byte order mark of UTF-8.
std::string_view without_byte_order_mark(std::string_view text);

// The lines of a text without their ends (LF or CR LF). A last line without an end counts.
std::vector<std::string_view> split_lines(std::string_view text);

// Without blanks and tabs on the left, or on both sides.
std::string_view left_adjusted(std::string_view text);
std::string_view trimmed(std::string_view text);

// Text of any origin fit for a one-line message: all but plain characters become "?", and what goes
// on beyond `longest` bytes is cut. excerpt() puts quotes around it.
std::string printable(std::string_view text, std::size_t longest = 60);
std::string excerpt(std::string_view text);

// "name, line 12": how every message names a place in a text file.
std::string place(std::string_view file, long line);

}  // namespace torvex
