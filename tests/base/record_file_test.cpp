#include "base/record_file.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/text_file.hpp"
#include "support/failures.hpp"
#include "support/memory_file.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::MemoryFile;
using test::TemporaryDirectory;
using testing::HasSubstr;

std::string data_file(const std::string& name) {
    return std::string(TORVEX_TEST_DATA) + "/" + name;
}

std::string little_endian(std::int32_t value) {
    std::string bytes(4, '\0');
    const auto bits = static_cast<std::uint32_t>(value);
    for (unsigned n = 0; n < 4; ++n) {
        bytes[n] = static_cast<char>((bits >> (8 * n)) & 0xFFU);
    }
    return bytes;
}

std::string subrecord(std::int32_t front, const std::string& data, std::int32_t behind) {
    return little_endian(front) + data + little_endian(behind);
}

// 1, 2, ..., n.
std::vector<std::int32_t> count_to(std::size_t n) {
    std::vector<std::int32_t> values(n);
    std::iota(values.begin(), values.end(), 1);
    return values;
}

// Why the first record of such a file cannot be read as three integers.
std::string fault_of(const std::string& bytes) {
    const MemoryFile file;
    file.set(bytes);
    RecordReader reader;
    EXPECT_TRUE(reader.open(file.path()));
    std::array<std::int32_t, 3> values{};
    EXPECT_FALSE(reader.read(std::span(values)));
    EXPECT_EQ(values, (std::array<std::int32_t, 3>{})) << "the target was touched";
    return reader.fault();
}

TEST(RecordWriter, WritesTheBytesOfFortran) {
    const TemporaryDirectory dir;
    const std::array<float, 4> reals{1.0F, 2.0F, 3.0F, 4.0F};
    RecordWriter writer(dir.file("a"));
    writer.record(std::int32_t{101});
    writer.record(std::int32_t{3}, std::int32_t{-2}, std::int32_t{2147483647});
    writer.record(std::int32_t{7}, 2.5F, std::span(reals), std::int32_t{-1});
    writer.record();
    writer.record(-0.0F);
    writer.commit();
    EXPECT_EQ(read_text_file(dir.file("a")), read_text_file(data_file("whole_records.bin")));
}

TEST(RecordWriter, CutsRecordsAsFortranDoes) {
    const TemporaryDirectory dir;
    RecordWriter writer(dir.file("a"), 16);
    for (const std::size_t n : {0U, 3U, 4U, 5U, 8U, 9U, 12U}) {
        const std::vector<std::int32_t> values = count_to(n);
        writer.record(std::span(values));
    }
    const std::array<std::int32_t, 3> first{1, 2, 3};
    const std::array<std::int32_t, 3> second{4, 5, 6};
    writer.record(std::span(first), 0.5F, std::span(second));
    writer.commit();
    EXPECT_EQ(read_text_file(dir.file("a")), read_text_file(data_file("cut_records.bin")));
}

TEST(RecordWriter, WritesARecordInPieces) {
    const TemporaryDirectory dir;
    RecordWriter writer(dir.file("a"), 16);
    const std::vector<std::int32_t> values = count_to(9);
    writer.begin_record(36);
    for (const std::int32_t& value : values) {
        writer.append(std::as_bytes(std::span(&value, 1)));
    }
    writer.end_record();
    writer.commit();

    RecordReader reader;
    std::vector<std::int32_t> read(9);
    ASSERT_TRUE(reader.open(dir.file("a")));
    ASSERT_TRUE(reader.read(std::span(read))) << reader.fault();
    EXPECT_EQ(read, values);
    EXPECT_EQ(dir.read("a").size(), 36U + 3U * 8U);
}

TEST(RecordWriter, WritesArraysWithTheFirstIndexFastest) {
    const TemporaryDirectory dir;
    Field3 field(2, 3, 2);
    for (int k = 1; k <= 2; ++k) {
        for (int j = 1; j <= 3; ++j) {
            for (int i = 1; i <= 2; ++i) {
                field(i, j, k) = static_cast<float>(100 * i + 10 * j + k);
            }
        }
    }
    RecordWriter writer(dir.file("a"));
    writer.record(field);
    writer.commit();
    RecordReader reader;
    std::array<float, 12> v{};
    ASSERT_TRUE(reader.open(dir.file("a")));
    ASSERT_TRUE(reader.read(std::span(v)));
    EXPECT_THAT(v,
                testing::ElementsAre(111, 211, 121, 221, 131, 231, 112, 212, 122, 222, 132, 232));
}

TEST(RecordWriter, WithoutCommitTheEarlierFileStays) {
    const TemporaryDirectory dir;
    dir.write("a", "earlier");
    {
        RecordWriter writer(dir.file("a"));
        writer.record(std::int32_t{101});
    }
    EXPECT_EQ(dir.read("a"), "earlier");
    EXPECT_FALSE(dir.has("a.tmp"));
}

