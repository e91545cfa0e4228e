// The hash that tells changed values from unchanged ones.

#include "base/hash.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

std::string hash_of(const std::vector<std::uint32_t>& words) {
    Hash hash;
    for (const std::uint32_t word : words) {
        hash.add(word);
    }
    return hash.text();
}

std::string hash_of_bytes(std::string_view bytes) {
    Hash hash;
    hash.add(std::as_bytes(std::span(bytes)));
    return hash.text();
}

std::string hash_of_floats(const std::vector<float>& values) {
    Hash hash;
    hash.add(std::span<const float>(values));
    return hash.text();
}

// A word below 256 counts as a byte does: the values that Fowler, Noll and Vo published.
TEST(Hash, IsThatOfThePublishedValuesForSmallWords) {
    EXPECT_EQ(hash_of({}), "cbf29ce484222325");
    EXPECT_EQ(hash_of({0}), "af63bd4c8601b7df");
    EXPECT_EQ(hash_of({'a'}), "af63dc4c8601ec8c");
    EXPECT_EQ(hash_of({'f', 'o', 'o', 'b', 'a', 'r'}), "85944171f73967e8");
}

// (basis xor word) times 2^40 + 0x1b3 in 64 bits. The top bit of a word, bit 31, is moved to 71 by
// 2^40 and so is lost; what is left of it is 2^31 * 0x1b3 on top of or off the value of word 0.
TEST(Hash, OfOneLargeWordIsThatWorkedByHand) {
    constexpr std::uint64_t of_zero = 0xaf63bd4c8601b7dfULL;
    constexpr std::uint64_t top = (std::uint64_t{1} << 31U) * 0x1b3U;
    // bit 31 of the basis is set (0x84222325), so that the exclusive or takes it off
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%016llx",
                  static_cast<unsigned long long>(of_zero - top));
    EXPECT_EQ(hash_of({0x80000000U}), text.data());
    EXPECT_EQ(hash_of({0x80000000U}), "af63bc730601b7df");
}

TEST(Hash, GoesByTheOrderOfTheWords) {
    EXPECT_NE(hash_of({1, 2}), hash_of({2, 1}));
    EXPECT_NE(hash_of({0}), hash_of({0, 0}));
}

TEST(Hash, TakesFloatsByTheirBits) {
    EXPECT_EQ(hash_of_floats({1.0F, -2.0F}), hash_of({0x3f800000U, 0xc0000000U}));
    EXPECT_EQ(hash_of_floats({-0.0F}), hash_of({0x80000000U}));
    EXPECT_NE(hash_of_floats({-0.0F}), hash_of_floats({0.0F}));
}

TEST(Hash, FillsTheLastWordOfBytesWithZeros) {
    using namespace std::string_view_literals;
    EXPECT_EQ(hash_of_bytes("\x01\x00\x00\x00\x02"sv), hash_of({1, 2}));
    EXPECT_EQ(hash_of_bytes("\x01\x02\x03\x04"sv), hash_of({0x04030201U}));
    EXPECT_EQ(hash_of_bytes({}), hash_of({}));
}

TEST(HashOfFile, IsThatOfItsBytesHoweverManyPiecesItIsReadIn) {
    const test::TemporaryDirectory directory;
    std::string bytes;
    for (int n = 0; n < (1 << 20) + 7; ++n) {
        bytes += static_cast<char>(n * 31 % 251);
    }
    for (const std::size_t size : {std::size_t{0}, std::size_t{5}, bytes.size()}) {
        directory.write("file", std::string_view(bytes).substr(0, size));
        EXPECT_EQ(hash_of_file(directory.file("file")),
                  hash_of_bytes(std::string_view(bytes).substr(0, size)))
            << size;
    }
}

TEST(HashOfFile, IsNothingWithoutAFile) {
    const test::TemporaryDirectory directory;
    EXPECT_EQ(hash_of_file(directory.file("absent")), std::nullopt);
    EXPECT_EQ(hash_of_file(directory.path().string()), std::nullopt) << "a directory";
}

}  // namespace
}  // namespace torvex
