#pragma once

#include <string_view>

#include "base/run_log.hpp"
#include "base/text_log.hpp"

namespace torvex {

// Where the equations report their sweeps: the console and the convergence log of the direction.
class IterationReport {
 public:
    explicit IterationReport(TextLog& log) : log_(&log) {}

    void line(std::string_view text) const {
        console(text);
        log_->line(text);
    }
    void log_only(std::string_view text) const { log_->line(text); }

 private:
    TextLog* log_;
};

}  // namespace torvex
