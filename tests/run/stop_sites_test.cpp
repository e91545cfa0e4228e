// STOP_SITES in whole cases: a hill with a site in its lee.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

class StopSites : public WholeCase {
 protected:
    StopSites() { write_ground(cosine_hill(100, 500)); }

    // Criteria that nothing meets, so that the rule alone ends a run before MAXIT.
    static CaseItems of(const std::string& keys) {
        return hill_case({{"NML_CASEFILE", "WE_LENGTH = 1000, NS_LENGTH = 800, MIN_DXY = 100"},
                          {"NML_CASEFILE", "MIN_DXY_RAD = 400, MIN_DZ = 8, MESH_VRATIO = 1.4"},
                          {"NML_MONITOR", "MONITOR_STEP = 1"},
                          {"NML_NUMERICAL_SOLVER", "CC_OUT_M = 1E-9"},
                          {"NML_NUMERICAL_SOLVER", keys}});
    }
    static CaseItems with_site(CaseItems items) {
        items.push_back({"NML_SITE", "N_SITE = 1, SITE(1)%LABEL = 'lee'"});
        items.push_back({"NML_SITE", "SITE(1)%LON = 139, 45, 12, SITE(1)%LAT = 35, 30, 0"});
        return items;
    }
};

const std::string rule = "by STOP_SITES: the speeds at the sites have settled.";

// Speed at the site, 300 m behind the summit.
double speed_in_the_lee(const Solution& s) {
    const Column lee = column_at(s, 302, 0);
    return std::hypot(value_above(s, s.flow.u, lee, 30), value_above(s, s.flow.v, lee, 30),
                      value_above(s, s.flow.w, lee, 30));
}

TEST_F(StopSites, EndsSoonerAndNearTheEnd) {
    for (const std::string keys : {"MAXIT = 350", "MAXIT = 120, ACCEL = 1"}) {
        SCOPED_TRACE(keys);
        const std::size_t before =
            std::filesystem::exists(directory.path() / "torvex.log") ? log().size() : 0;
        write_case(with_site(of(keys)));
        ASSERT_EQ(run().status, 0);
        EXPECT_THAT(log().substr(before), Not(HasSubstr(rule)));
        const Solution end = stored();
        const Solution settled = converged(with_site(of(keys + ", STOP_SITES = 0.005")));
        EXPECT_LT(2 * settled.outer_count, end.outer_count);
        EXPECT_THAT(log(), ContainsRegex("WD 270.0: Converged. +[0-9]+ it.\n +" + rule + "\n"));
        EXPECT_NEAR(speed_in_the_lee(settled) / speed_in_the_lee(end), 1, 0.015);
    }
}

TEST_F(StopSites, IsKeptForAResume) {
    const CaseItems items = with_site(of("ACCEL = 1, STOP_SITES = 0.005"));
    const Solution settled = converged(items);
    CaseItems again = items;
    again.push_back({"NML_RUN", "RESTART_FLAG = 1"});
    write_case(again);
    EXPECT_EQ(run().status, 0);
    EXPECT_EQ(stored().outer_count, settled.outer_count);
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "270.0 1");
    // A rule that is stricter, or none, is another matter.
    again.push_back({"NML_NUMERICAL_SOLVER", "STOP_SITES = 0.0005, MAXIT = 3"});
    write_case(again);
    EXPECT_EQ(run().status, 0);
    EXPECT_EQ(stored().outer_count, settled.outer_count + 3);
    again.push_back({"NML_NUMERICAL_SOLVER", "STOP_SITES = 0"});
    write_case(again);
    EXPECT_EQ(run().status, 0);
    EXPECT_EQ(stored().outer_count, settled.outer_count + 6);
}

TEST_F(StopSites, IsOffWithoutASite) {
    write_case(of("ACCEL = 1, STOP_SITES = 0.005, MAXIT = 60"));
    EXPECT_EQ(run().status, 0);
    EXPECT_THAT(log(),
                HasSubstr(" WD 270.0: STOP_SITES is off, since no site lies in the mesh.\n"));
    EXPECT_EQ(stored().outer_count, 60);
}

}  // namespace
}  // namespace torvex::test
