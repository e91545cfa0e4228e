#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace torvex {

// A hash by which changed values are told from unchanged ones: FNV-1a of 64 bits (Fowler, Noll and
// Vo 1991), here over words of four bytes, so that large maps take no time worth speaking of. It
// guards against mistakes, not against malice.
class Hash {
 public:
    void add(std::uint32_t word) { value_ = (value_ ^ word) * prime; }
    void add(std::span<const float> values);     // by their bits
    void add(std::span<const std::byte> bytes);  // the last word is filled up with zeros
    std::string text() const;                    // sixteen hexadecimal digits

 private:
    static constexpr std::uint64_t prime = 1099511628211ULL;
    std::uint64_t value_ = 14695981039346656037ULL;
};

// The hash of the bytes of a file, or nothing if it cannot be read.
std::optional<std::string> hash_of_file(const std::string& path);

}  // namespace torvex
