#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "run/run_state.hpp"

namespace torvex {

// Iterations until all criteria are met, from the decay of the worst residual over the last tests;
// below 0 if nothing tells of a decay.
class DecayEstimate {
 public:
    void add(int iter, double worst_ratio);
    double iterations_left() const;

 private:
    struct Test {
        double iter, log_ratio;
    };
    std::vector<Test> tests_;  // the latest few, the newest last
};

// How far a direction has come.
struct ProgressState {
    float angle = 0;
    int iwd = 0, directions = 0;
    int iter = 0, last_iter = 0;
    Residuals ratio;              // tested residuals over their criteria
    double seconds = 0;           // since the first iteration
    int iterations_done = 0;      // in that time
    double iterations_left = -1;  // of the estimate
};

// "WD 270.0 (2 of 4): iteration 120, about 12 s left; m 2.1 u 0.8 v 0.3 w 1.4 of the criteria".
std::string progress_text(const ProgressState& state);

// Keeps that text on the terminal while a direction is solved; does nothing without a terminal.
class Progress {
 public:
    Progress(const CaseSettings& settings, const Direction& direction, int last_iter);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void iteration(int iter, bool tested);  // behind the tests of an iteration

 private:
    using Clock = std::chrono::steady_clock;

    const CaseSettings& settings_;
    const Direction& direction_;
    int last_iter_;
    int first_iter_;
    Clock::time_point start_ = Clock::now();
    Clock::time_point shown_;
    DecayEstimate estimate_;
};

}  // namespace torvex
