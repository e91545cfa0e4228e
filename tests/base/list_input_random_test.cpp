// Rows of random text, read by read_row, by single items and by a reader that is written here in
// the plainest way: the text is cut into pieces line by line, the pieces are told apart by regular
// expressions, and strtof reads the numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <regex>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "base/list_input.hpp"

namespace torvex {
namespace {

constexpr float kept = -77.0F;

struct Piece {
    std::string text;
    long line;
};

std::vector<Piece> pieces_of(const std::string& text) {
    std::vector<Piece> pieces;
    long line = 1;
    bool in_word = false;
    for (const char c : text) {
        const bool is_blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (is_blank || c == ',' || c == '/') {
            in_word = false;
            if (!is_blank) {
                pieces.push_back({std::string(1, c), line});
            }
        } else if (in_word) {
            pieces.back().text += c;
        } else {
            pieces.push_back({std::string(1, c), line});
            in_word = true;
        }
        line += c == '\n' ? 1 : 0;
    }
    return pieces;
}

// The number that a word spells, if it spells one.
bool plain_number(const std::string& word, float& value) {
    static const std::regex word_form("[+-]?(inf|infinity|nan|nan\\([A-Za-z0-9_]*\\))",
                                      std::regex::icase);
    static const std::regex number_form(
        "([+-]?(?:[0-9]+\\.?[0-9]*|\\.[0-9]+))(?:[eEdDqQ]?([+-][0-9]+)|[eEdDqQ]([0-9]+))?");
    if (std::regex_match(word, word_form)) {
        value = std::strtof(word.c_str(), nullptr);
        return true;
    }
    std::smatch part;
    if (!std::regex_match(word, part, number_form)) {
        return false;
    }
    const std::string exponent = part[2].matched ? part[2].str() : part[3].str();
    const float parsed =
        std::strtof((part[1].str() + (exponent.empty() ? "" : "e" + exponent)).c_str(), nullptr);
    if (std::isinf(parsed)) {
        return false;
    }
    value = parsed;
    return true;
}

// The reader to compare with: one statement after the other over the pieces of a text.
class PlainReader {
 public:
    explicit PlainReader(const std::string& text) : pieces_(pieces_of(text)) {
        for (const char c : text) {
            lines_ += c == '\n' ? 1 : 0;
        }
    }

    bool read(std::vector<float>& values) {
        static const std::regex repeat_form("0*([0-9]{1,10})\\*([^]*)");
        while (next_ < pieces_.size() && pieces_[next_].line < line) {
            ++next_;
        }
        bool after_value = false;
        std::size_t n = 0;
        while (n < values.size()) {
            if (next_ == pieces_.size()) {
                fault_line = lines_ + 1;
                return false;
            }
            const Piece& piece = pieces_[next_++];
            line = piece.line + 1;
            if (piece.text == "/") {
                return true;
            }
            if (piece.text == ",") {
                n += after_value ? 0 : 1;
                after_value = false;
                continue;
            }
            after_value = true;
            std::smatch part;
            long long count = 1;
            std::string word = piece.text;
            if (std::regex_match(piece.text, part, repeat_form)) {
                const long long told = std::stoll(part[1].str());
                if (told >= 1 && told <= 2147483647) {
                    count = told;
                    word = part[2].str();
                }
            }
            for (; count > 0 && n < values.size(); --count, ++n) {
                const bool is_null = word.empty();
                if (!is_null && !plain_number(word, values[n])) {
                    fault_line = piece.line;
                    return false;
                }
            }
        }
        return true;
    }

    long line = 1;  // of the next statement
    long fault_line = 0;

 private:
    std::vector<Piece> pieces_;
    std::size_t next_ = 0;
    long lines_ = 0;
};

bool same(const std::vector<float>& a, const std::vector<float>& b) {
    for (std::size_t n = 0; n < a.size(); ++n) {
        const bool alike = std::isnan(a[n])
                               ? std::isnan(b[n])
                               : a[n] == b[n] && std::signbit(a[n]) == std::signbit(b[n]);
        if (!alike) {
            return false;
        }
    }
    return a.size() == b.size();
}

// Reads a text to its end or first fault in rows of `width` and returns the number of statements.
int compare_rows(const std::string& text, std::size_t width) {
    ListInput rows(text);
    ListInput items(text);
    PlainReader plain(text);
    int statements = 0;
    bool good = true;
    while (good && !rows.at_end()) {
        std::vector<float> by_row(width, kept);
        std::vector<float> by_plain(width, kept);
        good = rows.read_row(by_row.data(), width);
        EXPECT_EQ(good, plain.read(by_plain)) << "line " << rows.line() << " of\n" << text;
        EXPECT_TRUE(same(by_row, by_plain)) << "line " << rows.line() << " of\n" << text;
        if (width == 3) {
            std::vector<float> by_item(width, kept);
            EXPECT_EQ(items.read(by_item[0], by_item[1], by_item[2]), good) << text;
            EXPECT_TRUE(same(by_row, by_item)) << "line " << rows.line() << " of\n" << text;
            EXPECT_EQ(items.line(), rows.line()) << text;
        }
        if (good && !rows.at_end()) {
            EXPECT_EQ(rows.line(), plain.line) << text;
        }
        if (!good) {
            EXPECT_EQ(rows.fault().line, plain.fault_line) << text;
        }
        ++statements;
        if (::testing::Test::HasFailure()) {
            return statements;
        }
    }
    return statements;
}

class RandomText {
 public:
    int below(int n) { return static_cast<int>(engine_() % static_cast<unsigned>(n)); }

