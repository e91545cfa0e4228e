#include "case/case_text.hpp"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <vector>

#include "base/text_file.hpp"

namespace torvex {

namespace {

char upper(char c) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

// Levenshtein (1966) distance without regard to case.
std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t change = diagonal + (upper(a[i]) == upper(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({change, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

void KeyLines::reach(std::string_view key, std::size_t element) {
    std::size_t& highest = reached_[std::string(key)];
    highest = std::max(highest, element);
}

std::size_t KeyLines::reached(std::string_view key) const {
    const auto found = reached_.find(key);
    return found == reached_.end() ? 0 : found->second;
}

std::string KeyLines::where(const CaseText& file, std::string_view key) const {
    const auto found = lines_.find(key);
    return found == lines_.end() ? file.name : place(file.name, found->second);
}

void NearestName::offer(std::string_view name) {
    // A word much longer than any key is no misspelling of one.
    constexpr std::size_t longest = 100;
    if (wanted_.size() > longest) {
        return;
    }
    const std::size_t distance = edit_distance(wanted_, name);
    if (distance < distance_) {
        distance_ = distance;
        best_ = name;
    }
}

std::string NearestName::hint() const {
    const std::size_t near = std::max<std::size_t>(2, wanted_.size() / 3);
    return best_.empty() || distance_ > near ? std::string() : "; did you mean " + best_ + "?";
}

}  // namespace torvex
