#include "case/wind_directions.hpp"

#include <cmath>

#include "base/edit.hpp"

namespace torvex {

float angle_of(const CaseSettings& settings, int iwd) {
    if (settings.WD_TYPE != 0) {
        return settings.WIND_DIRECTION_ANGLE(iwd);
    }
    return static_cast<float>(iwd - 1) * 360.0F / static_cast<float>(settings.N_WIND_DIRECTION);
}

std::string wd_tag_of(float angle) {
    const auto tenths = static_cast<std::int64_t>(std::floor(angle * 10.0F + 0.01F));
    const std::string digits = edit::I(tenths, 4, 4);
    return digits.substr(0, 3) + "_" + digits.substr(3);
}

std::vector<std::string> wd_tags(const CaseSettings& settings) {
    std::vector<std::string> tags;
    for (int iwd = 1; iwd <= settings.N_WIND_DIRECTION; ++iwd) {
        tags.push_back(wd_tag_of(settings.WIND_DIRECTION_ANGLE(iwd)));
    }
    return tags;
}

std::vector<std::string> tags_of_case(const CaseSettings& settings) {
    if (settings.TORVEX_MODE != 0) {
        return {wd_tag_of(0.0F)};
    }
    std::vector<std::string> tags;
    for (int iwd = 1; iwd <= settings.N_WIND_DIRECTION; ++iwd) {
        tags.push_back(wd_tag_of(angle_of(settings, iwd)));
    }
    return tags;
}

void set_angles(CaseSettings& settings) {
    for (int iwd = 1; iwd <= settings.N_WIND_DIRECTION; ++iwd) {
        settings.WIND_DIRECTION_ANGLE(iwd) = angle_of(settings, iwd);
    }
}

void force_one_direction(CaseSettings& settings) {
    settings.N_WIND_DIRECTION = 1;
    settings.WIND_DIRECTION_ANGLE.fill(0.0F);
}

}  // namespace torvex
