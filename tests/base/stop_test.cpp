#include "base/stop.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace torvex {
namespace {

TEST(Stop, NumberedStopTellsCodeReasonPlaceAndWayOut) {
    try {
        stop(111, "terrain map is of kind x-y", "hill.map, line 1", "convert it to lon-lat");
        FAIL();
    } catch (const Stop& s) {
        EXPECT_EQ(s.code(), 111);
        EXPECT_STREQ(s.what(),
                     "stop 111: terrain map is of kind x-y\n  in hill.map, line 1\n"
                     "  convert it to lon-lat");
    }
}

TEST(Stop, TextOnlyStopPrintsItsTextAlone) {
    try {
        stop(1, "tin file missing.");
        FAIL();
    } catch (const Stop& s) {
        EXPECT_EQ(s.code(), 1);
        EXPECT_STREQ(s.what(), "tin file missing.");
    }
}

TEST(StopCodes, RiseAndAreTold) {
    int last = 0;
    std::set<int> seen;
    for (const StopCode& row : stop_codes()) {
        EXPECT_GE(row.code, last);
        EXPECT_LE(row.code, 255) << "an exit status has eight bits";
        last = row.code;
        EXPECT_FALSE(row.subject.empty());
        EXPECT_FALSE(row.meaning.empty());
        EXPECT_FALSE(row.fix.empty());
        if (row.code > 1) {
            EXPECT_TRUE(seen.insert(row.code).second) << row.code;
        }
    }
}

}  // namespace
}  // namespace torvex
