// From the case file to a case whose directions can begin.

#include "run/settle_case.hpp"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "base/file_names.hpp"
#include "base/name_clash.hpp"
#include "base/stop.hpp"
#include "case/case_blocks.hpp"
#include "case/case_checks.hpp"
#include "case/case_directory.hpp"
#include "case/case_file.hpp"
#include "case/case_warnings.hpp"
#include "case/wind_directions.hpp"
#include "mesh/map_cover.hpp"
#include "mesh/size_domain.hpp"
#include "results/restart_info.hpp"
#include "results/run_outputs.hpp"
#include "run/criteria.hpp"
#include "run/nested_run.hpp"

namespace torvex {

namespace {

// An input that a run would overwrite is refused before anything is written. The mesh and the
// roughness of a user's domain may be the run's own: those it leaves alone.
void refuse_name_clash(const CaseText& file, const CaseSettings& settings, RunLog& log) {
    const std::vector<NamedInput> inputs{
        {"the case file", file.name},
        {"BASIC_H_FILE", settings.BASIC_H_FILE},
        {"DETAILED_H_FILE", settings.DETAILED_H_FILE},
        {"BASIC_Z0_FILE", settings.BASIC_Z0_FILE},
        {"DETAILED_Z0_FILE", settings.DETAILED_Z0_FILE},
        {"INFLOW_PROFILE_FILE", settings.INFLOW_PROFILE_FILE},
        {"DIRECTIONAL_ALPHA_FILE_NAME", settings.DIRECTIONAL_ALPHA_FILE_NAME},
        {"XYCONF", settings.XYCONF},
        {"mesh_n_file", settings.user.mesh_n_file},
        {"ccd_file", settings.user.ccd_file},
        {"inflow_profile_file", settings.user.inflow_profile_file}};
    const auto clash = name_clash(inputs, run_output_names(settings, tags_of_case(settings)));
    if (clash) {
        const std::array log_name{std::string(file_names::run_log)};
        if (name_clash(inputs, log_name)) {
            log.discard();  // the reason must not be written into an input
        }
        stop(1, clash->input.key + " names a file that the run itself writes: " + clash->output,
             clash->input.path, "give it another name");
    }
}

std::string mesh_counts(const MeshLines& lines) {
    const auto total = static_cast<std::int64_t>(lines.ni) * lines.nj * lines.nk;
    return std::to_string(lines.ni) + " x " + std::to_string(lines.nj) + " x " +
           std::to_string(lines.nk) + " = " + std::to_string(total);
}

}  // namespace

void read_settings(const CaseText& file, CaseSettings& settings, KeyLines& lines, Run& run) {
    read_case_file(file, settings, lines, run.log);
    expand_file_keys(settings);

    read_nest_points(file, settings, run.log);
    read_canopy_parameters(file, settings);
    read_shape_parameters(file, settings);
    read_user_domain(file, settings);
    check_limits(file, settings, lines);
    warn_of_case(file, settings, lines, run.log);

    if (settings.nested()) {
        settings.nest.lon = settings.CENT_LON;
        settings.nest.lat = settings.CENT_LAT;
        settings.run_prefix = "nest-";
    }
    refuse_name_clash(file, settings, run.log);
}

void size_run(CaseSettings& settings, Run& run) {
    if (settings.TORVEX_MODE != 0) {
        force_one_direction(settings);
        run.wd_tag = wd_tags(settings);
        return;
    }
    run.lines = size_domain(settings, run.maps, run.log);
    if (settings.nested()) {
        fit_nest(settings, run);
    }
    console("   - Total mesh number is: " + mesh_counts(run.lines));
    run.log.timed(" Mesh number is: " + mesh_counts(run.lines));
    const float S = scale_criteria(settings, run.lines.ni, run.lines.nj, run.lines.nk);
    report_criteria(settings, S, run.log);
    set_angles(settings);
    run.wd_tag = wd_tags(settings);
}

bool has_saved_state(const Run& run, int iwd) {
    const std::string stem = file_names::restart_stem(
        run.settings.run_prefix, run.wd_tag[static_cast<std::size_t>(iwd - 1)]);
    return run.settings.RESTART_FLAG == 1 &&
           read_restart_info(stem + std::string(file_names::restart_info)).has_value();
}

void warn_of_small_maps(Run& run) {
    const CaseSettings& settings = run.settings;
    if (settings.TORVEX_MODE != 0) {
        return;
    }
    std::vector<int> to_mesh;
    for (int iwd = 1; iwd <= settings.N_WIND_DIRECTION; ++iwd) {
        if (!has_saved_state(run, iwd)) {
            to_mesh.push_back(iwd);
        }
    }
    for (const Warning& warning : cover_warnings(settings, run.lines, run.maps.datum, to_mesh)) {
        run.log.warn(warning.text, warning.reminder);
    }
}

}  // namespace torvex