    std::string number() {
        std::string text;
        switch (below(12)) {
            case 0:
                text = "-";
                break;
            case 1:
                text = "+";
                break;
            default:
                break;
        }
        const int digits = below(20) == 0 ? 25 : below(6);
        for (int n = 0; n < digits; ++n) {
            text += static_cast<char>('0' + below(10));
        }
        if (below(3) != 0 || digits == 0) {
            text += '.';
            text += static_cast<char>('0' + below(10));
            for (int n = below(6); n > 0; --n) {
                text += static_cast<char>('0' + below(10));
            }
        }
        return text;
    }

    std::string odd_word() {
        static const std::vector<std::string> words{
            "inf", "-NaN", "+infinity", "1e39",  "1e-60",  "1.2.3",        "x",   "'1'",
            ".",   "1e",   "0*5",       "12abc", "nan(7)", "2147483648*1", "1;2", "2147483647*8"};
        return words[static_cast<std::size_t>(below(static_cast<int>(words.size())))];
    }

    std::string word(int spice) {
        const int kind = below(100);
        if (kind >= 3 * spice) {
            return number();
        }
        if (kind < spice / 8) {
            return odd_word();
        }
        std::string text;
        if (below(2) == 0) {
            text = std::to_string(1 + below(5)) + '*';
            if (below(3) == 0) {
                return text;
            }
        }
        text += number();
        if (below(2) == 0) {
            static constexpr std::string_view letters = "eEdDqQ";
            const int sign = below(3);
            if (sign == 0 || below(3) != 0) {
                text += letters[static_cast<std::size_t>(below(6))];
            }
            text += sign == 0 ? "" : sign == 1 ? "+" : "-";
            text += std::to_string(below(50));
        }
        return text;
    }

    std::string separator(int spice) {
        const int kind = below(100);
        if (kind < 8) {
            return below(2) == 0 ? "\n" : " \n\t";
        }
        if (kind < 10) {
            return "\r\n";
        }
        if (kind < 20) {
            return below(2) == 0 ? "," : " , ";
        }
        if (kind < 20 + spice / 2) {
            return below(2) == 0 ? ",," : ",\n,";
        }
        if (kind < 20 + spice / 2 + spice / 10) {
            return below(2) == 0 ? "/" : " / 7 8\n";
        }
        return below(5) == 0 ? "\t  " : " ";
    }

    // From plain rows (spice 0) to every turn that the notation has (30).
    std::string rows(int spice) {
        std::string text;
        for (int n = 20 + below(100); n > 0; --n) {
            text += word(spice) + separator(spice);
        }
        return text;
    }

    std::string garbage() {
        using namespace std::string_view_literals;
        static constexpr std::string_view bytes =
            " \n\r\t,/'\"*0123456789.+-eEdDinfa!;\0\x80\xff    ,,,00011122**.."sv;
        std::string text;
        for (int n = below(60); n > 0; --n) {
            text += bytes[static_cast<std::size_t>(below(static_cast<int>(bytes.size())))];
        }
        return text;
    }

 private:
    std::mt19937 engine_{19630511};
};

TEST(ListInputRandom, RowsItemsAndAPlainReaderAgree) {
    RandomText random;
    int statements = 0;
    for (int n = 0; n < 600 && !HasFailure(); ++n) {
        const std::string text = random.rows(n % 4 == 0 ? 0 : n % 31);
        statements += compare_rows(text, n % 2 == 0 ? 3 : static_cast<std::size_t>(1 + n % 9));
    }
    EXPECT_GT(statements, 3000);
}

TEST(ListInputRandom, AnyBytesEndInAFaultOrTheEnd) {
    RandomText random;
    int statements = 0;
    for (int n = 0; n < 20000 && !HasFailure(); ++n) {
        statements += compare_rows(random.garbage(), static_cast<std::size_t>(1 + n % 4));
    }
    EXPECT_GT(statements, 20000);
}

TEST(ListInputRandom, AnyBytesAreReadAsAnyTypeWithoutHarm) {
    RandomText random;
    for (int n = 0; n < 20000; ++n) {
        const std::string text = random.garbage();
        ListInput in(text);
        int statements = 0;
        for (bool good = true; good && !in.at_end(); ++statements) {
            std::string word;
            std::int32_t whole = 0;
            bool flag = false;
            double wide = 0;
            switch ((n + statements) % 4) {
                case 0:
                    good = in.read(word, whole);
                    break;
                case 1:
                    good = in.read(flag, word);
                    break;
                case 2:
                    good = in.read(wide);
                    break;
                default:
                    good = in.read(whole, wide, word);
                    break;
            }
            EXPECT_TRUE(good || !in.fault().message().empty());
            EXPECT_LE(word.size(), text.size());
        }
        EXPECT_LE(statements, static_cast<int>(text.size()));
    }
}

}  // namespace
}  // namespace torvex
