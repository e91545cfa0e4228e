#include "base/text_file.hpp"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace torvex {

std::optional<std::string> read_text_file(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size > largest_text_bytes) {
        return std::nullopt;
    }
    std::string text(size, '\0');
    if (!file.read(text.data(), static_cast<std::streamsize>(text.size()))) {
        return std::nullopt;
    }
    text.erase(0, text.size() - without_byte_order_mark(text).size());
    return text;
}

std::string_view without_byte_order_mark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

std::vector<std::string_view> split_lines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        lines.push_back(line);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}

std::string_view left_adjusted(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t");
    return start == std::string_view::npos ? std::string_view{} : text.substr(start);
}

std::string_view trimmed(std::string_view text) {
    text = left_adjusted(text);
    const std::size_t last = text.find_last_not_of(" \t");
    return last == std::string_view::npos ? std::string_view{} : text.substr(0, last + 1);
}

std::string printable(std::string_view text, std::size_t longest) {
    std::string shown;
    for (const char c : text.substr(0, longest)) {
        const auto byte = static_cast<unsigned char>(c);
        shown += byte < 0x20 || byte > 0x7e ? '?' : c;
    }
    return text.size() > longest ? shown + "..." : shown;
}

std::string excerpt(std::string_view text) {
    return '"' + printable(text) + '"';
}

std::string place(std::string_view file, long line) {
    return std::string(file) + ", line " + std::to_string(line);
}

}  // namespace torvex
