#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>

#include "roughness/canopy_conv_table.hpp"
#include "roughness/conv_table.hpp"
#include "roughness/land_use_classes.hpp"
#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using testing::HasSubstr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

class LandUseTables : public testing::Test {
 protected:
    int read(const std::string& text) {
        directory.write("table.tin", text);
        return read_canopy_conv_table(table, directory.file("table.tin"));
    }

    // The reason of the stop that reading this ends with; what the console said is in `told`.
    std::string failure(const std::string& text) {
        CaptureStdout();
        const std::optional<Stop> s = test::stop_of([&] { read(text); });
        told = GetCapturedStdout();
        return s && s->code() == 1 ? s->what() : "";
    }

    ConvTable read_roughness(const std::string& text) {
        ConvTable conv;
        conv.file_name = directory.file("conv_table.tin");
        directory.write("conv_table.tin", text);
        read_conv_table(conv);
        return conv;
    }

    test::TemporaryDirectory directory;
    CanopyConvTable table;
    std::string told;
};

CanopyClass row_of_code(float code) {
    CanopyClass row;
    row.code = code;
    row.valid = true;
    return row;
}

TEST_F(LandUseTables, OrderOfTheFileIsNotThatOfTheRecord) {
    EXPECT_EQ(read("heading\n7 'pine wood' 312 18 0.17 0.05 0.4 0.03\n"), 1);
    ASSERT_EQ(table.rows.size(), 15U);
    const CanopyClass& row = table.rows[0];
    EXPECT_EQ(row.id, 7);
    EXPECT_EQ(row.name, "pine wood");
    EXPECT_EQ(row.code, 312.0F);
    EXPECT_EQ(row.p, (FixedArray<float, 5>{18, 0.05F, 0.17F, 0.4F, 0.03F}));
    EXPECT_TRUE(row.valid);
}

TEST_F(LandUseTables, UnreadRowsAreTheDefaultRecord) {
    read("heading\n1 a 1 1 1 1 1 1\n\n  \n");
    const CanopyClass& row = table.rows[1];
    EXPECT_EQ(row.name, "");
    EXPECT_EQ(row.code, -1.0F);
    EXPECT_EQ(row.p, (FixedArray<float, 5>{0, 0, 0, 0, 0}));
    EXPECT_FALSE(row.valid);
}

TEST_F(LandUseTables, FirstLineIsSkippedWhateverItHolds) {
    EXPECT_EQ(read("1 a 1 1 1 1 1 1\n2 b 2 2 2 2 2 2"), 1);
    EXPECT_EQ(table.rows[0].id, 2);
}

TEST_F(LandUseTables, EmptyFileHasNoRows) {
    EXPECT_EQ(read(""), 0);
    EXPECT_EQ(read("heading"), 0);
}

TEST_F(LandUseTables, SixteenthRowIsRefused) {
    std::string text = "heading\n";
    for (int n = 1; n <= 15; ++n) {
        text += std::to_string(n) + " class " + std::to_string(100 + n) + " 1 1 1 1 1\n";
    }
    EXPECT_EQ(read(text + "\n"), 15);
    EXPECT_EQ(table.rows[14].code, 115.0F);
    EXPECT_THAT(failure(text + "16 class 116 1 1 1 1 1\n"), HasSubstr("line 17"));
}

TEST_F(LandUseTables, NamesKeepTwentyCharacters) {
    read("heading\n1 'abcdefghijklmnopqrstuvwxyz' 1 1 1 1 1 1\n");
    EXPECT_EQ(table.rows[0].name, "abcdefghijklmnopqrst");
}

TEST_F(LandUseTables, SecondReadKeepsTheRowsThatItDoesNotGive) {
    read("heading\n1 a 1 1 1 1 1 1\n2 b 2 2 2 2 2 2\n");
    read("heading\n3 c 3 3 3 3 3 3\n");
    EXPECT_EQ(table.rows[0].name, "c");
    EXPECT_EQ(table.rows[1].name, "b");
}

TEST_F(LandUseTables, ReadErrorsEndWithTheirText) {
    const std::string sentence = "Caught error during reading cnpy_conv_tab";
    EXPECT_THAT(failure("heading\n1 a x 1 1 1 1 1\n"), HasSubstr("line 2"));
    EXPECT_EQ(told, sentence + "\n");
    EXPECT_THAT(failure("heading\n1 a 1 1 1 1 1\n"), HasSubstr(sentence));
    EXPECT_THAT(failure("heading\n1.5 a 1 1 1 1 1 1\n"), HasSubstr(sentence));
    EXPECT_THAT(failure("heading\n1 a 1 1 1 1 nan 1\n"), HasSubstr("finite"));
}

TEST_F(LandUseTables, MissingFilesAreNamedOnTheConsole) {
    const std::string name = directory.file("none.tin");
    CaptureStdout();
    EXPECT_EQ(test::stop_code_of([&] { read_canopy_conv_table(table, name); }), 1);
    EXPECT_EQ(GetCapturedStdout(), name + " not found.\n");

    ConvTable conv;
    conv.file_name = name;
    CaptureStdout();
    EXPECT_EQ(test::stop_code_of([&] { read_conv_table(conv); }), 1);
    EXPECT_EQ(GetCapturedStdout(), name + " not found.\n");
}

