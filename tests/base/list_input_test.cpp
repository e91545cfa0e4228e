#include "base/list_input.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace torvex {
namespace {

constexpr float kept = -77.0F;

// What one read statement of `count` reals makes of a text, and where it leaves off.
struct RowRead {
    bool good = false;
    std::vector<float> values;
    std::string next_record;
};

// Reads the row as one row and as single items, which must agree, and returns the outcome.
template <std::size_t count>
RowRead read_reals(std::string_view text) {
    RowRead row;
    row.values.assign(count, kept);
    ListInput in(text);
    row.good = in.read_row(row.values.data(), count);

    ListInput other(text);
    std::array<float, count> items{};
    items.fill(kept);
    const bool good = std::apply([&other](auto&... item) { return other.read(item...); }, items);
    EXPECT_EQ(good, row.good) << text;
    EXPECT_EQ(std::vector<float>(items.begin(), items.end()), row.values) << text;
    EXPECT_EQ(other.line(), in.line()) << text;
    EXPECT_EQ(other.at_end(), in.at_end()) << text;
    EXPECT_EQ(other.fault().message(), in.fault().message()) << text;
    EXPECT_EQ(other.fault().line, in.fault().line) << text;

    std::string_view next;
    if (in.read_line(next)) {
        row.next_record = next;
    }
    return row;
}

template <std::size_t count>
void expect_row(std::string_view text, const std::array<float, count>& values,
                std::string_view next_record) {
    const RowRead row = read_reals<count>(text);
    EXPECT_TRUE(row.good) << text;
    EXPECT_EQ(row.values, std::vector<float>(values.begin(), values.end())) << text;
    EXPECT_EQ(row.next_record, next_record) << text;
}

template <std::size_t count>
ListFault fault_of(std::string_view text) {
    ListInput in(text);
    std::array<float, count> values{};
    EXPECT_FALSE(in.read_row(values.data(), count)) << text;
    return in.fault();
}

// The rows below were read by a Fortran runtime with the same outcome, unless told otherwise.

TEST(ListInput, BlanksTabsAndCommasPartValues) {
    expect_row<3>("1 2 3\nnext", {1, 2, 3}, "next");
    expect_row<3>("  1\t2 , 3\nnext", {1, 2, 3}, "next");
    expect_row<3>("1,2,3\nnext", {1, 2, 3}, "next");
    expect_row<3>("1 ,2\t,\t3,\nnext", {1, 2, 3}, "next");
}

TEST(ListInput, AStatementTakesAsManyRecordsAsItNeeds) {
    expect_row<4>("\n\n1\n\n2\n3 4 5\nnext", {1, 2, 3, 4}, "next");
    expect_row<3>("1,\n2,\n3\nnext", {1, 2, 3}, "next");
}

TEST(ListInput, AStatementBeginsAtTheNextRecord) {
    ListInput in("1 2 3 4\n5 6\n");
    std::array<float, 2> row{};
    ASSERT_TRUE(in.read_row(row.data(), 2));
    EXPECT_EQ(row, (std::array{1.0F, 2.0F}));
    EXPECT_EQ(in.line(), 2);
    ASSERT_TRUE(in.read_row(row.data(), 2));
    EXPECT_EQ(row, (std::array{5.0F, 6.0F}));
    EXPECT_TRUE(in.at_end());
}

TEST(ListInput, RestOfTheLastRecordMayHoldAnything) {
    expect_row<2>("1 2 ! comment\nnext", {1, 2}, "next");
    expect_row<2>("1 2 'x / ,, 3*\nnext", {1, 2}, "next");
}

// True if a row of `count` reals leaves values on its record.
template <std::size_t count>
bool leaves_values(std::string_view text) {
    ListInput in(text);
    std::array<float, count> row{};
    EXPECT_TRUE(in.read_row(row.data(), count)) << text;
    return in.row_left_values();
}

TEST(ListInput, ARowTellsOfValuesThatItPassesOver) {
    EXPECT_TRUE(leaves_values<2>("1 2 3 4\n5 6\n"));
    EXPECT_TRUE(leaves_values<2>("1,2,3,4\n"));
    EXPECT_TRUE(leaves_values<2>("1 2\t, -3"));
    EXPECT_TRUE(leaves_values<2>("1\n2 .5\n"));
    EXPECT_TRUE(leaves_values<2>("1 1*2 3\n"));
    EXPECT_TRUE(leaves_values<2>("5*1.5\n"));
    EXPECT_TRUE(leaves_values<2>(",, 7\n"));
}

TEST(ListInput, ARowThatEndsWithItsRecordLeavesNothing) {
    for (const char* text : {"1 2\n3 4\n", "1 2", "1,2,\n3", "1 2 \t \r\n3", "2*1\n3", "1 /3 4\n",
                             "1 2 / 3 4\n", "/\n3", "1 2 ! 3\n", "1 2 # 3 4\n", "1 2 end\n"}) {
        EXPECT_FALSE(leaves_values<2>(text)) << text;
    }
}

TEST(ListInput, EachRowTellsOfItsOwnRecord) {
    ListInput in("1 2 3\n4 5\n2*6 7\n8*\n");
    std::array<float, 2> row{};
    for (const bool left : {true, false, true, true}) {
        ASSERT_TRUE(in.read_row(row.data(), 2));
        EXPECT_EQ(in.row_left_values(), left) << in.line();
    }
}

TEST(ListInput, NumbersThatFollowAreFoundBehindBlankLines) {
    const auto line_of_number = [](std::string_view text) {
        ListInput in(text);
        return in.number_follows() ? in.line() : 0L;
    };
    EXPECT_EQ(line_of_number("7"), 1);
    EXPECT_EQ(line_of_number(" \r\n\n\t-7"), 3);
    EXPECT_EQ(line_of_number(""), 0);
    EXPECT_EQ(line_of_number(" \n\n"), 0);
    EXPECT_EQ(line_of_number("\nend 7"), 0);
}

// Read in one pass, this takes a moment; word by word for every copy, it takes minutes.
TEST(ListInput, CopiesOfALongWordAreNotReadAgain) {
    constexpr std::size_t columns = 400'000;
    const std::string zeros(100'000, '0');
    const std::string text = "300000*" + zeros + "7 100000*\n1";
    std::vector<float> row(columns, kept);
    ListInput in(text);
    ASSERT_TRUE(in.read_row(row.data(), columns));
    EXPECT_FALSE(in.row_left_values());
    EXPECT_EQ(row[0], 7.0F);
    EXPECT_EQ(row[299'999], 7.0F);
    EXPECT_EQ(row[300'000], kept);
    EXPECT_EQ(row[columns - 1], kept);
    EXPECT_EQ(in.line(), 2);
}

TEST(ListInput, LongListsOfNullsAreReadInOnePass) {
    constexpr std::size_t columns = 1'000'000;
    std::vector<float> row(columns, kept);
    const std::string text = std::string(columns - 1, ',') + " 4\n";
    ListInput in(text);
    ASSERT_TRUE(in.read_row(row.data(), columns));
    EXPECT_EQ(row[columns - 2], kept);
    EXPECT_EQ(row[columns - 1], 4.0F);
}

TEST(ListInput, NullsLeaveTheirItemsAlone) {
    expect_row<3>(",1,,2\nnext", {kept, 1, kept}, "next");
    expect_row<3>("1 ,, 2\nnext", {1, kept, 2}, "next");
    expect_row<3>("1 , , 2\nnext", {1, kept, 2}, "next");
    expect_row<3>(",,,\nnext", {kept, kept, kept}, "next");
    expect_row<3>("1,,\n3\nnext", {1, kept, 3}, "next");
}

TEST(ListInput, ACommaOnTheNextLineBelongsToTheValueBefore) {
    expect_row<3>("1\n,2\n3\nnext", {1, 2, 3}, "next");
    expect_row<3>("1 \n , \n 3\n5\nnext", {1, 3, 5}, "next");
    expect_row<3>("1,\n,3\nnext", {1, kept, 3}, "next");
    expect_row<3>(",,\n5\nnext", {kept, kept, 5}, "next");
}

TEST(ListInput, TheCommaOfALastValueIsNotLookedForInTheNextStatement) {
    ListInput in("1\n,2\n");
    float a = kept;
    float b = kept;
    ASSERT_TRUE(in.read(a));
    ASSERT_TRUE(in.read(b));
    EXPECT_EQ(a, 1.0F);
    EXPECT_EQ(b, kept);
}

TEST(ListInput, RepeatCountsGiveTheirValueSoManyTimes) {
    expect_row<3>("3*0.03\nnext", {0.03F, 0.03F, 0.03F}, "next");
    expect_row<4>("3*0.5 7 8\nnext", {0.5F, 0.5F, 0.5F, 7}, "next");
    expect_row<4>("1,2*+2,3\nnext", {1, 2, 2, 3}, "next");
    expect_row<2>("1*2 3\nnext", {2, 3}, "next");
}

TEST(ListInput, ABareRepeatCountLeavesSoManyItemsAlone) {
    expect_row<3>("2* 7 8\nnext", {kept, kept, 7}, "next");
    expect_row<3>("2*,7 8\nnext", {kept, kept, 7}, "next");
    expect_row<3>("1 2*\nnext", {1, kept, kept}, "next");
    expect_row<2>("2*\n3 4\nnext", {kept, kept}, "3 4");
}

TEST(ListInput, CopiesBeyondTheStatementAreDropped) {
    expect_row<2>("5*1.5\n5 6\n", {1.5F, 1.5F}, "5 6");
    ListInput in("3*7\n1 2\n");
    float a = 0;
    float b = 0;
    ASSERT_TRUE(in.read(a));
    ASSERT_TRUE(in.read(a, b));
    EXPECT_EQ(a, 1.0F);
    EXPECT_EQ(b, 2.0F);
}

// The Fortran runtime ends at counts of nine digits.
TEST(ListInput, HugeRepeatCountsCostNothing) {
    expect_row<3>("2147483647*4\nnext", {4, 4, 4}, "next");
    expect_row<3>("2147483647*\nnext", {kept, kept, kept}, "next");
}

TEST(ListInput, ImpossibleRepeatCountsAreRefused) {
    EXPECT_EQ(fault_of<3>("0*4,5").text, "0*4");
    EXPECT_EQ(fault_of<3>("-2*4,5").text, "-2*4");
    EXPECT_EQ(fault_of<3>("99999999999*4,5").text, "99999999999*4");
    EXPECT_EQ(fault_of<3>("1.5*3").text, "1.5*3");
    EXPECT_EQ(fault_of<3>("2 *3").text, "*3");
}

TEST(ListInput, ASlashEndsTheStatementAndLeavesTheRestAlone) {
    expect_row<3>("1 / 2 3\nnext", {1, kept, kept}, "next");
    expect_row<3>("1/2 3\nnext", {1, kept, kept}, "next");
    expect_row<3>("/\nnext", {kept, kept, kept}, "next");
    expect_row<3>("1\n2\n/ x\nnext", {1, 2, kept}, "next");
    expect_row<3>("2*1/2\nnext", {1, 1, kept}, "next");
    expect_row<3>("2*/2\nnext", {kept, kept, kept}, "next");
    expect_row<2>("1,2,/\nnext", {1, 2}, "next");
    expect_row<3>("1 /\n", {1, kept, kept}, "");
    // The Fortran runtime tells the end of the file where the line has no end.
    expect_row<3>("1 /", {1, kept, kept}, "");
}

TEST(ListInput, RealsInAllSpellings) {
    expect_row<4>("1.5D3 1.5d-3 1.5+3 2-3\nnext", {1.5e3F, 1.5e-3F, 1.5e3F, 2e-3F}, "next");
    expect_row<4>("1 +2 +.5 -.5\nnext", {1, 2, 0.5F, -0.5F}, "next");
    expect_row<3>("5. 1q3 1E+003\nnext", {5, 1e3F, 1e3F}, "next");
    constexpr float infinity = std::numeric_limits<float>::infinity();
    expect_row<3>("inf -Infinity +INF\nnext", {infinity, -infinity, infinity}, "next");
    const RowRead row = read_reals<1>("2\n");
    EXPECT_TRUE(row.good);
    ListInput in("NaN nan(abc)");
    float a = 0;
    float b = 0;
    ASSERT_TRUE(in.read(a, b));
    EXPECT_TRUE(std::isnan(a) && std::isnan(b));
}

TEST(ListInput, UnderflowGivesDenormalsAndZero) {
    expect_row<3>("1e-50 -1e-42 1\nnext", {0.0F, -1e-42F, 1}, "next");
}

// The Fortran runtime reads infinity here, which would surface far from its cause.
TEST(ListInput, OverflowIsRefused) {
    EXPECT_EQ(fault_of<2>("1 1e39").message(), "cannot read \"1e39\", expected a real number");
    ListInput in("1e309");
    double wide = 0;
    EXPECT_FALSE(in.read(wide));
}

TEST(ListInput, LineEndsWithCarriageReturnsAreLineEnds) {
    expect_row<3>("1 2\r\n3\r\nnext\r\n", {1, 2, 3}, "next");
    expect_row<3>("1,2,3\r\nnext", {1, 2, 3}, "next");
    expect_row<2>("2*\r\nnext\r\n", {kept, kept}, "next");
}

TEST(ListInput, ALastLineNeedsNoEnd) {
    expect_row<3>("1,2,3", {1, 2, 3}, "");
    expect_row<3>("1 2\n3", {1, 2, 3}, "");
}

TEST(ListInput, EndOfTheTextIsAFaultThatTellsWhatWasExpected) {
    for (const char* text : {"1,2", "1,2,", "1 2 "}) {
        const ListFault fault = fault_of<3>(text);
        EXPECT_EQ(fault.line, 1) << text;
        EXPECT_EQ(fault.text, "") << text;
        EXPECT_EQ(fault.message(), "the text ends where a real number should stand") << text;
    }
    EXPECT_EQ(fault_of<3>("1\n2\n").line, 3);
    EXPECT_EQ(fault_of<1>("").line, 1);
    ListInput in("");
    std::int32_t n = 3;
    EXPECT_FALSE(in.read(n));
    EXPECT_EQ(in.fault().message(), "the text ends where an integer should stand");
    EXPECT_EQ(n, 3);
}

TEST(ListInput, BadValuesAreToldWithTheirLine) {
    const ListFault fault = fault_of<4>("1 2\n3\n12.x 4\n");
    EXPECT_EQ(fault.line, 3);
    EXPECT_EQ(fault.text, "12.x");
    EXPECT_EQ(fault.message(), "cannot read \"12.x\", expected a real number");
    EXPECT_EQ(fault_of<2>("1\n'2'").message(), "cannot read \"'2'\", expected a real number");
    EXPECT_EQ(fault_of<2>("1 ''").message(), "cannot read \"''\", expected a real number");
    EXPECT_EQ(fault_of<2>("1 !2").text, "!2");
    EXPECT_EQ(fault_of<2>("(1,2)").text, "(1");
    for (const char* text : {".", "1e", "1e+", "0x10", "1_000", "-", "+-5", "1.5.2", ".e3"}) {
        EXPECT_EQ(fault_of<1>(text).text, text);
    }
}

// The Fortran runtime takes semicolons as separators, which the language has in decimal comma mode
// only; here they are a fault.
TEST(ListInput, SemicolonsAreNoSeparators) {
    EXPECT_EQ(fault_of<3>("1;2;3").text, "1;2;3");
}

TEST(ListInput, LinesAreCountedFromTheGivenOne) {
    ListInput in("1\n2 x\n", 12);
    float a = 0;
    float b = 0;
    ASSERT_TRUE(in.read(a));
    EXPECT_EQ(in.line(), 13);
    EXPECT_FALSE(in.read(a, b));
    EXPECT_EQ(in.fault().line, 13);
    EXPECT_EQ(a, 2.0F);
    EXPECT_EQ(b, 0.0F);
}

TEST(ListInput, ItemsInFrontOfAFaultAreSetAndTheOthersAreNot) {
    const RowRead row = read_reals<4>("1 2 3x 4\n");
    EXPECT_FALSE(row.good);
    EXPECT_EQ(row.values, (std::vector<float>{1, 2, kept, kept}));
}

TEST(ListInput, FaultTextIsFitToPrint) {
    const std::string binary = "1 " + std::string(1000000, '\0');
    EXPECT_EQ(fault_of<2>(binary).text, std::string(60, '?') + "...");
    EXPECT_EQ(fault_of<1>("12\x80\xff").text, "12??");
    EXPECT_EQ(fault_of<1>(std::string_view("1\0002", 3)).text, "1?2");
}

TEST(ListInput, IntegersTakeSignsAndRepeatsButNoReals) {
    ListInput in("2*+5 -2147483648 2147483647\n");
    std::int32_t a = 0;
    std::int32_t b = 0;
    std::int32_t c = 0;
    std::int32_t d = 0;
    ASSERT_TRUE(in.read(a, b, c, d));
    EXPECT_EQ(a, 5);
    EXPECT_EQ(b, 5);
    EXPECT_EQ(c, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(d, std::numeric_limits<std::int32_t>::max());
    for (const char* text : {"1.0", "1e3", "2147483648", "5x", "'5'"}) {
        ListInput bad(text);
        EXPECT_FALSE(bad.read(a)) << text;
        EXPECT_EQ(bad.fault().expected, "an integer");
        EXPECT_EQ(a, 5) << text;
    }
}

TEST(ListInput, MixedItemsOfOneStatement) {
    ListInput in("7 'Mixed forest' F 1.5d0, 0.25 /\n8\n");
    std::int32_t id = 0;
    std::string name;
    bool flag = true;
    double wide = 0;
    float a = 0;
    float b = kept;
    ASSERT_TRUE(in.read(id, name, flag, wide, a, b));
    EXPECT_EQ(id, 7);
    EXPECT_EQ(name, "Mixed forest");
    EXPECT_FALSE(flag);
    EXPECT_EQ(wide, 1.5);
    EXPECT_EQ(a, 0.25F);
    EXPECT_EQ(b, kept);
    ASSERT_TRUE(in.read(id));
    EXPECT_EQ(id, 8);
}

// A text item per string of `expected`.
void expect_texts(std::string_view text, const std::array<std::string, 2>& expected) {
    ListInput in(text);
    std::string a = "?";
    std::string b = "?";
    EXPECT_TRUE(in.read(a, b)) << text;
    EXPECT_EQ(a, expected[0]) << text;
    EXPECT_EQ(b, expected[1]) << text;
    std::string_view next;
    EXPECT_TRUE(in.read_line(next)) << text;
    EXPECT_EQ(next, "next") << text;
}

TEST(ListInput, TextsMayBeQuoted) {
    expect_texts("'a b' c\nnext", {"a b", "c"});
    expect_texts("'it''s' \"say \"\"hi\"\"\"\nnext", {"it's", "say \"hi\""});
    expect_texts("2*'a b'\nnext", {"a b", "a b"});
    expect_texts("3*a\nnext", {"a", "a"});
    expect_texts("3a b\nnext", {"3a", "b"});
    expect_texts("3*x*y b\nnext", {"x*y", "x*y"});
    expect_texts("ab'c de\"f\nnext", {"ab'c", "de\"f"});
    expect_texts("a/b c\nnext", {"a", "?"});
    expect_texts(",b\nnext", {"?", "b"});
    expect_texts("'' ' '\nnext", {"", " "});
}

// The Fortran runtime reads on over the line end, up to the next quote of the file if need be.
TEST(ListInput, TextsEndOnTheirLine) {
    ListInput in("\n'abc\ndef' 2\n");
    std::string name = "?";
    EXPECT_FALSE(in.read(name));
    EXPECT_EQ(in.fault().line, 2);
    EXPECT_EQ(in.fault().message(), "cannot read \"'abc\", expected a text");
    EXPECT_EQ(name, "?");
}

TEST(ListInput, TextsGluedToAQuoteAreRefused) {
    ListInput in("'abc'def g\n");
    std::string name = "?";
    EXPECT_FALSE(in.read(name));
    EXPECT_EQ(in.fault().text, "'abc'def");
}

TEST(ListInput, LogicalsLookAtTheirFirstLetter) {
    ListInput in("T F .true. .f. 2*t\n");
    std::array<bool, 6> v{};
    ASSERT_TRUE(in.read(v[0], v[1], v[2], v[3], v[4], v[5]));
    EXPECT_EQ(v, (std::array{true, false, true, false, true, true}));
    ListInput bad("1");
    EXPECT_FALSE(bad.read(v[0]));
    EXPECT_EQ(bad.fault().message(), "cannot read \"1\", expected T or F");
}

TEST(ListInput, LinesAndStatementsMayTakeTurns) {
    ListInput in("title one\r\n1 2 rest\n\n--DATA--\n3\n");
    std::string_view line;
    ASSERT_TRUE(in.read_line(line));
    EXPECT_EQ(line, "title one");
    float a = 0;
    ASSERT_TRUE(in.read(a));
    EXPECT_EQ(a, 1.0F);
    ASSERT_TRUE(in.read_line(line));
    EXPECT_EQ(line, "");
    ASSERT_TRUE(in.read_line(line));
    EXPECT_EQ(line, "--DATA--");
    EXPECT_EQ(in.line(), 5);
    ASSERT_TRUE(in.read(a));
    EXPECT_EQ(a, 3.0F);
    EXPECT_FALSE(in.read_line(line));
    EXPECT_EQ(line, "--DATA--");
}

TEST(ListInput, AnEmptyRowPassesOneRecord) {
    ListInput in("1 2\n3\n");
    EXPECT_TRUE(in.read_row(nullptr, 0));
    EXPECT_EQ(in.line(), 2);
}

TEST(ListInput, TextWithoutMemoryIsAtItsEnd) {
    ListInput in{std::string_view{}};
    float a = kept;
    EXPECT_TRUE(in.at_end());
    EXPECT_FALSE(in.read_row(&a, 1));
    EXPECT_EQ(a, kept);
}

}  // namespace
}  // namespace torvex
