#include "base/status_line.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

#include "support/terminal.hpp"

namespace torvex {
namespace {

const std::string erase = "\r\033[K";

TEST(StatusLine, StaysBelowOtherLines) {
    if (!test::Terminal::can_be_had()) {
        GTEST_SKIP() << "no terminal can be had here";
    }
    test::Terminal terminal;
    StatusLine line(terminal.slave());
    EXPECT_TRUE(line.is_shown());
    line.show("half way");
    line.hide();
    line.redraw();
    line.show("there");
    line.clear();
    line.redraw();
    line.hide();
    EXPECT_EQ(terminal.read(),
              erase + "half way" + erase + erase + "half way" + erase + "there" + erase);
}

TEST(StatusLine, IsCutBelowTheWidthOfTheTerminal) {
    if (!test::Terminal::can_be_had()) {
        GTEST_SKIP() << "no terminal can be had here";
    }
    test::Terminal terminal(10);
    StatusLine line(terminal.slave());
    line.show("0123456789abc");
    EXPECT_EQ(terminal.read(), erase + "012345678");
}

TEST(StatusLine, IsSilentWhereThereIsNoTerminal) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    StatusLine line(ends[1]);
    EXPECT_FALSE(line.is_shown());
    line.show("half way");
    line.clear();
    close(ends[1]);
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 0);
    close(ends[0]);
}

}  // namespace
}  // namespace torvex
