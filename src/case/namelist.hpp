#pragma once

#include "base/case_settings.hpp"
#include "case/case_keys.hpp"
#include "case/case_text.hpp"

namespace torvex {

// Reads one group in the namelist notation of Fortran 90 from wherever it stands in the file:
//
//   &NAME key = value, key(2) = 1, , 3*0.5  key = 'it''s'  ! comment
//   /
//
// Names compare without case; "$" serves as "&", and "&END" or "$END" as "/"; the last assignment
// of a key counts. Settings that the group does not assign are left alone. Any other text, an
// unknown key, an unreadable value or an absent group ends the run with exit status 1.
void read_namelist_group(const CaseText& file, const CaseGroup& group, CaseSettings& settings,
                         KeyLines& lines);

}  // namespace torvex
