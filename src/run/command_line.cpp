#include "run/command_line.hpp"

#include "base/stop.hpp"
#include "base/text_file.hpp"

namespace torvex {

std::string case_file_argument(const std::vector<std::string>& arguments) {
    std::string case_file = "torvex.tin";
    for (std::size_t n = 0; n < arguments.size(); ++n) {
        if (trimmed(arguments[n]) != "/f") {
            stop(102, "unknown argument \"" + arguments[n] + "\"", {},
                 "usage: torvex [/f CASE_FILE]");
        }
        ++n;
        if (n < arguments.size()) {
            case_file = arguments[n];
        }
    }
    return case_file;
}

}  // namespace torvex
