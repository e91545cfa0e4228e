#include "prep/prep_case.hpp"

#include <algorithm>

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "case/case_blocks.hpp"
#include "case/case_checks.hpp"
#include "case/case_directory.hpp"
#include "case/case_file.hpp"
#include "case/case_warnings.hpp"
#include "case/wind_directions.hpp"
#include "mesh/size_domain.hpp"
#include "nest/nest_lines.hpp"

namespace torvex {

std::string take_case_file(std::vector<std::string>& arguments) {
    std::string case_file = "torvex.tin";
    const auto given = std::ranges::find_if(
        arguments, [](const std::string& argument) { return left_adjusted(argument) == "/f"; });
    if (given != arguments.end()) {
        if (given + 1 != arguments.end()) {
            case_file = *(given + 1);
            arguments.erase(given + 1);
        }
        arguments.erase(given);
    }
    return case_file;
}

void open_prep_case(const std::string& case_file, const std::string& entry, PrepCase& prep) {
    const std::string path = full_path(case_file);
    prep.file = load_case_text(path);
    enter_directory_of(path);
    prep.log.open(prep_log_name);
    prep.log.timed(" torvex-prep " + entry);

    CaseSettings& settings = prep.settings;
    KeyLines lines;
    read_case_file(prep.file, settings, lines, prep.log);
    expand_file_keys(settings);
    read_nest_points(prep.file, settings, prep.log);
    read_canopy_parameters(prep.file, settings);
    read_shape_parameters(prep.file, settings);
    check_limits(prep.file, settings, lines);
    warn_of_case(prep.file, settings, lines, prep.log);
    if (settings.nested()) {
        settings.nest.lon = settings.CENT_LON;
        settings.nest.lat = settings.CENT_LAT;
        settings.run_prefix = "nest-";
    }
    if (settings.TORVEX_MODE != 0) {
        stop(1, "a user-defined domain has no mesh that torvex-prep " + entry + " could make",
             lines.where(prep.file, "TORVEX_MODE"), "set TORVEX_MODE = 0");
    }
    prep.lines = size_domain(settings, prep.maps, prep.log);
    set_angles(settings);
    if (settings.nested()) {
        nest_check_domain(settings, nest_fit_lines(settings, prep.log, prep.lines));
    }
    prep.wd_tag = wd_tags(settings);
}

}  // namespace torvex
