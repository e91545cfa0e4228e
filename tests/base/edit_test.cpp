#include "base/edit.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <string_view>

namespace torvex {
namespace {

// One row of the table: a descriptor, the items as kind and exact value, the text between bars.
class TableRow {
 public:
    explicit TableRow(std::string_view row) : rest_(row) { descriptor = word(); }

    // The next item's kind, or nothing where the text begins.
    std::string_view next_kind() { return rest_.front() == '|' ? std::string_view{} : word(); }

    template <class T>
    T number(int base) {
        const std::string_view digits = word();
        T value{};
        const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
        EXPECT_EQ(end.ptr, digits.data() + digits.size()) << digits;
        return value;
    }
    std::int64_t integer() { return number<std::int64_t>(10); }
    float single_real() { return std::bit_cast<float>(number<std::uint32_t>(16)); }
    double double_real() { return std::bit_cast<double>(number<std::uint64_t>(16)); }
    bool logical() { return word() == "T"; }
    std::string_view text() {
        std::size_t length = 0;
        const std::size_t colon = rest_.find(':');
        std::from_chars(rest_.data(), rest_.data() + colon, length);
        const std::string_view value = rest_.substr(colon + 1, length);
        rest_.remove_prefix(colon + 1 + length + 1);
        return value;
    }
    std::string_view expected() const { return rest_.substr(1, rest_.size() - 2); }

    std::string_view descriptor;

 private:
    std::string_view word() {
        const std::size_t blank = rest_.find(' ');
        const std::string_view found = rest_.substr(0, blank);
        rest_.remove_prefix(blank + 1);
        return found;
    }

    std::string_view rest_;
};

std::string written_list(TableRow& row) {
    edit::ListLine line;
    for (std::string_view kind = row.next_kind(); !kind.empty(); kind = row.next_kind()) {
        if (kind == "i") {
            line << static_cast<std::int32_t>(row.integer());
        } else if (kind == "r4") {
            line << row.single_real();
        } else if (kind == "r8") {
            line << row.double_real();
        } else if (kind == "l") {
            line << row.logical();
        } else {
            line << row.text();
        }
    }
    return line.text();
}

std::string written_field(TableRow& row) {
    int w = 0;
    int d = -1;
    const char* const end = row.descriptor.data() + row.descriptor.size();
    const auto width = std::from_chars(row.descriptor.data() + 1, end, w);
    if (width.ptr != end) {
        std::from_chars(width.ptr + 1, end, d);
    }
    const std::string_view kind = row.next_kind();
    switch (row.descriptor.front()) {
        case 'I':
            return d < 0 ? edit::I(row.integer(), w) : edit::I(row.integer(), w, d);
        case 'F':
            return kind == "r4" ? edit::F(row.single_real(), w, d)
                                : edit::F(row.double_real(), w, d);
        case 'E':
            return kind == "r4" ? edit::E(row.single_real(), w, d)
                                : edit::E(row.double_real(), w, d);
        case 'A':
            return edit::A(row.text(), w);
        case 'L':
            return edit::L(row.logical(), w);
        default:
            return "unknown descriptor";
    }
}

// The table holds what the runtime of a Fortran compiler writes (edit_table.f90).
TEST(Edit, AgreesWithTheTableOfFortranOutput) {
    std::ifstream table(TORVEX_EDIT_TABLE);
    ASSERT_TRUE(table) << TORVEX_EDIT_TABLE;
    std::map<char, int> compared;
    std::string line;
    for (int number = 1; std::getline(table, line); ++number) {
        TableRow row(line);
        ASSERT_FALSE(row.descriptor.empty()) << "line " << number;
        const std::string written =
            row.descriptor == "list" ? written_list(row) : written_field(row);
        EXPECT_EQ(written, row.expected()) << "line " << number << ": " << line;
        ++compared[row.descriptor.front()];
    }
    EXPECT_GE(compared['I'], 200);
    EXPECT_GE(compared['F'], 200);
    EXPECT_GE(compared['E'], 200);
    EXPECT_GE(compared['l'], 200);
    EXPECT_GE(compared['A'], 40);
    EXPECT_GE(compared['L'], 10);
}

TEST(Edit, ExponentialFieldKeepsItsLeadingZeroWhereThereIsRoom) {
    EXPECT_EQ(edit::E(0.001234F, 11, 4), " 0.1234E-02");
    EXPECT_EQ(edit::E(0.001234F, 10, 4), "0.1234E-02");
    EXPECT_EQ(edit::E(0.001234F, 9, 4), ".1234E-02");
    EXPECT_EQ(edit::E(0.001234F, 8, 4), "********");
    EXPECT_EQ(edit::E(123.456F, 14, 7), " 0.1234560E+03");
    EXPECT_EQ(edit::E(-1.5F, 16, 8), " -0.15000000E+01");
    EXPECT_EQ(edit::E(0.0F, 16, 8), "  0.00000000E+00");
}

TEST(Edit, FixedFieldOverflowsIntoStars) {
    EXPECT_EQ(edit::F(0.09F, 5, 3), "0.090");
    EXPECT_EQ(edit::F(9.9994F, 5, 3), "9.999");
    EXPECT_EQ(edit::F(9.9996F, 5, 3), "*****");
    EXPECT_EQ(edit::F(10.0F, 5, 3), "*****");
    EXPECT_EQ(edit::F(-0.09F, 5, 3), "-.090");
}

TEST(Edit, IntegerFieldsAreRightAdjustedAndZeroFilled) {
    EXPECT_EQ(edit::I(120, 5), "  120");
    EXPECT_EQ(edit::I(12345, 4), "****");
    EXPECT_EQ(edit::I(120, 5, 5), "00120");
    EXPECT_EQ(edit::I(100000, 5, 5), "*****");
    EXPECT_EQ(edit::I(2700, 4, 4), "2700");
}

TEST(Edit, ListKeepsTextsTogetherAndPartsNumbers) {
    EXPECT_EQ(edit::list("no ", "blank"), " no blank");
    EXPECT_EQ(edit::list("n", 3, "m"), " n           3 m");
    EXPECT_EQ(edit::list(1.0F), "   1.00000000    ");
    EXPECT_EQ(edit::list(true, false), " T F");
}

}  // namespace
}  // namespace torvex
