// The table of shear exponents by direction, its closing entry, and tables that cannot be read.

#include "case/alpha_table.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "case/case_reading.hpp"
#include "support/case_text.hpp"
#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::stop_of;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class AlphaTable : public ::testing::Test {
 protected:
    void read(const std::string& text) {
        directory.write("alpha.txt", text);
        settings.DIRECTIONAL_ALPHA_FILE_NAME = directory.file("alpha.txt");
        read_alpha_table(settings);
    }
    std::string refusal(const std::string& text) {
        const auto stopped = stop_of([&] { read(text); });
        if (!stopped) {
            return {};
        }
        EXPECT_EQ(stopped->code(), 1);
        return stopped->what();
    }

    test::TemporaryDirectory directory;
    CaseSettings settings;
};

TEST_F(AlphaTable, ClosingEntryStandsAtTheFirstAlphaAbove360) {
    read("2\n0 0.2\n180 0.3\n");
    EXPECT_THAT(settings.alpha_direction, ElementsAre(0.0F, 180.0F, 360.0F + 0.2F));
    EXPECT_THAT(settings.alpha_value, ElementsAre(0.2F, 0.3F, 0.2F));
}

TEST_F(AlphaTable, OneEntryGivesTwo) {
    read("1\n45 0.15\n");
    EXPECT_THAT(settings.alpha_direction, ElementsAre(45.0F, 360.0F + 0.15F));
    EXPECT_THAT(settings.alpha_value, ElementsAre(0.15F, 0.15F));
}

TEST_F(AlphaTable, IsFreeForm) {
    read("  3  directions\r\n\r\n0, 1D-1 north\n 120\n 2.0e-1\n240\t.3\nand so on");
    EXPECT_THAT(settings.alpha_direction, ElementsAre(0.0F, 120.0F, 240.0F, 360.0F + 0.1F));
    EXPECT_THAT(settings.alpha_value, ElementsAre(0.1F, 0.2F, 0.3F, 0.1F));
}

TEST_F(AlphaTable, SecondTableReplacesTheFirst) {
    read("2\n0 0.2\n180 0.3\n");
    read("1\n0 0.25\n");
    EXPECT_EQ(settings.alpha_value.size(), 2U);
}

TEST_F(AlphaTable, MissingFileIsNamed) {
    settings.DIRECTIONAL_ALPHA_FILE_NAME = directory.file("none.txt");
    const auto stopped = stop_of([&] { read_alpha_table(settings); });
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 1);
    EXPECT_THAT(stopped->what(), HasSubstr("none.txt"));
    EXPECT_THAT(stopped->what(), HasSubstr("DIRECTIONAL_ALPHA_FILE_NAME"));
    settings.DIRECTIONAL_ALPHA_FILE_NAME = "";
    EXPECT_TRUE(stop_of([&] { read_alpha_table(settings); }));
    settings.DIRECTIONAL_ALPHA_FILE_NAME = directory.path().string();
    EXPECT_TRUE(stop_of([&] { read_alpha_table(settings); }));
}

TEST_F(AlphaTable, BadTextNamesFileAndLine) {
    EXPECT_THAT(refusal("2\n0 0.2\n180 x\n"), HasSubstr("cannot read \"x\""));
    EXPECT_THAT(refusal("2\n0 0.2\n180 x\n"), HasSubstr("alpha.txt, line 3"));
    EXPECT_THAT(refusal("two\n"), HasSubstr("alpha.txt, line 1"));
    EXPECT_THAT(refusal("2\n0 0.2\n"), HasSubstr("the text ends"));
    EXPECT_THAT(refusal(""), HasSubstr("the text ends"));
    EXPECT_THAT(refusal("2.5\n0 0.2\n"), HasSubstr("an integer"));
}

TEST_F(AlphaTable, CountBelowOneIsRefused) {
    EXPECT_THAT(refusal("0\n"), HasSubstr("the count is 0"));
    EXPECT_THAT(refusal("-1\n0 0.2\n"), HasSubstr("the count is -1"));
}

TEST_F(AlphaTable, HugeCountFailsAtTheEndOfTheFile) {
    EXPECT_THAT(refusal("2147483647\n0 0.2\n"), HasSubstr("the text ends"));
}

TEST_F(AlphaTable, ValuesAreNumbers) {
    EXPECT_THAT(refusal("1\nnan 0.2\n"), HasSubstr("alpha.txt, line 2"));
    EXPECT_THAT(refusal("1\n0 inf\n"), HasSubstr("alpha.txt, line 2"));
}

TEST_F(AlphaTable, IsReadOnlyWhereAsked) {
    directory.write("alpha.txt", "1\n0 0.2\n");
    const std::string name = "DIRECTIONAL_ALPHA_FILE_NAME = '" + directory.file("alpha.txt") + "'";
    const auto alphas = [&](const std::string& flag) {
        return test::ReadCase(test::case_text({{"NML_ER", name},
                                               {"NML_ER", "USE_DIRECTIONAL_ALPHA = " + flag}}))
            .settings.alpha_value;
    };
    EXPECT_THAT(alphas("T"), ElementsAre(0.2F, 0.2F));
    EXPECT_THAT(alphas("F"), IsEmpty());
    EXPECT_TRUE(stop_of([] {
        test::ReadCase(test::case_text({{"NML_ER", "USE_DIRECTIONAL_ALPHA = T"}}));
    })) << "the switch without a file name";
}

}  // namespace
}  // namespace torvex
