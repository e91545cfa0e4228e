#include "solver/profile_table.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/list_input.hpp"
#include "base/text_file.hpp"
#include "base/value_scanner.hpp"

namespace torvex {

namespace {

constexpr float missing = std::numeric_limits<float>::quiet_NaN();

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

}  // namespace

std::optional<TableFault> read_profile_line(std::string_view line, long number,
                                            std::span<float> values) {
    std::ranges::fill(values, missing);
    ListInput input(line, number);
    if (!input.read_row(values.data(), values.size())) {
        return TableFault{
            number, input.fault().text.empty()
                        ? "the line has fewer than " + std::to_string(values.size()) + " values"
                        : input.fault().message()};
    }
    return std::nullopt;
}

bool all_finite(std::span<const float> values) {
    return std::ranges::all_of(values, [](float value) { return std::isfinite(value); });
}

std::optional<TableFault> read_profile_table(std::string_view text, std::size_t columns,
                                             ProfileTable& table) {
    table = {std::vector<std::vector<float>>(columns), {}};
    const std::vector<float>& height = table.columns[0];
    std::vector<float> row(columns);
    long number = 0;
    for (const std::string_view line : split_lines(text)) {
        ++number;
        const bool below_header = !height.empty();
        if (!begins_with_number(line) && !(below_header && looks_like_number(line))) {
            continue;
        }
        if (auto fault = read_profile_line(line, number, row)) {
            return fault;
        }
        if (!all_finite(row)) {
            return TableFault{number, "all values must be finite numbers"};
        }
        if (below_header && !(row[0] > height.back())) {
            return TableFault{number, "the height does not rise from the line before"};
        }
        for (std::size_t n = 0; n < columns; ++n) {
            table.columns[n].push_back(row[n]);
        }
        table.lines.push_back(number);
    }
    if (height.empty()) {
        return TableFault{std::max(number, 1L), "no line begins with a number"};
    }
    return std::nullopt;
}

ProfilePlace place_in(const std::vector<float>& height, float h) {
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

}  // namespace torvex
