#include "base/stop.hpp"
#include "prep/entries.hpp"
#include "prep/prep_case.hpp"
#include "results/write_preview.hpp"

namespace torvex {

int prep_preview(std::vector<std::string> arguments) {
    const std::string case_file = take_case_file(arguments);
    if (!arguments.empty()) {
        stop(102, "unknown argument \"" + arguments[0] + "\"", {},
             "usage: torvex-prep preview [/f CASE_FILE]");
    }
    PrepCase prep;
    open_prep_case(case_file, "preview", prep);
    write_preview(prep.settings, prep.lines, prep.maps);
    prep.log.timed(" The preview was written.");
    return 0;
}

}  // namespace torvex
