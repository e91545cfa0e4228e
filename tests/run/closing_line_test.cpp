// The line that a run ends with.

#include "run/closing_line.hpp"

#include <gtest/gtest.h>

namespace torvex {
namespace {

using enum DirectionEnd;

std::vector<DirectionRecord> of(const std::vector<std::pair<float, DirectionEnd>>& directions) {
    std::vector<DirectionRecord> records;
    for (const auto& [angle, end] : directions) {
        records.push_back({.angle = angle, .end = end});
    }
    return records;
}

TEST(ClosingLine, TellsOfSuccessInAFewWords) {
    EXPECT_EQ(closing_line(of({{270.0F, converged}}), ""),
              "1 of 1 direction converged; torvex.log has more");
    EXPECT_EQ(closing_line(of({{0.0F, converged}, {180.0F, converged}}), ""),
              "2 of 2 directions converged; torvex.log has more");
}

TEST(ClosingLine, NamesTheDirectionsOfEveryOtherEnd) {
    EXPECT_EQ(closing_line(of({{0.0F, converged},
                               {22.5F, diverged},
                               {45.0F, not_converged},
                               {67.5F, broken_off},
                               {90.0F, not_begun},
                               {112.5F, not_iterated},
                               {135.0F, diverged},
                               {157.5F, not_converged}}),
                           ""),
              "1 of 8 directions converged; not converged: 45.0, 157.5; diverged: 22.5, 135.0; "
              "not iterated, since MAXIT is not above 0: 112.5; broken off: 67.5; not begun: 90.0; "
              "torvex.log has more");
    EXPECT_EQ(closing_line(of({{360.0F, diverged}}), ""),
              "0 of 1 direction converged; diverged: 360.0; torvex.log has more");
}

TEST(ClosingLine, EndsBeforeTheDirectionsAreKnown) {
    EXPECT_EQ(closing_line({}, ""), "no direction was begun; torvex.log has more");
}

TEST(ClosingLine, CutsLongListsButNeverTheirCount) {
    std::vector<DirectionRecord> directions;
    std::string names;
    for (int n = 0; n < 12; ++n) {
        directions.push_back({.angle = static_cast<float>(10 * n), .end = not_converged});
        names += (n > 0 ? ", " : "") + std::to_string(10 * n) + ".0";
    }
    EXPECT_EQ(closing_line(directions, ""),
              "0 of 12 directions converged; not converged: " + names + "; torvex.log has more");
    directions.push_back({.angle = 120.0F, .end = not_converged});
    EXPECT_EQ(closing_line(directions, ""), "0 of 13 directions converged; not converged: " +
                                                names + " and 1 more; torvex.log has more");
    for (int n = 0; n < 347; ++n) {
        directions.push_back({.angle = 0.0F, .end = diverged});
    }
    const std::string line = closing_line(directions, "");
    EXPECT_NE(line.find("; diverged: 0.0, "), std::string::npos);
    EXPECT_NE(line.find(" and 335 more; torvex.log"), std::string::npos) << line;
}

TEST(ClosingLine, NamesTheDirectionsThatTheCommonAccelerationDidNotServe) {
    const std::vector<DirectionRecord> directions{
        {.angle = 0.0F, .end = converged},
        {.angle = 90.0F, .end = converged, .stage = Stage::plain},
        {.angle = 180.0F, .end = not_converged, .stage = Stage::robust},
        {.angle = 270.0F, .end = converged, .stage = Stage::robust}};
    EXPECT_EQ(closing_line(directions, "a site"),
              "3 of 4 directions converged; not converged: 180.0; accelerated with the set for "
              "steep ground: 180.0, 270.0; iterated without acceleration: 90.0; mind: a site; "
              "torvex.log has more");
}

TEST(ClosingLine, RemindsOfWhatMakesTheResultDoubtful) {
    EXPECT_EQ(closing_line(of({{0.0F, converged}}), "h.map holds 3 doubtful values; a site"),
              "1 of 1 direction converged; mind: h.map holds 3 doubtful values; a site; "
              "torvex.log has more");
    EXPECT_EQ(closing_line({}, "something"),
              "no direction was begun; mind: something; torvex.log has more");
}

}  // namespace
}  // namespace torvex
