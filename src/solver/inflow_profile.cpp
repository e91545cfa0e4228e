// The inflow profile file, in one of two forms:
//
//   table   height above ground [m], u [m/s], tke [m2/s2] on a line each, free form; lines that do
//           not begin with a number are header, blank lines and further columns are passed over
//   .tpd    the site output: the number of levels, a line of titles, then eight values a line, of
//           which height above ground (1), u (2) and tke (6) are used
//
// Heights rise strictly from line to line.

#include "solver/inflow_profile.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

[[noreturn]] void refuse(const std::string& path, long line, const std::string& what) {
    stop(1, "inflow profile: " + what, place(path, line),
         "correct the file; INFLOW_PROFILE_TABLE tells whether it is a table of height, u and tke "
         "or a .tpd profile");
}

void refuse_negative_energy(const std::string& path, long line, float tke) {
    if (tke < 0.0F) {
        refuse(path, line, "tke is negative");
    }
}

InflowProfile read_table(const std::string& path, std::string_view text) {
    ProfileTable table;
    if (const auto fault = read_profile_table(text, 3, table)) {
        refuse(path, fault->line, fault->what);
    }
    for (std::size_t n = 0; n < table.lines.size(); ++n) {
        refuse_negative_energy(path, table.lines[n], table.columns[2][n]);
    }
    return {std::move(table.columns[0]), std::move(table.columns[1]), std::move(table.columns[2])};
}

InflowProfile read_tpd(const std::string& path, std::string_view text) {
    const std::vector<std::string_view> lines = split_lines(text);
    std::int32_t levels = 0;
    if (ListInput input(lines.empty() ? std::string_view() : lines[0]); !input.read(levels)) {
        refuse(path, 1, input.fault().message() + " (number of levels)");
    }
    if (levels < 1) {
        refuse(path, 1, "the number of levels must be above 0");
    }
    InflowProfile profile;
    constexpr std::size_t head = 2;  // the count and the titles
    for (std::size_t n = head; n < head + static_cast<std::size_t>(levels); ++n) {
        const auto number = static_cast<long>(n) + 1;
        if (n >= lines.size()) {
            refuse(path, number,
                   "the file ends before level " + std::to_string(n - head + 1) + " of " +
                       std::to_string(levels));
        }
        std::array<float, 8> values{};
        if (const auto fault = read_profile_line(lines[n], number, values)) {
            refuse(path, fault->line, fault->what);
        }
        const std::array<float, 3> used{values[0], values[1], values[5]};
        if (!all_finite(used)) {
            refuse(path, number, "height, u and tke must be finite numbers");
        }
        refuse_negative_energy(path, number, values[5]);
        if (!profile.height.empty() && !(values[0] > profile.height.back())) {
            refuse(path, number, "the height does not rise from the line before");
        }
        profile.height.push_back(values[0]);
        profile.u.push_back(values[1]);
        profile.tke.push_back(values[5]);
    }
    return profile;
}

}  // namespace

InflowProfile read_inflow_profile(const CaseSettings& settings) {
    const std::string& path = settings.INFLOW_PROFILE_FILE;
    const std::optional<std::string> file = read_text_file(path);
    if (!file) {
        stop(1, "the inflow profile cannot be read", path.empty() ? "INFLOW_PROFILE_FILE" : path,
             "name an existing text file in INFLOW_PROFILE_FILE, or set SPECIFY_INFLOW_PROFILE to "
             "false");
    }
    return settings.INFLOW_PROFILE_TABLE ? read_table(path, *file) : read_tpd(path, *file);
}

}  // namespace torvex
