#include "run/stored_start.hpp"

#include <string>
#include <utility>

#include "results/result_files.hpp"
#include "solver/init.hpp"

namespace torvex {

namespace {

// Start fields from an earlier run that left no restart.info, where they fit.
void take_stored_start(Direction& direction) {
    const GridGeometry& grid = direction.grid;
    StoredStart stored;
    for (Field3* field : {&stored.u, &stored.v, &stored.w, &stored.p, &stored.tke, &stored.ted}) {
        field->allocate(grid.ni, grid.nj, grid.nk);
    }
    const ResultTargets targets{.u = &stored.u,
                                .v = &stored.v,
                                .w = &stored.w,
                                .p = &stored.p,
                                .tke = &stored.tke,
                                .ted = &stored.ted};
    if (read_vpkeinp(direction.restart_stem + std::string(vpkeinp_name), targets)) {
        apply_stored_start(direction.flow, std::move(stored));
    }
}

}  // namespace

void finish_start(const Run& run, Direction& direction) {
    if (run.settings.RESTART_FLAG == 1) {
        take_stored_start(direction);
    }
    write_vpkeinp(direction.restart_stem, result_fields(direction.flow));
}

}  // namespace torvex
