#include "base/value_scanner.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace torvex {
namespace {

using ::testing::ElementsAre;
using namespace std::string_literals;

constexpr ScanRules one_line{.comments = false, .over_lines = false, .slash_in_words = false};
constexpr ScanRules with_comments{.comments = true, .over_lines = true, .slash_in_words = false};
constexpr ScanRules with_paths{.comments = false, .over_lines = false, .slash_in_words = true};

TextCursor cursor_on(std::string_view text) {
    return {.at = text.data(), .end = text.data() + text.size(), .line = 1};
}

// The tokens up to the end, each as its text behind a mark of its kind.
std::vector<std::string> tokens(std::string_view text, ScanRules rules = {}) {
    ValueScanner scanner(cursor_on(text), rules);
    std::vector<std::string> found;
    while (found.size() < 20) {
        const ValueToken token = scanner.next();
        switch (token.kind) {
            case ValueToken::Kind::null:
                found.emplace_back("null");
                break;
            case ValueToken::Kind::word:
                found.push_back("w " + token.text);
                break;
            case ValueToken::Kind::quoted:
                found.push_back("q " + token.text);
                break;
            case ValueToken::Kind::unclosed:
                found.push_back("u " + token.text);
                break;
            case ValueToken::Kind::end:
                return found;
        }
    }
    return found;
}

TEST(ValueScanner, BlanksTabsAndLineEndsPartWords) {
    EXPECT_THAT(tokens("a  b\tc\r\nd\n\n e"), ElementsAre("w a", "w b", "w c", "w d", "w e"));
    EXPECT_THAT(tokens(""), ElementsAre());
    EXPECT_THAT(tokens(" \t\r\n "), ElementsAre());
}

TEST(ValueScanner, CopiesCanBePassedAtOnce) {
    ValueScanner scanner(cursor_on("5*a b 3* c"), {});
    EXPECT_EQ(scanner.pass_copies(4), 0U);
    EXPECT_EQ(scanner.next().text, "a");
    EXPECT_EQ(scanner.pass_copies(3), 3U);
    EXPECT_TRUE(scanner.repeating());
    EXPECT_EQ(scanner.next().text, "a");
    EXPECT_EQ(scanner.pass_copies(3), 0U);
    EXPECT_EQ(scanner.next().text, "b");
    EXPECT_EQ(scanner.pass_copies(3), 0U);
    EXPECT_EQ(scanner.next().kind, ValueToken::Kind::null);
    EXPECT_EQ(scanner.last_kind(), ValueToken::Kind::null);
    EXPECT_EQ(scanner.pass_copies(9), 2U);
    EXPECT_EQ(scanner.next().text, "c");
}

TEST(ValueScanner, OneCommaBelongsToTheValueBeforeAndEachFurtherOneIsANull) {
    EXPECT_THAT(tokens("a,b , c"), ElementsAre("w a", "w b", "w c"));
    EXPECT_THAT(tokens(",a"), ElementsAre("null", "w a"));
    EXPECT_THAT(tokens("a,,b"), ElementsAre("w a", "null", "w b"));
    EXPECT_THAT(tokens("a , , , b"), ElementsAre("w a", "null", "null", "w b"));
    EXPECT_THAT(tokens("a\n,b"), ElementsAre("w a", "w b"));
    EXPECT_THAT(tokens("a,\n,b"), ElementsAre("w a", "null", "w b"));
    EXPECT_THAT(tokens("a,"), ElementsAre("w a"));
}

TEST(ValueScanner, RepeatCountCopiesWordsTextsAndNulls) {
    EXPECT_THAT(tokens("3*0.5 x"), ElementsAre("w 0.5", "w 0.5", "w 0.5", "w x"));
    EXPECT_THAT(tokens("2*'a b',c"), ElementsAre("q a b", "q a b", "w c"));
    EXPECT_THAT(tokens("2* x"), ElementsAre("null", "null", "w x"));
    EXPECT_THAT(tokens("2*,x"), ElementsAre("null", "null", "w x"));
    EXPECT_THAT(tokens("2*,,x"), ElementsAre("null", "null", "null", "w x"));
    EXPECT_THAT(tokens("2*"), ElementsAre("null", "null"));
    EXPECT_THAT(tokens("2*3*x"), ElementsAre("w 3*x", "w 3*x"));
    EXPECT_THAT(tokens("002*x"), ElementsAre("w x", "w x"));
}

TEST(ValueScanner, WhatIsNoRepeatCountStaysPartOfTheWord) {
    EXPECT_THAT(tokens("0*x"), ElementsAre("w 0*x"));
    EXPECT_THAT(tokens("-2*x"), ElementsAre("w -2*x"));
    EXPECT_THAT(tokens("1.5*x"), ElementsAre("w 1.5*x"));
    EXPECT_THAT(tokens("*x"), ElementsAre("w *x"));
    EXPECT_THAT(tokens("2 *x"), ElementsAre("w 2", "w *x"));
    EXPECT_THAT(tokens("2147483648*x"), ElementsAre("w 2147483648*x"));
    EXPECT_THAT(tokens("99999999999999999999*x"), ElementsAre("w 99999999999999999999*x"));
}

TEST(ValueScanner, LargestRepeatCountIsTakenCopyByCopy) {
    const std::string text = "2147483647*7";
    ValueScanner scanner(cursor_on(text), {});
    for (int n = 0; n < 1000; ++n) {
        EXPECT_EQ(scanner.next().text, "7");
        EXPECT_TRUE(scanner.repeating());
    }
}

TEST(ValueScanner, RepeatingLastsAsLongAsCopiesAreLeft) {
    const std::string text = "2*a b";
    ValueScanner scanner(cursor_on(text), {});
    EXPECT_FALSE(scanner.repeating());
    scanner.next();
    EXPECT_TRUE(scanner.repeating());
    scanner.next();
    EXPECT_FALSE(scanner.repeating());
}

TEST(ValueScanner, QuotesOfBothKindsHideBlanksAndDoubleInside) {
    EXPECT_THAT(tokens("'a, b/c' d"), ElementsAre("q a, b/c", "w d"));
    EXPECT_THAT(tokens("\"a 'b'\""), ElementsAre("q a 'b'"));
    EXPECT_THAT(tokens("'it''s'"), ElementsAre("q it's"));
    EXPECT_THAT(tokens(R"("say ""hi""" x)"), ElementsAre("q say \"hi\"", "w x"));
    EXPECT_THAT(tokens("''"), ElementsAre("q "));
    EXPECT_THAT(tokens("''''"), ElementsAre("q '"));
    EXPECT_THAT(tokens("'',''"), ElementsAre("q ", "q "));
    EXPECT_THAT(tokens("ab'c d\"e"), ElementsAre("w ab'c", "w d\"e"));
    EXPECT_THAT(tokens("'3*x'"), ElementsAre("q 3*x"));
    EXPECT_THAT(tokens("'a'/b", with_paths), ElementsAre("q a", "w /b"));
}

TEST(ValueScanner, QuoteThatDoesNotEndOrGoesOnIsToldAsItStands) {
    EXPECT_THAT(tokens("'ab c\nd'e f"), ElementsAre("u 'ab c", "w d'e", "w f"));
    EXPECT_THAT(tokens("'"), ElementsAre("u '"));
    EXPECT_THAT(tokens("'abc''"), ElementsAre("u 'abc''"));
    EXPECT_THAT(tokens("'ab'cd e"), ElementsAre("u 'ab'cd", "w e"));
    EXPECT_THAT(tokens("'ab'\"cd\" e"), ElementsAre("u 'ab'\"cd\"", "w e"));
}

TEST(ValueScanner, SlashEndsTheListAndIsNotConsumed) {
    const std::string text = "a b/c";
    ValueScanner scanner(cursor_on(text), {});
    EXPECT_EQ(scanner.next().text, "a");
    EXPECT_EQ(scanner.next().text, "b");
    EXPECT_EQ(scanner.next().kind, ValueToken::Kind::end);
    EXPECT_EQ(scanner.next().kind, ValueToken::Kind::end);
    EXPECT_EQ(scanner.cursor().at - text.data(), 3);
}

TEST(ValueScanner, SlashIsPartOfAWordWherePathsAreExpected) {
    EXPECT_THAT(tokens("a/b 'c' /d/", with_paths), ElementsAre("w a/b", "q c", "w /d/"));
}

TEST(ValueScanner, CommentsRunToTheLineEndWhereTheyAreAllowed) {
    EXPECT_THAT(tokens("a ! b, c\nd!e\n! f\n'g!h'", with_comments),
                ElementsAre("w a", "w d", "q g!h"));
    EXPECT_THAT(tokens("a!b ! c"), ElementsAre("w a!b", "w !", "w c"));
    EXPECT_THAT(tokens("a ! no line end", with_comments), ElementsAre("w a"));
    EXPECT_THAT(tokens("a ! one\n, b", with_comments), ElementsAre("w a", "w b"));
}

TEST(ValueScanner, LineEndEndsTheListWhereItIsBoundToItsLine) {
    EXPECT_THAT(tokens("a b\nc", one_line), ElementsAre("w a", "w b"));
    EXPECT_THAT(tokens("a,\n,c", one_line), ElementsAre("w a"));
    EXPECT_THAT(tokens("\na", one_line), ElementsAre());
}

TEST(ValueScanner, TokensTellTheirLines) {
    const std::string text = "a\n\n'b'\n,\n2*c\n";
    ValueScanner scanner(cursor_on(text), {});
    EXPECT_EQ(scanner.next().line, 1);
    EXPECT_EQ(scanner.next().line, 3);
    EXPECT_EQ(scanner.next().line, 5);
    EXPECT_EQ(scanner.next().line, 5);
    EXPECT_EQ(scanner.next().line, 6);
    EXPECT_EQ(scanner.cursor().line, 6);
}

TEST(ValueScanner, SkipSeparatorPassesOneComma) {
    const std::string text = "a ! c\n , , b";
    ValueScanner scanner(cursor_on(text), with_comments);
    scanner.next();
    scanner.skip_separator();
    EXPECT_EQ(*scanner.cursor().at, ',');
    EXPECT_EQ(scanner.cursor().at - text.data(), 9);
    scanner.skip_separator();
    EXPECT_EQ(scanner.cursor().at - text.data(), 9);
    EXPECT_EQ(scanner.next().kind, ValueToken::Kind::null);
    EXPECT_EQ(scanner.next().text, "b");
}

TEST(ValueScanner, OtherBytesAreOrdinaryCharacters) {
    const std::string text = "a\0b \x80\xff\v c;d"s;
    EXPECT_THAT(tokens(text), ElementsAre("w a\0b"s, "w \x80\xff\v", "w c;d"));
}

TEST(ValueScanner, TextWithoutMemoryIsAtItsEnd) {
    EXPECT_THAT(tokens(std::string_view{}), ElementsAre());
}

template <class Real>
Real real_of(std::string_view word) {
    Real value = -77;
    EXPECT_TRUE(parse_real(word, value)) << word;
    return value;
}

TEST(ParseReal, TakesEveryUsualSpelling) {
    EXPECT_EQ(real_of<float>("1567.7"), 1567.7F);
    EXPECT_EQ(real_of<float>("12"), 12.0F);
    EXPECT_EQ(real_of<float>("+12"), 12.0F);
    EXPECT_EQ(real_of<float>("-12"), -12.0F);
    EXPECT_EQ(real_of<float>(".5"), 0.5F);
    EXPECT_EQ(real_of<float>("-.5"), -0.5F);
    EXPECT_EQ(real_of<float>("+.5"), 0.5F);
    EXPECT_EQ(real_of<float>("5."), 5.0F);
    EXPECT_EQ(real_of<float>("00012.50"), 12.5F);
    EXPECT_TRUE(std::signbit(real_of<float>("-0")));
}

TEST(ParseReal, TakesExponentsOfAllLettersAndOfNone) {
    EXPECT_EQ(real_of<double>("1.5e3"), 1500.0);
    EXPECT_EQ(real_of<double>("1.5E+03"), 1500.0);
    EXPECT_EQ(real_of<double>("1.5d-3"), 1.5e-3);
    EXPECT_EQ(real_of<double>("1.5D3"), 1500.0);
    EXPECT_EQ(real_of<double>("1.5q3"), 1500.0);
    EXPECT_EQ(real_of<double>("1.5+3"), 1500.0);
    EXPECT_EQ(real_of<double>("-1.5-3"), -1.5e-3);
    EXPECT_EQ(real_of<double>("15-3"), 15e-3);
    EXPECT_EQ(real_of<double>("1.D0"), 1.0);
    EXPECT_EQ(real_of<double>("+1.d+003"), 1000.0);
    EXPECT_EQ(real_of<float>("0.1234567-120"), 0.0F);
}

TEST(ParseReal, RoundsToTheNearestOfItsOwnPrecision) {
    // Half-way between two 32-bit reals, and a hair above it, which double rounding would lose.
    EXPECT_EQ(real_of<float>("16777217"), 16777216.0F);
    EXPECT_EQ(real_of<float>("16777217.000000000000001"), 16777218.0F);
    EXPECT_EQ(real_of<float>("16777219"), 16777220.0F);
    EXPECT_EQ(real_of<double>("9007199254740993"), 9007199254740992.0);
    EXPECT_EQ(real_of<double>("0.1"), 0.1);
    EXPECT_EQ(real_of<float>("0.1"), 0.1F);
}

TEST(ParseReal, TooSmallBecomesDenormalOrZeroAndKeepsItsSign) {
    EXPECT_EQ(real_of<float>("1e-45"), std::numeric_limits<float>::denorm_min());
    EXPECT_EQ(real_of<float>("1.1754942e-38"),
              std::nextafter(std::numeric_limits<float>::min(), 0.0F));
    EXPECT_EQ(real_of<float>("1e-50"), 0.0F);
    EXPECT_EQ(real_of<double>("1e-400"), 0.0);
    EXPECT_TRUE(std::signbit(real_of<float>("-1e-50")));
    EXPECT_TRUE(std::signbit(real_of<double>("-1d-400")));
    EXPECT_EQ(real_of<double>("1e-99999999999999999999"), 0.0);
    EXPECT_EQ(real_of<float>("0e99999"), 0.0F);
}

TEST(ParseReal, InfinityAndNanAreReadAsWhatTheySay) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(real_of<float>("inf"), infinity);
    EXPECT_EQ(real_of<float>("+Infinity"), infinity);
    EXPECT_EQ(real_of<float>("-INF"), -infinity);
    EXPECT_TRUE(std::isnan(real_of<float>("NaN")));
    EXPECT_TRUE(std::isnan(real_of<double>("nan(1)")));
}

TEST(ParseReal, RefusesWhatIsTooLarge) {
    for (const char* word : {"1e39", "-1e39", "3.4028236e38", "1d400", "9+99", "1e9999999999999"}) {
        float value = -77.0F;
        EXPECT_FALSE(parse_real(word, value)) << word;
        EXPECT_EQ(value, -77.0F) << word;
    }
    double wide = -77.0;
    EXPECT_FALSE(parse_real("1.8e308", wide));
    EXPECT_EQ(wide, -77.0);
    EXPECT_EQ(real_of<float>("3.4028235e38"), std::numeric_limits<float>::max());
    EXPECT_EQ(real_of<double>("1d39"), 1e39);
}

TEST(ParseReal, RefusesWhatIsNoNumber) {
    for (const char* word :
         {"",      "+",       "-",    ".",     "+.",    "e5",    ".e5",  "1e",   "1e+",  "1d",
          "1+",    "+-5",     "-+5",  "--5",   "++5",   "1.2.3", "12.x", "x12",  "0x10", "1_000",
          "1,5",   "1 ",      " 1",   "1e5e5", "1e5+3", "1+3+4", "inf-", "infi", "nan(", "(1.0)",
          "1e1.5", "1.5e+-3", "1de3", "e",     "1*2",   "1/2",   "1e 5", "T"}) {
        float value = -77.0F;
        EXPECT_FALSE(parse_real(word, value)) << word;
        EXPECT_EQ(value, -77.0F) << word;
    }
    float value = -77.0F;
    EXPECT_FALSE(parse_real(std::string_view("1\0", 2), value));
    EXPECT_FALSE(parse_real(std::string_view("1\xA0", 2), value));
}

TEST(ParseInteger, TakesTheWholeRange) {
    std::int32_t value = 0;
    EXPECT_TRUE(parse_integer("2147483647", value));
    EXPECT_EQ(value, 2147483647);
    EXPECT_TRUE(parse_integer("-2147483648", value));
    EXPECT_EQ(value, std::numeric_limits<std::int32_t>::min());
    EXPECT_TRUE(parse_integer("+5", value));
    EXPECT_EQ(value, 5);
    EXPECT_TRUE(parse_integer("-007", value));
    EXPECT_EQ(value, -7);
}

TEST(ParseInteger, RefusesWhatIsNoneOrTooLarge) {
    for (const char* word : {"", "+", "-", "2147483648", "-2147483649", "99999999999999999999",
                             "1.0", "1.", "1e3", "5x", "+-5", "--5", "0x10", " 5", "5 ", "T"}) {
        std::int32_t value = -77;
        EXPECT_FALSE(parse_integer(word, value)) << word;
        EXPECT_EQ(value, -77) << word;
    }
}

TEST(ParseLogical, LooksAtTheFirstLetterBehindAPoint) {
    for (const char* word : {"T", "t", ".true.", ".T.", "TRUE", "tomato"}) {
        bool value = false;
        EXPECT_TRUE(parse_logical(word, value)) << word;
        EXPECT_TRUE(value) << word;
    }
    for (const char* word : {"F", "f", ".false.", ".F.", "FALSE", ".f"}) {
        bool value = true;
        EXPECT_TRUE(parse_logical(word, value)) << word;
        EXPECT_FALSE(value) << word;
    }
    for (const char* word : {"", ".", "..t", "1", "0", "yes", "-1"}) {
        bool value = true;
        EXPECT_FALSE(parse_logical(word, value)) << word;
        EXPECT_TRUE(value) << word;
    }
}

}  // namespace
}  // namespace torvex
