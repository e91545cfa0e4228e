// The arguments behind the program's name.

#include "run/command_line.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/failures.hpp"

namespace torvex {
namespace {

using test::stop_of;
using ::testing::HasSubstr;

TEST(CommandLine, NothingMeansTheDefaultFile) {
    EXPECT_EQ(case_file_argument({}), "torvex.tin");
}

TEST(CommandLine, SwitchNamesTheFile) {
    EXPECT_EQ(case_file_argument({"/f", "sub/case.tin"}), "sub/case.tin");
    EXPECT_EQ(case_file_argument({"  /f", "case.tin"}), "case.tin");
    EXPECT_EQ(case_file_argument({"\t/f", "case.tin"}), "case.tin");
}

TEST(CommandLine, NameIsTakenWhole) {
    EXPECT_EQ(case_file_argument({"/f", " a file "}), " a file ");
    EXPECT_EQ(case_file_argument({"/f", "/f"}), "/f");
    EXPECT_EQ(case_file_argument({"/f", "/x"}), "/x");
    EXPECT_EQ(case_file_argument({"/f", ""}), "");
}

TEST(CommandLine, LastOfTwoCounts) {
    EXPECT_EQ(case_file_argument({"/f", "a.tin", "/f", "b.tin"}), "b.tin");
}

TEST(CommandLine, SwitchAtTheEndChangesNothing) {
    EXPECT_EQ(case_file_argument({"/f"}), "torvex.tin");
    EXPECT_EQ(case_file_argument({"/f", "a.tin", "/f"}), "a.tin");
}

TEST(CommandLine, EverythingElseStops102) {
    const std::vector<std::vector<std::string>> bad{
        {"/F"},   {"-f"},           {"x/f"},         {"/f=case.tin"},

        {""},     {"case.tin"},     {"/F", "a.tin"}, {"--help"},
        {"/f/f"}, {"/f", "a", "b"}, {"/"},           {"x", "/f", "a.tin"}};
    for (const auto& arguments : bad) {
        const auto stopped = stop_of([&] { case_file_argument(arguments); });
        ASSERT_TRUE(stopped) << arguments.front();
        EXPECT_EQ(stopped->code(), 102);
        EXPECT_THAT(stopped->what(), HasSubstr("usage: torvex [/f CASE_FILE]"));
    }
    EXPECT_THAT(stop_of([] {
                    case_file_argument({"/f", "a", "b"});
                })->what(),
                HasSubstr("unknown argument \"b\""));
}

}  // namespace
}  // namespace torvex
