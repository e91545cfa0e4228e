#pragma once

#include "base/run_log.hpp"
#include "results/view_table.hpp"
#include "run/run_state.hpp"

namespace torvex {

// Status column of view-wind_direction.dat.
enum class DirectionStatus { entered = 0, converged = 1, not_converged = 2, diverged = 3 };

// Tells console, log and table that a direction begins; its row has the status 0.
void enter_direction(const Direction& direction, RunLog& log, ViewTable& directions);

// Rewrites the last row of the table with a new status.
void set_status(const Direction& direction, DirectionStatus status, ViewTable& directions);

// Tells log, table and console how a direction ended, and the log its residuals.
void report_outcome(const Direction& direction, RunLog& log, ViewTable& directions);

}  // namespace torvex
