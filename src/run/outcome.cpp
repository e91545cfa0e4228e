#include "run/outcome.hpp"

#include <string>

#include "base/edit.hpp"

namespace torvex {

namespace {

std::string status_row(const Direction& direction, DirectionStatus status) {
    return edit::F(direction.angle, 5, 1) + " " + edit::I(static_cast<int>(status), 1);
}

struct Outcome {
    DirectionStatus status;
    const char* log_text;  // in front of the iteration count
    const char* log_end;   // behind it
    const char* console_text;
};

Outcome outcome_of(const Direction& direction) {
    if (direction.converged) {
        return {DirectionStatus::converged, ": Converged. ", " it.", "   - Calculation converged."};
    }
    if (direction.diverged) {
        return {DirectionStatus::diverged, ": Diverged. ", " it. Skip this direction.",
                "   - Calculation diverged."};
    }
    return {DirectionStatus::not_converged, ": Finished without converging. ", " it.",
            "   - Calculation ended without converging."};
}

}  // namespace

void enter_direction(const Direction& direction, RunLog& log, ViewTable& directions) {
    console("");
    console(" * Wind direction: " + edit::F(direction.angle, 6, 2));
    log.timed(" WD " + edit::F(direction.angle, 5, 1) + ": Entered");
    directions.append(status_row(direction, DirectionStatus::entered));
}

void set_status(const Direction& direction, DirectionStatus status, ViewTable& directions) {
    directions.write_last(status_row(direction, status));
}

void report_outcome(const Direction& direction, RunLog& log, ViewTable& directions) {
    const Outcome outcome = outcome_of(direction);
    log.timed(" WD " + edit::F(direction.angle, 5, 1) + outcome.log_text +
              edit::I(direction.outer_count, 5) + outcome.log_end);
    if (direction.converged && direction.settling.fraction > 0.0F) {
        log.line(std::string(30, ' ') + "by STOP_SITES: the speeds at the sites have settled.");
    }
    set_status(direction, outcome.status, directions);
    console(outcome.console_text);

    const std::string indent(30, ' ');
    const auto value = [](float residual) { return edit::E(residual, 11, 4); };
    const Residuals& r = direction.tested;
    log.line(indent + "resid-m:" + value(r.m) + " resid-u:" + value(r.u));
    log.line(indent + "resid-v:" + value(r.v) + " resid-w:" + value(r.w));
    log.line(indent + "resid-k:" + value(r.k) + " resid-e:" + value(r.e));
}

}  // namespace torvex
