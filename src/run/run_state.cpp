#include "run/run_state.hpp"

#include "base/file_names.hpp"

namespace torvex {

namespace {

template <class Arrays, class Flow>
Arrays arrays_of(Flow& flow) {
    return {.u = &flow.u,
            .v = &flow.v,
            .w = &flow.w,
            .p = &flow.p,
            .tke = &flow.tke,
            .ted = &flow.ted,
            .flxU = &flow.flxU,
            .flxV = &flow.flxV,
            .flxW = &flow.flxW,
            .vis = &flow.vis,
            .pp = &flow.pp,
            .lm = &flow.lm,
            .tkl = &flow.tkl,
            .viskl = &flow.viskl};
}

}  // namespace

void release_fields(Run& run, Direction& direction) {
    run.canopy = {};
    release(direction.flow);
    direction.grid = {};
}

std::string restart_info_path(const Direction& direction) {
    return direction.restart_stem + std::string(file_names::restart_info);
}

ResultFields result_fields(const FlowState& flow) {
    return arrays_of<ResultFields>(flow);
}

ResultTargets result_targets(FlowState& flow) {
    return arrays_of<ResultTargets>(flow);
}

}  // namespace torvex
