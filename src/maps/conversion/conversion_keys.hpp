#pragma once

#include "case/case_text.hpp"
#include "maps/conversion/conversion_settings.hpp"

namespace torvex {

// Reads the group &TRDB2TVM and checks what it holds. Stops with 1, naming file, line and key.
ConversionSettings read_conversion_settings(const CaseText& file);

}  // namespace torvex
