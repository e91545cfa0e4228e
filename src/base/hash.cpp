#include "base/hash.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

namespace torvex {

void Hash::add(std::span<const float> values) {
    for (const float value : values) {
        add(std::bit_cast<std::uint32_t>(value));
    }
}

void Hash::add(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const std::size_t n = std::min(bytes.size(), sizeof(std::uint32_t));
        std::uint32_t word = 0;
        std::memcpy(&word, bytes.data(), n);
        add(word);
        bytes = bytes.subspan(n);
    }
}

std::string Hash::text() const {
    constexpr std::array digits{'0', '1', '2', '3', '4', '5', '6', '7',
                                '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
    constexpr int digit_bits = 4;
    std::string text;
    for (int shift = 64 - digit_bits; shift >= 0; shift -= digit_bits) {
        text += digits[(value_ >> shift) & 0xF];
    }
    return text;
}

std::optional<std::string> hash_of_file(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    Hash hash;
    constexpr std::size_t piece_bytes = 1
                                        << 20;  // a multiple of a word, so that pieces do not show
    std::vector<char> piece(piece_bytes);
    while (file) {
        file.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        hash.add(std::as_bytes(std::span(piece)).first(static_cast<std::size_t>(file.gcount())));
    }
    if (!file.eof() || file.bad()) {
        return std::nullopt;
    }
    return hash.text();
}

}  // namespace torvex
