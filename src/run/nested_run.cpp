#include "run/nested_run.hpp"

#include <filesystem>
#include <string>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/stop.hpp"
#include "case/wind_directions.hpp"
#include "nest/nest_bc_set.hpp"
#include "nest/parent_state.hpp"
#include "run/criteria.hpp"

namespace torvex {

namespace {

void require_parent(const std::string& stem) {
    const std::string info = stem + std::string(file_names::restart_info);
    if (!std::filesystem::exists(info)) {
        const std::string text = "Error: parent calculation data missing.";
        console(text);
        stop(0, text, info, "run the parent case in this directory first");
    }
}

}  // namespace

void fit_nest(CaseSettings& settings, Run& run) {
    MeshLines& lines = run.lines;
    // The criteria that the parent met, which are scaled with its own cells.
    CaseSettings of_parent = settings;
    scale_criteria(of_parent, lines.ni, lines.nj, lines.nk);
    set_angles(settings);
    set_angles(of_parent);
    run.parent_lines = nest_fit_lines(settings, run.log, lines);
    nest_check_domain(settings, run.parent_lines);
    tell_parent_state(of_parent, wd_tags(settings), run.log);
}

void carry_parent_flow(Run& run, const DirectionMaps& maps, Direction& direction) {
    const std::string stem = parent_stem(direction.tag);
    require_parent(stem);
    nest_bc_set({.settings = run.settings,
                 .lines = run.parent_lines,
                 .maps = maps,
                 .angle = direction.angle,
                 .grid = direction.grid,
                 .log = run.log},
                stem, run.leaves_files ? direction.restart_stem : "", direction.flow);
}

void tell_kept_boundary(Run& run, const Direction& direction) {
    run.log.timed(" WD " + edit::F(direction.angle, 5, 1) +
                  ": nest: the boundary is that of the child's start.");
}

}  // namespace torvex
