#pragma once

#include <string>
#include <vector>

#include "base/case_settings.hpp"

namespace torvex {

// Angle of direction iwd [deg] of equal sectors from 0 where WD_TYPE is 0, else as given.
float angle_of(const CaseSettings& settings, int iwd);

// Five characters: floor(angle*10 + 0.01) in four digits, cut as three digits, "_", one digit.
std::string wd_tag_of(float angle);

// The tags of all directions; tag(iwd) is tags[iwd - 1].
std::vector<std::string> wd_tags(const CaseSettings& settings);

// Puts the angles of equal sectors into WIND_DIRECTION_ANGLE where WD_TYPE is 0.
void set_angles(CaseSettings& settings);

// The user-defined domain knows one direction, at angle 0.
void force_one_direction(CaseSettings& settings);

// The tags as they will be, of a case whose directions are not set up yet; a user's domain has the
// one direction 0.
std::vector<std::string> tags_of_case(const CaseSettings& settings);

}  // namespace torvex
