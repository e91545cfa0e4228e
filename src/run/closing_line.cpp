#include "run/closing_line.hpp"

#include <algorithm>
#include <array>

#include "base/edit.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

struct Ending {
    DirectionEnd end;
    std::string_view words;
};

// Everything but success, in the order of the line.
constexpr std::array endings{
    Ending{DirectionEnd::not_converged, "not converged"},
    Ending{DirectionEnd::diverged, "diverged"},
    Ending{DirectionEnd::not_iterated, "not iterated, since MAXIT is not above 0"},
    Ending{DirectionEnd::broken_off, "broken off"},
    Ending{DirectionEnd::not_begun, "not begun"},
};

struct FallBack {
    Stage stage;
    std::string_view words;
};
constexpr std::array fall_backs{
    FallBack{Stage::robust, "accelerated with the set for steep ground"},
    FallBack{Stage::plain, "iterated without acceleration"},
};

// "; diverged: 90.0, 270.0" of the directions that are `meant`. A long list is cut: the table of
// directions, or the log, has it whole.
template <class Meant>
std::string listed(const std::vector<DirectionRecord>& directions, std::string_view words,
                   const Meant& meant) {
    constexpr int most = 12;
    std::string text;
    int count = 0;
    for (const DirectionRecord& direction : directions) {
        if (!meant(direction)) {
            continue;
        }
        ++count;
        if (count <= most) {
            text += (count > 1 ? ", " : "") + std::string(trimmed(edit::F(direction.angle, 5, 1)));
        }
    }
    if (count == 0) {
        return {};
    }
    if (count > most) {
        text += " and " + std::to_string(count - most) + " more";
    }
    return "; " + std::string(words) + ": " + text;
}

}  // namespace

std::string closing_line(const std::vector<DirectionRecord>& directions,
                         std::string_view reminders) {
    std::string line;
    if (directions.empty()) {
        line = "no direction was begun";
    } else {
        const auto converged =
            std::ranges::count(directions, DirectionEnd::converged, &DirectionRecord::end);
        line = std::to_string(converged) + " of " + std::to_string(directions.size()) +
               (directions.size() == 1 ? " direction converged" : " directions converged");
        for (const Ending& ending : endings) {
            line += listed(directions, ending.words,
                           [&](const DirectionRecord& d) { return d.end == ending.end; });
        }
        for (const FallBack& fall_back : fall_backs) {
            line += listed(directions, fall_back.words,
                           [&](const DirectionRecord& d) { return d.stage == fall_back.stage; });
        }
    }
    if (!reminders.empty()) {
        line += "; mind: " + std::string(reminders);
    }
    return line + "; torvex.log has more";
}

}  // namespace torvex
