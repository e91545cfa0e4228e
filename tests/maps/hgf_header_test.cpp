#include "maps/hgf_header.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "maps/map_texts.hpp"

namespace torvex {
namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

TEST(HgfHeader, StopsInFrontOfTheFirstDataLine) {
    ListInput input("%HGF   1.00  \r\n%% 50 %% words\n%COLS 200\n%ROWS100 and words\n1 2 3\n%x\n");
    const HgfHeader header = read_hgf_header(input);
    EXPECT_EQ(header.columns, 200);
    EXPECT_EQ(header.rows, 100);
    EXPECT_EQ(input.line(), 5);
    std::string_view line;
    ASSERT_TRUE(input.read_line(line));
    EXPECT_EQ(line, "1 2 3");
}

TEST(HgfHeader, NothingIsRequired) {
    for (const char* text : {"", "1 2 3\n", " %COLS 5\n", "%HGF1.00", "%%\n"}) {
        ListInput input(text);
        const HgfHeader header = read_hgf_header(input);
        EXPECT_EQ(header.columns, 0) << text;
        EXPECT_EQ(header.rows, 0) << text;
    }
}

TEST(HgfHeader, LinesCountUpToTheirEightiethCharacter) {
    const std::string version = "%HGF 1.00" + std::string(71, ' ') + "x\n";
    ListInput input(version);
    read_hgf_header(input);
    EXPECT_TRUE(input.at_end());
    const std::string columns = "%COLS" + std::string(74, ' ') + "12\n";
    ListInput cut(columns);
    EXPECT_EQ(read_hgf_header(cut).columns, 1);
}

void expect_refused(const std::string& text, const std::string& message) {
    CaptureStdout();
    const Stop s = test::stop_of([&text] {
        ListInput input(text);
        read_hgf_header(input);
    });
    EXPECT_EQ(GetCapturedStdout(), message + "\n") << text;
    EXPECT_EQ(s.code(), 1) << text;
    EXPECT_EQ(s.reason(), message) << text;
}

TEST(HgfHeader, WrongVersionAndUnknownLinesEndTheRun) {
    expect_refused("%HGF 1.01\n", "Error in HGF version");
    expect_refused("%HGF\n", "Error in HGF version");
    expect_refused("%% fine\n%hgf 1.00\n", "Error in header of HGF file");
    expect_refused("%\n", "Error in header of HGF file");
    expect_refused("% COLS 5\n", "Error in header of HGF file");
    expect_refused("%COLS\n", "Error in header of HGF file");
    expect_refused("%ROWS many\n", "Error in header of HGF file");
}

}  // namespace
}  // namespace torvex
