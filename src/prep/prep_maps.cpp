#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "case/case_directory.hpp"
#include "case/case_text.hpp"
#include "maps/conversion/conversion_keys.hpp"
#include "maps/conversion/trdb2tvm.hpp"
#include "prep/entries.hpp"
#include "prep/prep_case.hpp"

namespace torvex {

namespace {

constexpr const char* default_name = "trdb2tvm.tin";

CaseText load_settings(const std::string& name) {
    const std::string path = full_path(name);
    std::optional<std::string> text = read_text_file(path);
    if (!text) {
        stop(1, "the settings of the conversion cannot be read", path,
             "name an existing file: torvex-prep maps [trdb2tvm.tin]");
    }
    return {path, std::move(*text)};
}

}  // namespace

int prep_maps(std::vector<std::string> arguments) {
    if (arguments.size() > 1) {
        stop(102, "unknown argument \"" + arguments[1] + "\"", {},
             "usage: torvex-prep maps [trdb2tvm.tin]");
    }
    const CaseText file = load_settings(arguments.empty() ? default_name : arguments[0]);
    enter_directory_of(file.name);
    const ConversionSettings settings = read_conversion_settings(file);
    RunLog log;
    log.open(prep_log_name);
    log.timed(" torvex-prep maps");
    trdb2tvm(settings, log);
    return 0;
}

}  // namespace torvex
