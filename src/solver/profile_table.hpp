#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace torvex {

// A table over height as the user writes it: on each line a height and the values there, in free
// form. Lines that do not begin with a number are header; further values of a line are passed over.
struct ProfileTable {
    std::vector<std::vector<float>> columns;  // columns[0] is the height, rising strictly
    std::vector<long> lines;                  // line of the file that each row stands on
};

// Why a table cannot be used.
struct TableFault {
    long line = 0;
    std::string what;
};

// Reads a table of so many columns; nothing is returned where all is well. Every number is finite.
std::optional<TableFault> read_profile_table(std::string_view text, std::size_t columns,
                                             ProfileTable& table);

// The first values of one line, which cannot go on in the next; one that is left out is NaN.
std::optional<TableFault> read_profile_line(std::string_view line, long number,
                                            std::span<float> values);

// True for no values at all.
bool all_finite(std::span<const float> values);

// A place between two levels of a profile.
struct ProfilePlace {
    std::size_t level = 0;  // the lower level, from 0
    float weight = 0;       // of the level above
};

// Below the lowest and above the highest level the end values hold.
ProfilePlace place_in(const std::vector<float>& height, float h);
float value_at(const std::vector<float>& values, ProfilePlace place);

}  // namespace torvex
