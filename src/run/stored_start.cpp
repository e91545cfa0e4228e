#include "run/stored_start.hpp"

#include <string>
#include <utility>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "run/fingerprint.hpp"
#include "solver/init.hpp"

namespace torvex {

namespace {

// Start fields from an earlier run that left no restart.info, where they fit.
bool take_stored_start(Direction& direction) {
    const GridGeometry& grid = direction.grid;
    FlowState stored;
    allocate(stored, start_fields, grid.ni, grid.nj, grid.nk);
    if (!read_vpkeinp(direction.restart_stem + std::string(vpkeinp_name), stored)) {
        return false;
    }
    apply_stored_start(direction.flow, std::move(stored));
    return true;
}

}  // namespace

void forget_saved_states(Run& run, const Direction& direction) {
    if (!run.leaves_files) {
        return;
    }
    forget_file(restart_info_path(direction));
    if (run.settings.RESTART_FLAG == 1 || run.states_forgotten) {
        return;
    }
    for (const std::string& tag : run.wd_tag) {
        forget_file(file_names::restart_stem(run.settings.run_prefix, tag) +
                    std::string(file_names::restart_info));
    }
    run.states_forgotten = true;
}

void finish_start(Run& run, Direction& direction, const std::string& origin) {
    if (!run.leaves_files) {
        tell_start(run, direction, origin);
        return;
    }
    const bool stored =
        run.settings.RESTART_FLAG == 1 && !direction.anew && take_stored_start(direction);
    tell_start(run, direction,
               stored ? direction.restart_stem + std::string(vpkeinp_name) + ", an earlier start"
                      : origin);
    write_vpkeinp(direction.restart_stem, direction.flow);
    // Last, so that a run which is killed on the way leaves the fingerprint of the earlier start
    // beside whatever stands there, and a resume does not trust it.
    std::string gone;
    if (const auto fingerprint = fingerprint_of(run, direction, MapsAre::as_read, gone)) {
        write_fingerprint(fingerprint_path(direction.restart_stem), *fingerprint);
    } else {
        forget_file(fingerprint_path(direction.restart_stem));
    }
}

std::string origin_of_init(const CaseSettings& settings) {
    if (settings.SPECIFY_INFLOW_PROFILE && !settings.nested()) {
        return "the inflow profile file";
    }
    return settings.equilibrium_inflow() ? "the equilibrium layer of the inflow"
                                         : "the power law of the inflow";
}

void tell_start(Run& run, const Direction& direction, const std::string& origin) {
    run.log.timed(" WD " + edit::F(direction.angle, 5, 1) + ": Fields start from " + origin + ".");
}

}  // namespace torvex
