// The inflow profile file, in one of two forms:
//
//   table   height above ground [m], u [m/s], tke [m2/s2] on a line each, free form; lines that do
//           not begin with a number are header, blank lines and further columns are passed over
//   .tpd    the site output: the number of levels, a line of titles, then eight values a line, of
//           which height above ground (1), u (2) and tke (6) are used
//
// Heights rise strictly from line to line.

#include "solver/inflow_profile.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/value_scanner.hpp"

namespace torvex {

namespace {

constexpr float missing = std::numeric_limits<float>::quiet_NaN();

[[noreturn]] void refuse(const std::string& path, long line, const std::string& what) {
    stop(1, "inflow profile: " + what, place(path, line),
         "correct the file; INFLOW_PROFILE_TABLE tells whether it is a table of height, u and tke "
         "or a .tpd profile");
}

std::string_view first_word(std::string_view line) {
    line = left_adjusted(line);
    return line.substr(0, line.find_first_of(" \t,;/"));
}

bool begins_with_number(std::string_view line) {
    float ignored = 0;
    return parse_real(first_word(line), ignored);
}

// A slip of the pen such as "12.x" among the rows must not pass for a line of text.
bool looks_like_number(std::string_view line) {
    const std::string_view word = first_word(line);
    return !word.empty() &&
           std::string_view("+-.0123456789").find(word[0]) != std::string_view::npos;
}

// The first values of a line, one read statement that cannot go on to the next line.
template <std::size_t N>
std::array<float, N> read_values(const std::string& path, long number, std::string_view line) {
    std::array<float, N> values{};
    values.fill(missing);
    ListInput input(line, number);
    if (!input.read_row(values.data(), N)) {
        refuse(path, number,
               input.fault().text.empty()
                   ? "the line has fewer than " + std::to_string(N) + " values"
                   : input.fault().message());
    }
    return values;
}

void append(InflowProfile& profile, const std::string& path, long line, float height, float u,
            float tke) {
    if (!std::isfinite(height) || !std::isfinite(u) || !std::isfinite(tke)) {
        refuse(path, line, "height, u and tke must be finite numbers");
    }
    if (tke < 0.0F) {
        refuse(path, line, "tke is negative");
    }
    if (!profile.height.empty() && !(height > profile.height.back())) {
        refuse(path, line, "the height does not rise from the line before");
    }
    profile.height.push_back(height);
    profile.u.push_back(u);
    profile.tke.push_back(tke);
}

InflowProfile read_table(const std::string& path, std::string_view text) {
    InflowProfile profile;
    long number = 0;
    for (const std::string_view line : split_lines(text)) {
        ++number;
        const bool below_header = !profile.height.empty();
        if (begins_with_number(line) || (below_header && looks_like_number(line))) {
            const auto [height, u, tke] = read_values<3>(path, number, line);
            append(profile, path, number, height, u, tke);
        }
    }
    if (profile.height.empty()) {
        refuse(path, std::max(number, 1L), "no line begins with a number");
    }
    return profile;
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
        const std::array<float, 8> values = read_values<8>(path, number, lines[n]);
        append(profile, path, number, values[0], values[1], values[5]);
    }
    return profile;
}

}  // namespace

ProfilePlace place_in(const InflowProfile& profile, float h) {
    const std::vector<float>& height = profile.height;
    if (!(h > height.front())) {
        return {0, 0.0F};
    }
    const auto above = std::upper_bound(height.begin(), height.end(), h);
    if (above == height.end()) {
        return {height.size() - 1, 0.0F};
    }
    const auto level = static_cast<std::size_t>(above - height.begin()) - 1;
    return {level, (h - height[level]) / (height[level + 1] - height[level])};
}

float value_at(const std::vector<float>& values, ProfilePlace place) {
    const float low = values[place.level];
    if (place.weight == 0.0F) {
        return low;
    }
    return low + place.weight * (values[place.level + 1] - low);
}

InflowProfile read_inflow_profile(const CaseSettings& settings) {
    const std::string& path = settings.INFLOW_PROFILE_FILE;
    const std::optional<std::string> file = read_text_file(path);
    if (!file) {
        stop(1, "the inflow profile cannot be read", path.empty() ? "INFLOW_PROFILE_FILE" : path,
             "name an existing text file in INFLOW_PROFILE_FILE, or set SPECIFY_INFLOW_PROFILE to "
             "false");
    }
    std::string_view text = *file;
    // Some editors put a mark in front, which would turn a first row into a line of text.
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (text.substr(0, byte_order_mark.size()) == byte_order_mark) {
        text.remove_prefix(byte_order_mark.size());
    }
    return settings.INFLOW_PROFILE_TABLE ? read_table(path, text) : read_tpd(path, text);
}

}  // namespace torvex
