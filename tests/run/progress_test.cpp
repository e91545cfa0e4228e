#include "run/progress.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "run/run_fixture.hpp"
#include "support/terminal.hpp"

namespace torvex {
namespace {

using testing::HasSubstr;

// A residual that falls by a factor of 10 every 20 iterations and is 100 times too large needs 40.
TEST(DecayEstimate, ReadsTheIterationsLeftFromTheDecay) {
    DecayEstimate estimate;
    EXPECT_LT(estimate.iterations_left(), 0);
    for (int iter = 10; iter <= 100; iter += 10) {
        estimate.add(iter, 100 * std::pow(10.0, (100 - iter) / 20.0));
    }
    EXPECT_NEAR(estimate.iterations_left(), 40, 1e-6);
}

TEST(DecayEstimate, KnowsNothingWithoutADecay) {
    DecayEstimate estimate;
    estimate.add(10, 5);
    EXPECT_LT(estimate.iterations_left(), 0);
    estimate.add(20, 6);
    EXPECT_LT(estimate.iterations_left(), 0);
}

TEST(DecayEstimate, LeavesOutWhatHasNoLogarithm) {
    DecayEstimate estimate;
    estimate.add(10, 100);
    estimate.add(20, std::nan(""));
    estimate.add(30, 0);
    estimate.add(30, 1);
    EXPECT_NEAR(estimate.iterations_left(), 0, 1e-9);
}

ProgressState some_state() {
    return {.angle = 270,
            .iwd = 2,
            .directions = 4,
            .iter = 120,
            .last_iter = 600,
            .ratio = {.m = 2.14F, .u = 0.75F, .v = 12.0F, .w = 1.0e25F},
            .seconds = 24,
            .iterations_done = 120,
            .iterations_left = 60};
}

TEST(ProgressText, TellsPlaceResidualsAndTimeLeft) {
    EXPECT_EQ(progress_text(some_state()),
              "WD 270.0 (2 of 4): iteration 120, about 12 s left; m 2.1 u 0.8 v 12.0 w - of the "
              "criteria");
}

// Without a decay, and with one that the iterations allowed cut short: 480 iterations of 0.2 s.
TEST(ProgressText, IsBoundedByTheIterationsAllowed) {
    ProgressState state = some_state();
    state.iterations_left = -1;
    EXPECT_THAT(progress_text(state), HasSubstr(", at most 96 s left"));
    state.iterations_left = 10000;
    EXPECT_THAT(progress_text(state), HasSubstr(", at most 96 s left"));
    state.seconds = 240;
    EXPECT_THAT(progress_text(state), HasSubstr(", at most 16 min left"));
}

class ProgressRun : public test::RunTest {
 protected:
    void run_with_errors_on(const std::string& errors) const {
        write_case({{"NML_NUMERICAL_SOLVER", "MAXIT = 3"},
                    {"NML_CASEFILE", "N_WIND_DIRECTION = 2"},
                    {"NML_MONITOR", "MONITOR_STEP = 1"}});
        const test::ProgramRun ran = test::run_program(
            "/bin/sh", {"-c", test::torvex_program() + " > out 2> " + errors}, directory.path());
        EXPECT_EQ(ran.status, 0);
    }
};

TEST_F(ProgressRun, ShowsOneLineOnATerminalAndTakesItAway) {
    if (!test::Terminal::can_be_had()) {
        GTEST_SKIP() << "no terminal can be had here";
    }
    test::Terminal terminal;
    run_with_errors_on(terminal.name());
    const std::string screen = terminal.read();
    EXPECT_THAT(screen, HasSubstr("WD   0.0 (1 of 2): iteration 1, at most "));
    EXPECT_THAT(screen, HasSubstr("WD 180.0 (2 of 2): iteration 1, at most "));
    // Taken away before the closing line, which is the only one that stays.
    const std::string closing = "torvex: 0 of 2 directions converged; not converged: 0.0, 180.0";
    EXPECT_THAT(screen, HasSubstr("\r\033[K" + closing));
    EXPECT_EQ(screen.find('\n'), screen.size() - 1);
    EXPECT_THAT(directory.read("out"), testing::Not(HasSubstr("of the criteria")));
}

TEST_F(ProgressRun, ShowsNoLineWithoutATerminal) {
    run_with_errors_on("err");
    EXPECT_EQ(directory.read("err"),
              "torvex: 0 of 2 directions converged; not converged: 0.0, 180.0; torvex.log has "
              "more\n");
}

}  // namespace
}  // namespace torvex
