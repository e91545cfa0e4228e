#include "run/run_state.hpp"

#include "base/file_names.hpp"

namespace torvex {

void release_fields(Run& run, Direction& direction) {
    run.canopy = {};
    release(direction.flow);
    direction.grid = {};
}

std::string restart_info_path(const Direction& direction) {
    return direction.restart_stem + std::string(file_names::restart_info);
}

}  // namespace torvex
