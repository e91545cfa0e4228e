// How a direction's entry and its three ends are told: console, log, table.

#include "run/outcome.hpp"

#include <gtest/gtest.h>

#include "run/working_directory.hpp"
#include "support/case_text.hpp"

namespace torvex {
namespace {

class Outcome : public ::testing::Test {
 protected:
    Outcome() {
        direction.angle = 22.5F;
        direction.outer_count = 120;
        direction.tested = {0.001234F, 0.5F, 0.25F, 1.0F, 12.5F, 0.0F};
        table.open("view-wind_direction.dat", ViewTable::Existing::discard);
    }

    // Runs a step and gives back what the console showed.
    template <class Step>
    std::string shown_by(Step step) {
        ::testing::internal::CaptureStdout();
        step();
        return ::testing::internal::GetCapturedStdout();
    }
    void enter() {
        shown_by([&] { enter_direction(direction, log, table); });
    }
    std::string logged() const { return test::without_dates(log.kept()); }

    test::WorkingDirectory directory;
    Direction direction;
    RunLog log;
    ViewTable table;
    const std::string residuals =
        "                              resid-m: 0.1234E-02 resid-u: 0.5000E+00\n"
        "                              resid-v: 0.2500E+00 resid-w: 0.1000E+01\n"
        "                              resid-k: 0.1250E+02 resid-e: 0.0000E+00\n";
};

TEST_F(Outcome, EntryIsToldWithTwoDecimalsOnTheConsoleAndOneInTheLog) {
    direction.angle = 359.96F;
    EXPECT_EQ(shown_by([&] { enter_direction(direction, log, table); }),
              "\n * Wind direction: 359.96\n");
    EXPECT_EQ(logged(), "<date> WD 360.0: Entered\n");
    EXPECT_EQ(table.count(), 2);
    EXPECT_EQ(table.slot(2), "360.0 0");
}

TEST_F(Outcome, SmallAnglesAreRightAdjusted) {
    direction.angle = 0.0F;
    EXPECT_EQ(shown_by([&] { enter_direction(direction, log, table); }),
              "\n * Wind direction:   0.00\n");
    EXPECT_EQ(logged(), "<date> WD   0.0: Entered\n");
    EXPECT_EQ(table.slot(2), "  0.0 0");
}

TEST_F(Outcome, Converged) {
    direction.converged = true;
    direction.diverged = true;  // the first that matches counts
    enter();
    log.discard();
    EXPECT_EQ(shown_by([&] { report_outcome(direction, log, table); }),
              "   - Calculation converged.\n");
    EXPECT_EQ(logged(), "<date> WD  22.5: Converged.   120 it.\n" + residuals);
    EXPECT_EQ(table.count(), 2);
    EXPECT_EQ(table.slot(2), " 22.5 1");
}

TEST_F(Outcome, Diverged) {
    direction.diverged = true;
    enter();
    log.discard();
    EXPECT_EQ(shown_by([&] { report_outcome(direction, log, table); }),
              "   - Calculation diverged.\n");
    EXPECT_EQ(logged(), "<date> WD  22.5: Diverged.   120 it. Skip this direction.\n" + residuals);
    EXPECT_EQ(table.slot(2), " 22.5 3");
}

TEST_F(Outcome, NotConverged) {
    enter();
    log.discard();
    EXPECT_EQ(shown_by([&] { report_outcome(direction, log, table); }),
              "   - Calculation ended without converging.\n");
    EXPECT_EQ(logged(), "<date> WD  22.5: Finished without converging.   120 it.\n" + residuals);
    EXPECT_EQ(table.slot(2), " 22.5 2");
}

TEST_F(Outcome, UserStopCountsAsNotConverged) {
    direction.stop_requested = true;
    enter();
    shown_by([&] { report_outcome(direction, log, table); });
    EXPECT_EQ(table.slot(2), " 22.5 2");
}

TEST_F(Outcome, OnlyTheLastRowChanges) {
    enter();
    direction.angle = 45.0F;
    enter();
    set_status(direction, DirectionStatus::converged, table);
    EXPECT_EQ(table.count(), 3);
    EXPECT_EQ(table.slot(2), " 22.5 0");
    EXPECT_EQ(table.slot(3), " 45.0 1");
}

TEST_F(Outcome, UnknownResidualsAndLongCountsAreShown) {
    direction.tested = {unknown_residual, unknown_residual, unknown_residual,
                        unknown_residual, unknown_residual, unknown_residual};
    direction.outer_count = 123456;
    enter();
    log.discard();
    shown_by([&] { report_outcome(direction, log, table); });
    EXPECT_EQ(test::lines_of(logged())[0],
              "<date> WD  22.5: Finished without converging. ***** it.");
    EXPECT_EQ(test::lines_of(logged())[1],
              "                              resid-m: 0.1000E+26 resid-u: 0.1000E+26");
}

}  // namespace
}  // namespace torvex