TEST(RecordWriter, FullDiskStopsInTheMiddleOfARecord) {
    const TemporaryDirectory dir;
    dir.write("a", "earlier");
    const Field3 field(50, 50, 20);
    const test::FileSizeLimit limit(100000);
    const std::optional<Stop> s = test::stop_of([&] {
        RecordWriter writer(dir.file("a"));
        writer.record(field);
        writer.commit();
    });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 1);
    EXPECT_EQ(s->where(), dir.file("a"));
    EXPECT_EQ(dir.read("a"), "earlier");
    EXPECT_FALSE(dir.has("a.tmp"));
}

TEST(RecordReader, ReadsWhatFortranWrote) {
    RecordReader reader;
    ASSERT_TRUE(reader.open(data_file("whole_records.bin")));
    std::int32_t a = 0;
    std::int32_t b = 0;
    std::int32_t c = 0;
    float real = 0;
    std::array<float, 4> reals{};
    ASSERT_TRUE(reader.read(a));
    EXPECT_EQ(a, 101);
    ASSERT_TRUE(reader.read(a, b, c));
    EXPECT_EQ(a, 3);
    EXPECT_EQ(b, -2);
    EXPECT_EQ(c, 2147483647);
    ASSERT_TRUE(reader.read(a, real, std::span(reals), b));
    EXPECT_EQ(a, 7);
    EXPECT_EQ(real, 2.5F);
    EXPECT_THAT(reals, testing::ElementsAre(1.0F, 2.0F, 3.0F, 4.0F));
    EXPECT_EQ(b, -1);
    ASSERT_TRUE(reader.read());
    ASSERT_TRUE(reader.read(real));
    EXPECT_TRUE(std::signbit(real));
    EXPECT_TRUE(reader.at_end());
    EXPECT_FALSE(reader.read(a));
    EXPECT_THAT(reader.fault(), HasSubstr("record 6 is missing"));
}

TEST(RecordReader, JoinsSubrecordsThatFortranCut) {
    RecordReader reader;
    ASSERT_TRUE(reader.open(data_file("cut_records.bin")));
    for (const std::size_t n : {0U, 3U, 4U, 5U, 8U, 9U, 12U}) {
        std::vector<std::int32_t> values(n);
        EXPECT_EQ(reader.next_size(), static_cast<std::int64_t>(4 * n));
        ASSERT_TRUE(reader.read(std::span(values))) << reader.fault();
        EXPECT_EQ(values, count_to(n));
    }
    std::array<std::int32_t, 3> first{};
    std::array<std::int32_t, 3> second{};
    float real = 0;
    ASSERT_TRUE(reader.read(std::span(first), real, std::span(second))) << reader.fault();
    EXPECT_THAT(first, testing::ElementsAre(1, 2, 3));
    EXPECT_EQ(real, 0.5F);
    EXPECT_THAT(second, testing::ElementsAre(4, 5, 6));
    EXPECT_TRUE(reader.at_end());
}

TEST(RecordReader, SkipsByTheLengths) {
    RecordReader reader;
    ASSERT_TRUE(reader.open(data_file("cut_records.bin")));
    for (int n = 1; n <= 6; ++n) {
        ASSERT_TRUE(reader.skip()) << reader.fault();
    }
    std::vector<std::int32_t> values(12);
    ASSERT_TRUE(reader.read(std::span(values)));
    EXPECT_EQ(values, count_to(12));
    ASSERT_TRUE(reader.skip());
    EXPECT_TRUE(reader.at_end());
    EXPECT_FALSE(reader.skip());
}

// A file of four gibibytes of which only the lengths take room on the disk.
TEST(RecordReader, SkipsRecordsBeyondTwoGibibytes) {
    const TemporaryDirectory dir;
    const int file = open(dir.file("a").c_str(), O_RDWR | O_CREAT, 0600);
    ASSERT_GE(file, 0);
    constexpr std::int64_t most = 2147483639;
    std::int64_t at = 0;
    bool written = true;
    const auto put = [&](std::int32_t front, std::int64_t length, std::int32_t behind) {
        written = written && pwrite(file, little_endian(front).data(), 4, at) == 4 &&
                  pwrite(file, little_endian(behind).data(), 4, at + 4 + length) == 4;
        at += length + 8;
    };
    put(2147483639, most, 2147483639);
    put(-2147483639, most, 2147483639);
    put(1, 1, -1);
    put(4, 4, 4);
    written = written && pwrite(file, little_endian(77).data(), 4, at - 8) == 4;
    close(file);
    if (!written) {
        GTEST_SKIP() << "the file system has no room for large sparse files";
    }

    RecordReader reader;
    ASSERT_TRUE(reader.open(dir.file("a")));
    EXPECT_EQ(reader.next_size(), most);
    ASSERT_TRUE(reader.skip()) << reader.fault();
    EXPECT_EQ(reader.next_size(), most + 1);
    ASSERT_TRUE(reader.skip()) << reader.fault();
    std::int32_t value = 0;
    ASSERT_TRUE(reader.read(value)) << reader.fault();
    EXPECT_EQ(value, 77);
    EXPECT_TRUE(reader.at_end());
}

