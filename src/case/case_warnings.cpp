#include "case/case_warnings.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/edit.hpp"
#include "base/text_file.hpp"
#include "case/case_keys.hpp"
#include "case/key_account.hpp"
#include "case/key_effects.hpp"
#include "case/keyed_block.hpp"
#include "case/shape_set_keys.hpp"
#include "maps/local_metric.hpp"

namespace torvex {

namespace {

bool mixed_signs(const Triple& angle) {
    bool positive = false;
    bool negative = false;
    for (const float member : angle.span()) {
        positive = positive || member > 0.0F;
        negative = negative || member < 0.0F;
    }
    return positive && negative;
}

std::string degrees_of(const Triple& angle) {
    return std::string(left_adjusted(edit::F(minutes_of(angle) / 60.0, 14, 6))) + " degrees";
}

struct Angle {
    std::string key;
    const Triple& value;
    float most = 0;  // degrees that the angle can have
};

// Shows every angle of the case that counts.
void for_angles(const CaseSettings& settings, const std::function<void(const Angle&)>& see) {
    constexpr float turn = 360.0F;
    constexpr float pole = 90.0F;
    see({"CENT_LON", settings.CENT_LON, turn});
    see({"CENT_LAT", settings.CENT_LAT, pole});
    if (settings.MONITOR_POSITION != 0) {
        see({"MONITOR_LON", settings.MONITOR_LON, turn});
        see({"MONITOR_LAT", settings.MONITOR_LAT, pole});
    }
    for (int n = 1; n <= settings.N_SITE; ++n) {
        const Site& site = settings.SITE[static_cast<std::size_t>(n - 1)];
        const std::string name = "SITE(" + std::to_string(n) + ")%";
        see({name + "LON", site.LON, turn});
        see({name + "LAT", site.LAT, pole});
    }
}

void warn_of_mixed_signs(const CaseText& file, const CaseSettings& settings, const KeyLines& lines,
                         RunLog& log) {
    for_angles(settings, [&](const Angle& angle) {
        if (mixed_signs(angle.value)) {
            log.warn_line(" (Warning) " + angle.key +
                          " has members of different sign; understood as " +
                          degrees_of(angle.value) + " (" + lines.where(file, angle.key) + ").");
        }
    });
}

void warn_of_angles(const CaseText& file, const CaseSettings& settings, const KeyLines& lines,
                    RunLog& log) {
    constexpr float sixty = 60.0F;
    for_angles(settings, [&](const Angle& angle) {
        const std::string understood = "; understood as " + degrees_of(angle.value) + " (" +
                                       lines.where(file, angle.key) + ").";
        if (std::abs(angle.value(2)) >= sixty || std::abs(angle.value(3)) >= sixty) {
            log.warn(angle.key + " has 60 minutes or seconds, or more" + understood);
        }
        if (std::abs(minutes_of(angle.value)) / 60.0 > static_cast<double>(angle.most)) {
            log.warn(angle.key + " lies beyond " + std::to_string(static_cast<int>(angle.most)) +
                     " degrees; degrees, minutes and seconds are expected, not metres" +
                     understood);
        }
    });
}

void warn_of_unknown_keys(const CaseText& file, RunLog& log) {
    for (const CaseGroup& block : keyed_blocks()) {
        const bool of_shapes = block.name == "shp_parameters";
        for (const UnknownKey& key : unknown_keys(file, block)) {
            NearestName nearest(key.name);
            for (const CaseKey& known : block.keys) {
                nearest.offer(known.name);
            }
            const std::size_t percent = key.name.find('%');
            for (const ShapeSetKey& known : shape_set_keys()) {
                if (of_shapes && percent != std::string::npos) {
                    nearest.offer(key.name.substr(0, percent) + std::string(known.suffix));
                }
            }
            log.warn_line(" (Warning) " + place(file.name, key.line) + ": block &" +
                          std::string(block.name) + " has no key " + excerpt(key.name) +
                          nearest.hint() + "; the line is passed over.");
        }
    }
}

bool equal_without_case(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, [](char x, char y) {
        return std::toupper(static_cast<unsigned char>(x)) ==
               std::toupper(static_cast<unsigned char>(y));
    });
}

// A group, a block (which is known by the head of its name), or the end of either.
bool is_known_head(std::string_view name) {
    const auto is_group = [name](const CaseGroup& group) {
        return equal_without_case(group.name, name);
    };
    const auto is_block = [name](const CaseGroup& block) { return name.starts_with(block.name); };
    return equal_without_case(name, "END") || std::ranges::any_of(namelist_groups(), is_group) ||
           std::ranges::any_of(keyed_blocks(), is_block);
}

// A misspelt name of a block or of a group that may be empty would otherwise be plain text between
// the groups, and its keys would be passed over without a word.
void warn_of_unknown_groups(const CaseText& file, RunLog& log) {
    long number = 0;
    for (const std::string_view line : split_lines(file.text)) {
        ++number;
        const std::string_view text = left_adjusted(line);
        if (text.empty() || (text.front() != '&' && text.front() != '$')) {
            continue;
        }
        const std::string_view name = text.substr(1, text.find_first_of(" \t,/!=", 1) - 1);
        if (name.empty() || is_known_head(name)) {
            continue;
        }
        NearestName nearest(name);
        for (const auto& list : {namelist_groups(), keyed_blocks()}) {
            for (const CaseGroup& group : list) {
                nearest.offer(group.name);
            }
        }
        log.warn(place(file.name, number) + ": no group or block has the name " + excerpt(name) +
                 nearest.hint() + "; what it holds is passed over.");
    }
}

void warn_of_counts(const CaseText& file, const CaseSettings& settings, const KeyLines& lines,
                    RunLog& log) {
    const auto compare = [&](const char* count_key, std::int32_t count, const char* list_key) {
        const std::size_t listed = lines.reached(list_key);
        if (static_cast<std::size_t>(std::max(count, 0)) != listed) {
            log.warn(std::string(count_key) + " is " + std::to_string(count) + ", but " + list_key +
                     " goes up to " + std::to_string(listed) + " (" + lines.where(file, count_key) +
                     ").");
        }
    };
    const bool listed_angles =
        settings.WD_TYPE != 0 && settings.TERRAIN_MODE != "flat" && settings.TORVEX_MODE == 0;
    if (listed_angles) {
        compare("N_WIND_DIRECTION", settings.N_WIND_DIRECTION, "WIND_DIRECTION_ANGLE");
    }
    compare("N_SITE", settings.N_SITE, "SITE");
}

void warn_of_equal_labels(const CaseSettings& settings, RunLog& log) {
    std::map<std::string, int> first;
    for (int n = 1; n <= settings.N_SITE; ++n) {
        const std::string& label = settings.SITE[static_cast<std::size_t>(n - 1)].LABEL;
        const auto [at, is_new] = first.emplace(label, n);
        if (!is_new && !label.empty()) {
            log.warn("sites " + std::to_string(at->second) + " and " + std::to_string(n) +
                     " have the same label, " + excerpt(label) + ".");
        }
    }
}

// What wins over an equilibrium inflow.
void warn_of_inflow(const CaseText& file, const CaseSettings& settings, const KeyLines& lines,
                    RunLog& log) {
    if (!settings.EQUILIBRIUM_INFLOW || settings.equilibrium_inflow()) {
        return;
    }
    std::string winner;
    if (settings.TURBULENCE_MODEL == 2) {
        winner = "the k-l model, whose length stops growing with height: it keeps no log law";
    } else if (settings.nested()) {
        winner = "the parent's flow; TED Pr is that of an equilibrium layer all the same";
    } else if (settings.TORVEX_MODE != 0 && settings.user.inlet != 0) {
        winner = "inlet = " + std::to_string(settings.user.inlet) + " of the block &user_domain";
    } else {
        winner = "the profile of INFLOW_PROFILE_FILE";
    }
    log.warn("EQUILIBRIUM_INFLOW gives way to " + winner + " (" +
             lines.where(file, "EQUILIBRIUM_INFLOW") + ").");
}

void warn_of_idle_keys(const CaseText& file, const CaseSettings& settings, const KeyLines& lines,
                       RunLog& log) {
    std::string never;
    for_given_keys(file, lines, [&](std::string_view key, const std::string& where) {
        const KeyEffect* const effect = effect_of(key);
        if (effect == nullptr) {
            return;
        }
        if (effect->never()) {
            never += (never.empty() ? "" : ", ") + std::string(key);
        } else if (!effect->acts(settings)) {
            log.warn(std::string(key) + " has no effect: it acts with " +
                     std::string(effect->condition) + " (" + where + ").");
        }
    });
    if (!never.empty()) {
        log.warn("accepted, but without effect in any case: " + never + ".");
    }
}

}  // namespace

void warn_of_case(const CaseText& file, const CaseSettings& settings, const KeyLines& lines,
                  RunLog& log) {
    warn_of_mixed_signs(file, settings, lines, log);
    warn_of_unknown_keys(file, log);
    warn_of_unknown_groups(file, log);
    warn_of_angles(file, settings, lines, log);
    warn_of_counts(file, settings, lines, log);
    warn_of_equal_labels(settings, log);
    warn_of_idle_keys(file, settings, lines, log);
    warn_of_inflow(file, settings, lines, log);
}

}  // namespace torvex