TEST_F(LandUseTables, RoughnessOfFifteenClasses) {
    const ConvTable conv = read_roughness("&CONV_TABLE\n Z00 = 0.5, 3*0.1, Z00(15) = 2.0\n/\n");
    EXPECT_EQ(conv.Z00,
              (FixedArray<float, 15>{0.5F, 0.1F, 0.1F, 0.1F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2.0F}));
}

TEST_F(LandUseTables, ClassesThatTheFileDoesNotGiveKeepTheirRoughness) {
    ConvTable conv;
    conv.file_name = directory.file("conv_table.tin");
    conv.Z00(1) = 0.7F;
    conv.Z00(15) = 0.9F;
    directory.write("conv_table.tin", "&CONV_TABLE\n Z00(2) = 0.5\n/\n");
    read_conv_table(conv);
    EXPECT_EQ(conv.Z00(1), 0.7F);
    EXPECT_EQ(conv.Z00(2), 0.5F);
    EXPECT_EQ(conv.Z00(15), 0.9F);
}

TEST_F(LandUseTables, MoreThanFifteenClassesAreRefused) {
    const std::optional<Stop> s =
        test::stop_of([&] { read_roughness("&CONV_TABLE\n Z00 = 16*0.1\n/\n"); });
    ASSERT_TRUE(s);
    EXPECT_EQ(s->code(), 1);
    EXPECT_THAT(s->what(), HasSubstr("Z00"));
}

TEST(LandUseClasses, ClassOfACodeIsTheFirstRowRead) {
    CanopyConvTable table{{row_of_code(5), row_of_code(5), CanopyClass{}}};
    EXPECT_EQ(class_of_code(table, 5), &table.rows[0]);
    EXPECT_EQ(class_of_code(table, -1), nullptr);
}

TEST(LandUseClasses, CodesBecomeRowNumbersInSequence) {
    // 5 becomes 1 by the first row, which the second row takes for its own code.
    const CanopyConvTable table{{row_of_code(5), row_of_code(1), row_of_code(9)}};
    LandUseMap map{Field2(2, 2)};
    map.values(1, 1) = 5;
    map.values(2, 1) = 1;
    map.values(1, 2) = 9;
    map.values(2, 2) = 7.5F;
    replace_codes(table, map);
    EXPECT_EQ(map.values(1, 1), 2.0F);
    EXPECT_EQ(map.values(2, 1), 2.0F);
    EXPECT_EQ(map.values(1, 2), 3.0F);
    EXPECT_EQ(map.values(2, 2), 7.5F);
}

TEST(LandUseClasses, FirstOfTwoRowsWithOneCodeWins) {
    const CanopyConvTable table{{row_of_code(8), row_of_code(8)}};
    LandUseMap map{Field2(1, 1, 8.0F)};
    replace_codes(table, map);
    EXPECT_EQ(map.values(1, 1), 1.0F);
}

TEST(LandUseClasses, SecondReplacementDoesNothing) {
    const CanopyConvTable table{{row_of_code(5), row_of_code(4), row_of_code(2)}};
    LandUseMap map{Field2(1, 1, 4.0F)};
    replace_codes(table, map);
    EXPECT_EQ(map.values(1, 1), 3.0F);  // 4 becomes 2, and 2 becomes 3
    map.values(1, 1) = 5;
    replace_codes(table, map);
    EXPECT_EQ(map.values(1, 1), 5.0F);
}

TEST(LandUseClasses, RowsThatWereNotReadReplaceNothing) {
    const CanopyConvTable table{std::vector<CanopyClass>(15)};
    LandUseMap map{Field2(1, 1, -1.0F)};
    replace_codes(table, map);
    EXPECT_EQ(map.values(1, 1), -1.0F);
}

TEST(LandUseClasses, IntegersAreCut) {
    const CanopyConvTable table{{row_of_code(5)}};
    LandUseMap map{Field2(3, 1)};
    map.values(1, 1) = 5;
    map.values(2, 1) = 7.9F;
    map.values(3, 1) = -2.9F;
    const Array2<std::int32_t> numbers = replaced_codes(table, map);
    EXPECT_EQ(numbers(1, 1), 1);
    EXPECT_EQ(numbers(2, 1), 7);
    EXPECT_EQ(numbers(3, 1), -2);
}

TEST(LandUseClasses, ValueThatNoIntegerHoldsStops) {
    for (const float value : {std::numeric_limits<float>::quiet_NaN(), 3.0e9F, -3.0e9F}) {
        LandUseMap map{Field2(1, 1, value)};
        EXPECT_EQ(test::stop_code_of([&] { replaced_codes({}, map); }), 1);
    }
}

}  // namespace
}  // namespace torvex
