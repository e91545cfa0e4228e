// The header of an HGF raster, where the data begin at the first line without a "%":
//
//   %HGF 1.00
//   %COLS 200
//   %ROWS 100
//   %% a comment

#include "maps/hgf_header.hpp"

#include <string>
#include <string_view>

#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "maps/map_header.hpp"

namespace torvex {

namespace {

constexpr std::size_t line_width = 80;

[[noreturn]] void stop_with(std::string_view text, std::string_view line, long number,
                            std::string_view fix) {
    console(text);
    stop(1, text, "line " + std::to_string(number) + ", " + excerpt(line), fix);
}

int count_of(std::string_view line, long number) {
    int count = 0;
    if (!ListInput(line.substr(5)).read(count)) {
        stop_with("Error in header of HGF file", line, number, "expected an integer there");
    }
    return count;
}

}  // namespace

HgfHeader read_hgf_header(ListInput& input) {
    HgfHeader header;
    std::string_view line;
    for (;;) {
        const long number = input.line();
        ListInput ahead = input;
        if (!ahead.read_line(line) || !line.starts_with('%')) {
            return header;
        }
        input = ahead;
        line = line.substr(0, line_width);
        if (line.starts_with("%HGF")) {
            if (trimmed(line.substr(4)) != "1.00") {
                stop_with("Error in HGF version", line, number, "expected version 1.00");
            }
        } else if (line.starts_with("%COLS")) {
            header.columns = count_of(line, number);
        } else if (line.starts_with("%ROWS")) {
            header.rows = count_of(line, number);
        } else if (!line.starts_with("%%")) {
            stop_with("Error in header of HGF file", line, number,
                      "expected %HGF, %COLS, %ROWS or %%");
        }
    }
}

}  // namespace torvex
