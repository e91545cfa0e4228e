// The typed readers of keyed blocks and their five statuses.

#include "case/keyed_block.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "support/failures.hpp"

namespace torvex {
namespace {

using test::stop_of;

CaseText text(const std::string& body) {
    return {"case.tin", body};
}

KeyStatus integer_in(const std::string& body, std::int32_t& value, const char* key = "n") {
    return read_integer_key(text(body), "block", key, value);
}

std::int32_t integer_of(const std::string& body) {
    std::int32_t value = -99;
    EXPECT_EQ(integer_in(body, value), KeyStatus::read) << body;
    return value;
}

KeyStatus status_of(const std::string& body) {
    std::int32_t value = -99;
    const KeyStatus status = integer_in(body, value);
    EXPECT_EQ(value, -99) << "a failed read must leave its destination alone";
    return status;
}

TEST(KeyedBlock, StatusesHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(KeyStatus::read), 0);
    EXPECT_EQ(static_cast<int>(KeyStatus::no_rewind), 1);
    EXPECT_EQ(static_cast<int>(KeyStatus::no_block), 2);
    EXPECT_EQ(static_cast<int>(KeyStatus::no_key), 3);
    EXPECT_EQ(static_cast<int>(KeyStatus::bad_value), 4);
}

TEST(KeyedBlock, StatusTellsWhatWasMissing) {
    std::int32_t value = 5;
    const CaseText unavailable{"case.tin", "&block\nn = 1\n/\n", false};
    EXPECT_EQ(read_integer_key(unavailable, "block", "n", value), KeyStatus::no_rewind);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(status_of(""), KeyStatus::no_block);
    EXPECT_EQ(status_of("&other\nn = 1\n/\n"), KeyStatus::no_block);
    EXPECT_EQ(status_of("&block\nm = 1\n/\nn = 1\n"), KeyStatus::no_key);
    EXPECT_EQ(status_of("&block\nm = 1\n"), KeyStatus::no_key) << "the end of the file is one too";
    EXPECT_EQ(status_of("&block"), KeyStatus::no_key);
    EXPECT_EQ(status_of("&block\nn = x\n/\n"), KeyStatus::bad_value);
    EXPECT_EQ(status_of("&block\nn =\n/\n"), KeyStatus::bad_value);
    EXPECT_EQ(status_of("&block\nn = 1.5\n/\n"), KeyStatus::bad_value);
    EXPECT_EQ(status_of("&block\nn = 99999999999\n/\n"), KeyStatus::bad_value);
}

TEST(KeyedBlock, FirstLineOfARepeatedKeyCounts) {
    EXPECT_EQ(integer_of("&block\nn = 1\nn = 2\n/\n"), 1);
}

TEST(KeyedBlock, KeyComparesWholeAndWithCase) {
    EXPECT_EQ(status_of("&block\nN = 1\n/\n"), KeyStatus::no_key);
    EXPECT_EQ(integer_of("&block\nnn = 1\nn2 = 2\nn = 3\n/\n"), 3);
    EXPECT_EQ(integer_of("&block\n\t  n \t = 4\n/\n"), 4);
}

TEST(KeyedBlock, BlockComparesByItsBeginningAndWithCase) {
    EXPECT_EQ(integer_of("&block2\nn = 1\n/\n&block\nn = 2\n/\n"), 1);
    EXPECT_EQ(integer_of("   &blocks of stone\nn = 1\n/\n"), 1);
    EXPECT_EQ(status_of("&BLOCK\nn = 1\n/\n"), KeyStatus::no_block);
    EXPECT_EQ(status_of("& block\nn = 1\n/\n"), KeyStatus::no_block);
    EXPECT_EQ(status_of("x &block\nn = 1\n/\n"), KeyStatus::no_block);
    EXPECT_EQ(status_of("$block\nn = 1\n/\n"), KeyStatus::no_block);
}

TEST(KeyedBlock, BlockEndsAtALineThatBeginsWithSlash) {
    EXPECT_EQ(status_of("&block\n  / n = 1\nn = 2\n"), KeyStatus::no_key);
    EXPECT_EQ(integer_of("&block\nn = 1 /\n/\n"), 1);
    EXPECT_EQ(integer_of("&block\nm = /\nn = 1\n/\n"), 1) << "only the first word ends a block";
}

TEST(KeyedBlock, LinesWithoutAKeyAreSkipped) {
    EXPECT_EQ(integer_of("&block\n! n = 5\n\nremark\n# n = 6\nn = 1 ! not 2\n/\n"), 1);
}

TEST(KeyedBlock, KeyOnTheLineOfTheNameIsNoLineOfTheBlock) {
    EXPECT_EQ(status_of("&block n = 1\n/\n"), KeyStatus::no_key);
}

TEST(KeyedBlock, CarriageReturnsAreDropped) {
    EXPECT_EQ(integer_of("&block\r\nm = 2\r\nn = 1\r\n/\r\n"), 1);
    std::string value;
    EXPECT_EQ(read_text_key(text("&block\r\nt = abc\r\n/\r\n"), "block", "t", value, 20),
              KeyStatus::read);
    EXPECT_EQ(value, "abc");
}

TEST(KeyedBlock, ReadsDoNotDependOnEachOther) {
    const CaseText file = text("&block\na = 1\nb = 2\n/\n&other\na = 3\n/\n");
    std::int32_t value = 0;
    EXPECT_EQ(read_integer_key(file, "other", "a", value), KeyStatus::read);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(read_integer_key(file, "block", "b", value), KeyStatus::read);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(read_integer_key(file, "block", "a", value), KeyStatus::read);
    EXPECT_EQ(value, 1);
}

TEST(KeyedBlock, Reals) {
    const CaseText file = text("&block\na = 1.5D1\nb = -7\nc = nan\nd = 1e99\n/\n");
    float value = 0;
    EXPECT_EQ(read_real_key(file, "block", "a", value), KeyStatus::read);
    EXPECT_EQ(value, 15.0F);
    EXPECT_EQ(read_real_key(file, "block", "b", value), KeyStatus::read);
    EXPECT_EQ(value, -7.0F);
    EXPECT_EQ(read_real_key(file, "block", "c", value), KeyStatus::bad_value);
    EXPECT_EQ(read_real_key(file, "block", "d", value), KeyStatus::bad_value);
    EXPECT_EQ(value, -7.0F);
}

TEST(KeyedBlock, RealArrays) {
    const CaseText file = text(
        "&block\nfull = 1, 2 3\nfew = 4, 5\nhole = 6, , 7\nsame = 3*8\nmore = 1 2 3 4\n"
        "none =\nbad = 1, x\n/\n");
    const auto read = [&file](const char* key, std::array<float, 3>& values) {
        values = {-1, -2, -3};
        return read_real_array_key(file, "block", key, values);
    };
    using Values = std::array<float, 3>;
    Values values{};
    EXPECT_EQ(read("full", values), KeyStatus::read);
    EXPECT_EQ(values, (Values{1, 2, 3}));
    EXPECT_EQ(read("few", values), KeyStatus::read);
    EXPECT_EQ(values, (Values{4, 5, -3}));
    EXPECT_EQ(read("hole", values), KeyStatus::read);
    EXPECT_EQ(values, (Values{6, -2, 7}));
    EXPECT_EQ(read("same", values), KeyStatus::read);
    EXPECT_EQ(values, (Values{8, 8, 8}));
    EXPECT_EQ(read("more", values), KeyStatus::read);
    EXPECT_EQ(values, (Values{1, 2, 3}));
    EXPECT_EQ(read("none", values), KeyStatus::bad_value);
    EXPECT_EQ(read("bad", values), KeyStatus::bad_value);
}

TEST(KeyedBlock, Logicals) {
    const CaseText file = text("&block\na = .true.\nb = f\nc = 1\n/\n");
    bool value = false;
    EXPECT_EQ(read_logical_key(file, "block", "a", value), KeyStatus::read);
    EXPECT_TRUE(value);
    EXPECT_EQ(read_logical_key(file, "block", "b", value), KeyStatus::read);
    EXPECT_FALSE(value);
    EXPECT_EQ(read_logical_key(file, "block", "c", value), KeyStatus::bad_value);
}

struct TextCase {
    const char* written;
    const char* value;
};

TEST(KeyedBlock, TextsStandWithOrWithoutQuotes) {
    for (const TextCase& c : {TextCase{"'a b, c'", "a b, c"},
                              {"\"it's\"", "it's"},
                              {"'it''s'", "it's"},
                              {"abc", "abc"},
                              {"dir/sub/a.shp", "dir/sub/a.shp"},
                              {"/root/a.shp", "/root/a.shp"},
                              {"abc def", "abc"},
                              {"abc,def", "abc"},
                              {"abc!def", "abc"},
                              {"abc ! remark", "abc"},
                              {"", ""},
                              {"   ! remark", ""},
                              {"12", "12"},
                              {"a=b", "a=b"},
                              {"''", ""},
                              {"'abc  '", "abc"}}) {
        std::string value = "old";
        EXPECT_EQ(read_text_key(text("&block\nt = " + std::string(c.written) + "\n/\n"), "block",
                                "t", value, 20),
                  KeyStatus::read)
            << c.written;
        EXPECT_EQ(value, c.value) << c.written;
    }
}

TEST(KeyedBlock, TextIsCutToItsLength) {
    std::string value;
    EXPECT_EQ(read_text_key(text("&block\nt = abcdefgh\n/\n"), "block", "t", value, 5),
              KeyStatus::read);
    EXPECT_EQ(value, "abcde");
}

TEST(KeyedBlock, OpenQuoteCannotBeRead) {
    std::string value = "old";
    EXPECT_EQ(read_text_key(text("&block\nt = 'abc\n/\n'\n"), "block", "t", value, 20),
              KeyStatus::bad_value);
    EXPECT_EQ(value, "old");
}

TEST(KeyedBlock, TableKeyStopsAtABadValueWithItsPlace) {
    CaseSettings settings;
    const CaseGroup& block = keyed_block("nest_points");
    const auto stopped = stop_of([&] {
        read_table_key(text("\n&nest_points\n\nnest_mode = many\n/\n"), block.name,
                       block.keys.front(), settings);
    });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_STREQ(stopped->what(),
                 "block &nest_points: key nest_mode: cannot read \"many\", expected an integer\n"
                 "  in case.tin, line 4");
}

TEST(KeyedBlock, TableKnowsItsThreeBlocks) {
    EXPECT_EQ(keyed_block("shp_parameters").name, "shp_parameters");
    EXPECT_THROW(keyed_block("no_such_block"), std::logic_error);
}

}  // namespace
}  // namespace torvex
