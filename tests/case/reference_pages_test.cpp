// The generated pages of the documentation stand in the tree as the tables make them now.

#include "case/reference_pages.hpp"

#include <gtest/gtest.h>

#include <string>

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "case/case_keys.hpp"

namespace torvex {
namespace {

std::string page(const std::string& name) {
    return read_text_file(std::string(TORVEX_REFERENCE_DIR) + "/" + name).value_or("no such file");
}

TEST(ReferencePages, CaseFilePageIsUpToDate) {
    EXPECT_EQ(page("case-file.md"), case_file_page())
        << "run: cmake --build build --target reference";
}

TEST(ReferencePages, StopCodesPageIsUpToDate) {
    EXPECT_EQ(page("stop-codes.md"), stop_codes_page())
        << "run: cmake --build build --target reference";
}

TEST(ReferencePages, EveryKeyAndCodeHasItsRow) {
    const std::string keys = case_file_page();
    for (const auto& list : {namelist_groups(), keyed_blocks()}) {
        for (const CaseGroup& group : list) {
            EXPECT_NE(keys.find("### `" + std::string(group.name) + "`\n"), std::string::npos);
            for (const CaseKey& key : group.keys) {
                EXPECT_NE(keys.find("| `" + std::string(key.name) + "` |"), std::string::npos)
                    << key.name;
                EXPECT_FALSE(key.meaning.empty()) << key.name;
            }
        }
    }
    const std::string codes = stop_codes_page();
    for (const StopCode& code : stop_codes()) {
        EXPECT_NE(codes.find("| " + std::to_string(code.code) + " | " + std::string(code.subject)),
                  std::string::npos)
            << code.code;
    }
}

TEST(ReferencePages, RowsTellTypeDefaultAndUnit) {
    const std::string keys = case_file_page();
    for (const char* start :
         {"| `TERRAIN_MODE` | C 6 | `normal` |", "| `WIND_DIRECTION_ANGLE` | R[361] | none | deg |",
          "| `ELEVATION_CORRECTION_FACTOR` | R[361] | all `1.0` |",
          "| `USE_DEFAULT_MAX_Z` | L | true |", "| `MAXIT` | I | `500` |",
          "| `SITE(n)%LABEL` | C 20 |", "| `nest_bc_ofix` | L | true |"}) {
        EXPECT_NE(keys.find(start), std::string::npos) << start;
    }
}

}  // namespace
}  // namespace torvex