TEST(RecordReader, WrongSizeIsToldWithoutTouchingTheTarget) {
    EXPECT_THAT(fault_of(subrecord(8, std::string(8, 'x'), 8)),
                HasSubstr("record 1 has 8 bytes, expected 12"));
    EXPECT_THAT(fault_of(subrecord(16, std::string(16, 'x'), 16)),
                HasSubstr("record 1 has 16 bytes, expected 12"));
}

TEST(RecordReader, DamagedLengthsAreTold) {
    const std::string data(12, 'x');
    EXPECT_THAT(fault_of(subrecord(12, data, 13)), HasSubstr("is 13, expected 12"));
    EXPECT_THAT(fault_of(subrecord(12, data, -12)), HasSubstr("is -12, expected 12"));
    EXPECT_THAT(fault_of(subrecord(2147483647, data, 12)), HasSubstr("impossible length"));
    EXPECT_THAT(fault_of(subrecord(std::numeric_limits<std::int32_t>::min(), data, 12)),
                HasSubstr("impossible length -2147483648"));
    EXPECT_THAT(fault_of(subrecord(2147483639, data, 12)), HasSubstr("beyond the end of the file"));
    EXPECT_THAT(fault_of(subrecord(13, data, 12)), HasSubstr("beyond the end of the file"));
}

TEST(RecordReader, SignsMustFitTheirPlaceInTheRecord) {
    const std::string eight(8, 'x');
    const std::string four(4, 'x');
    // A record that promises to go on, at the end of the file and in front of another record.
    EXPECT_THAT(fault_of(subrecord(-8, eight, 8)), HasSubstr("is cut off"));
    EXPECT_THAT(fault_of(subrecord(-8, eight, 8) + subrecord(4, four, 4)),
                HasSubstr("is 4, expected -4"));
    // A first subrecord that claims a predecessor.
    EXPECT_THAT(fault_of(subrecord(-8, eight, -8) + subrecord(4, four, -4)),
                HasSubstr("is -8, expected 8"));
}

TEST(RecordReader, EveryCutOffRecordIsTold) {
    const std::string whole =
        subrecord(-8, std::string(8, 'x'), 8) + subrecord(4, std::string(4, 'x'), -4);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_THAT(fault_of(whole.substr(0, length)), HasSubstr("record 1 ")) << length;
    }
}

TEST(RecordReader, EveryPrefixOfAFileEndsInAFault) {
    const MemoryFile file;
    const std::string whole = read_text_file(data_file("cut_records.bin")).value();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        file.set(whole.substr(0, length));
        RecordReader reader;
        ASSERT_TRUE(reader.open(file.path()));
        int records = 0;
        while (reader.skip()) {
            ++records;
        }
        EXPECT_LT(records, 8) << length;
        EXPECT_FALSE(reader.fault().empty());
        EXPECT_TRUE(reader.cut_off());
    }
}

TEST(RecordReader, AnyBytesAreReadToAnEnd) {
    const MemoryFile file;
    const std::string whole = read_text_file(data_file("cut_records.bin")).value();
    std::mt19937 random(20240817);
    for (int round = 0; round < 3000; ++round) {
        std::string bytes = whole;
        for (int n = 0; n <= round % 4; ++n) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        file.set(bytes);
        RecordReader reader;
        ASSERT_TRUE(reader.open(file.path()));
        std::array<std::int32_t, 4> four{};
        int records = 0;
        while (round % 2 == 0 ? reader.skip() : reader.read(std::span(four))) {
            ++records;
        }
        EXPECT_LE(records, static_cast<int>(whole.size() / 8));
        EXPECT_FALSE(reader.fault().empty());
    }
}

TEST(RecordReader, FirstFaultStays) {
    const TemporaryDirectory dir;
    dir.write("a", subrecord(8, std::string(8, 'x'), 8));
    RecordReader reader;
    ASSERT_TRUE(reader.open(dir.file("a")));
    std::int32_t value = 0;
    EXPECT_FALSE(reader.read(value));
    const std::string fault = reader.fault();
    EXPECT_FALSE(reader.skip());
    EXPECT_EQ(reader.next_size(), std::nullopt);
    EXPECT_EQ(reader.fault(), fault);
    EXPECT_FALSE(reader.cut_off()) << "of another size, but whole";
}

TEST(RecordReader, OpensRegularFilesOnly) {
    const TemporaryDirectory dir;
    RecordReader missing;
    EXPECT_FALSE(missing.open(dir.file("none")));
    EXPECT_THAT(missing.fault(), HasSubstr("No such file or directory"));
    RecordReader directory;
    EXPECT_FALSE(directory.open(dir.path()));
    EXPECT_THAT(directory.fault(), HasSubstr("no regular file"));
    ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
    RecordReader pipe;
    EXPECT_FALSE(pipe.open(dir.file("pipe")));
    EXPECT_THAT(pipe.fault(), HasSubstr("no regular file"));
}

}  // namespace
}  // namespace torvex
