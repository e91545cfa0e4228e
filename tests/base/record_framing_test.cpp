#include "base/record_framing.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace torvex {
namespace {

// Tells data from lengths by where they come from, and keeps no data: records of any size pass.
class CountingSink {
 public:
    explicit CountingSink(std::vector<std::byte>& block) : block_(block) {}

    void operator()(std::span<const std::byte> bytes) {
        total += static_cast<std::int64_t>(bytes.size());
        if (bytes.data() >= block_.data() && bytes.data() < block_.data() + block_.size()) {
            data += static_cast<std::int64_t>(bytes.size());
            return;
        }
        ASSERT_EQ(bytes.size(), 4U);
        std::int32_t length = 0;
        std::memcpy(&length, bytes.data(), 4);
        lengths.push_back(length);
        data_in_front.push_back(data);
    }

    std::vector<std::int32_t> lengths;
    std::vector<std::int64_t> data_in_front;  // of each length
    std::int64_t data = 0;
    std::int64_t total = 0;

 private:
    std::vector<std::byte>& block_;
};

// A record of so many bytes, in pieces of at most one block.
void pass(RecordFraming& framing, std::vector<std::byte>& block, std::int64_t bytes) {
    framing.begin_record(bytes);
    for (std::int64_t left = bytes; left > 0;) {
        const auto piece = std::min(left, static_cast<std::int64_t>(block.size()));
        framing.append(std::span(block).first(static_cast<std::size_t>(piece)));
        left -= piece;
    }
    framing.end_record();
}

struct Passed {
    std::vector<std::int32_t> lengths;
    std::vector<std::int64_t> data_in_front;
    std::int64_t total = 0;
};

Passed pass_record(std::int64_t bytes, std::size_t block_size,
                   std::int64_t limit = max_subrecord_bytes) {
    std::vector<std::byte> block(block_size);
    CountingSink sink(block);
    RecordFraming framing(std::ref(sink), limit);
    pass(framing, block, bytes);
    return {sink.lengths, sink.data_in_front, sink.total};
}

using Lengths = std::vector<std::int32_t>;
using Places = std::vector<std::int64_t>;

TEST(RecordFraming, RecordOfExactlyTheLimitIsOneSubrecord) {
    const Passed p = pass_record(2147483639, 1 << 20);
    EXPECT_EQ(p.lengths, (Lengths{2147483639, 2147483639}));
    EXPECT_EQ(p.total, 2147483647);
}

TEST(RecordFraming, OneByteMoreGivesTwo) {
    const Passed p = pass_record(2147483640, 1 << 20);
    EXPECT_EQ(p.lengths, (Lengths{-2147483639, 2147483639, 1, -1}));
    EXPECT_EQ(p.data_in_front, (Places{0, 2147483639, 2147483639, 2147483640}));
    EXPECT_EQ(p.total, 2147483656);
}

TEST(RecordFraming, ThreeSubrecords) {
    const Passed p = pass_record(4294967288, 1 << 20);
    EXPECT_EQ(p.lengths, (Lengths{-2147483639, 2147483639, -2147483639, -2147483639, 10, -10}));
}

TEST(RecordFraming, EmptyRecord) {
    EXPECT_EQ(pass_record(0, 8).lengths, (Lengths{0, 0}));
}

TEST(RecordFraming, TwiceTheLimitIsTwoSubrecordsAndNoEmptyThird) {
    EXPECT_EQ(pass_record(20, 64, 10).lengths, (Lengths{-10, 10, 10, -10}));
}

TEST(RecordFraming, PiecesNeedNotFitTheSubrecords) {
    for (const std::size_t block : {1U, 2U, 3U, 7U, 10U, 11U, 64U}) {
        const Passed p = pass_record(25, block, 10);
        EXPECT_EQ(p.lengths, (Lengths{-10, 10, -10, -10, 5, -5})) << block;
        EXPECT_EQ(p.data_in_front, (Places{0, 10, 10, 20, 20, 25})) << block;
        EXPECT_EQ(p.total, 25 + 24) << block;
    }
}

TEST(RecordFraming, RecordsFollowEachOther) {
    std::vector<std::byte> block(64);
    CountingSink sink(block);
    RecordFraming framing(std::ref(sink), 10);
    for (const std::int64_t bytes : {12, 0, 10, 1}) {
        pass(framing, block, bytes);
    }
    EXPECT_EQ(sink.lengths, (Lengths{-10, 10, 2, -2, 0, 0, 10, 10, 1, 1}));
}

TEST(RecordFraming, AnnouncedSizeMustBeKept) {
    const std::vector<std::byte> block(64);
    RecordFraming framing([](std::span<const std::byte>) {}, 10);
    framing.begin_record(12);
    framing.append(std::span(block).first(11));
    EXPECT_THROW(framing.end_record(), std::logic_error);
    EXPECT_THROW(framing.append(std::span(block).first(2)), std::logic_error);
    EXPECT_THROW(framing.begin_record(-1), std::logic_error);
}

TEST(RecordFraming, LimitMustFitALength) {
    const auto with_limit = [](std::int64_t limit) {
        RecordFraming([](std::span<const std::byte>) {}, limit);
    };
    EXPECT_THROW(with_limit(0), std::logic_error);
    EXPECT_THROW(with_limit(max_subrecord_bytes + 1), std::logic_error);
    EXPECT_NO_THROW(with_limit(max_subrecord_bytes));
}

}  // namespace
}  // namespace torvex
