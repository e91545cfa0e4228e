#include "base/json_text.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace torvex {
namespace {

TEST(JsonText, EscapesWhatMustNotStandInQuotes) {
    EXPECT_EQ(json::text(""), "\"\"");
    EXPECT_EQ(json::text("plain / text"), "\"plain / text\"");
    EXPECT_EQ(json::text("a\"b\\c"), R"("a\"b\\c")");
    EXPECT_EQ(json::text(std::string_view("\n\t\0\x1f", 4)), R"("\u000a\u0009\u0000\u001f")");
    EXPECT_EQ(json::text("\x7f"), "\"\x7f\"");
}

// RFC 3629: two, three and four bytes stand as they are.
TEST(JsonText, KeepsUtf8) {
    for (const char* good : {"\xC3\xBC", "\xE5\xB1\xB1", "\xED\x9F\xBF", "\xEE\x80\x80",
                             "\xF0\x9F\x8C\xB2", "\xF4\x8F\xBF\xBF", "\xE0\xA0\x80"}) {
        EXPECT_EQ(json::text(good), "\"" + std::string(good) + "\"");
    }
}

// Latin-1, lone continuation bytes, overlong forms, surrogates, beyond the last code point, cut.
TEST(JsonText, ReplacesWhatIsNoUtf8) {
    EXPECT_EQ(json::text("H\xFCgel"), R"("H\ufffdgel")");
    EXPECT_EQ(json::text("\x80"), R"("\ufffd")");
    EXPECT_EQ(json::text("\xC0\xAF"), R"("\ufffd\ufffd")");
    EXPECT_EQ(json::text("\xE0\x80\x80"), R"("\ufffd\ufffd\ufffd")");
    EXPECT_EQ(json::text("\xED\xA0\x80"), R"("\ufffd\ufffd\ufffd")");
    EXPECT_EQ(json::text("\xF4\x90\x80\x80"), R"("\ufffd\ufffd\ufffd\ufffd")");
    EXPECT_EQ(json::text("\xF0\x8F\x80\x80"), R"("\ufffd\ufffd\ufffd\ufffd")");
    EXPECT_EQ(json::text("\xE5\xB1"), R"("\ufffd\ufffd")");
    EXPECT_EQ(json::text("\xE5\xB1x"), R"("\ufffd\ufffdx")");
}

TEST(JsonNumber, FixedPoint) {
    EXPECT_EQ(json::number(1234.5, 3), "1234.500");
    EXPECT_EQ(json::number(0.25, 2), "0.25");
    EXPECT_EQ(json::number(-0.5, 1), "-0.5");
    EXPECT_EQ(json::number(17.0, 0), "17");
    EXPECT_EQ(json::number(1e30, 1), "1000000000000000019884624838656.0");
}

TEST(JsonNumber, NullForWhatIsNone) {
    EXPECT_EQ(json::number(std::numeric_limits<double>::quiet_NaN(), 3), "null");
    EXPECT_EQ(json::number(-std::numeric_limits<double>::infinity(), 3), "null");
    EXPECT_EQ(json::number(1e300, 3), "null");
}

TEST(JsonValues, NestAsTheyAre) {
    EXPECT_EQ(json::array({}), "[]");
    EXPECT_EQ(json::array({json::integer(-3), json::boolean(true), json::null}),
              "[-3, true, null]");
    EXPECT_EQ(json::texts({"a", "b\""}), R"(["a", "b\""])");
    EXPECT_EQ(json::object({}), "{}");
    EXPECT_EQ(json::object({{"n", json::integer(1)}, {"l", json::array({})}}),
              R"({"n": 1, "l": []})");
    EXPECT_EQ(json::document({{"a", json::boolean(false)}, {"b", json::object({})}}),
              "{\n  \"a\": false,\n  \"b\": {}\n}\n");
}

}  // namespace
}  // namespace torvex
