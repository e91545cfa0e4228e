#include "run/steps_to_come.hpp"

#include <string>

#include "base/stop.hpp"

namespace torvex {

namespace {

[[noreturn]] void not_yet(const std::string& what, const std::string& way_out) {
    stop(1, what + " cannot be computed by this version", {}, way_out);
}

}  // namespace

void nest_fit_lines(Run& /*run*/) {}
void nest_check_domain(Run& /*run*/) {}
void nest_bc_set(Run& /*run*/, Direction& /*direction*/) {
    not_yet("a nested run", "set nest_mode = 0");
}

}  // namespace torvex
