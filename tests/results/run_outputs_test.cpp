#include "results/run_outputs.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace torvex {
namespace {

using ::testing::Contains;
using ::testing::IsSupersetOf;
using ::testing::Not;

TEST(RunOutputs, NameTheFilesOfARun) {
    CaseSettings settings;
    const std::vector<std::string> tags{"270_0", "022_5"};
    EXPECT_THAT(run_output_names(settings, tags),
                IsSupersetOf({"torvex.log", "_latlon_label_list.txt", "log-meshnumber",
                              "view-wind_direction.dat", "view-convergence.dat", "view-monitor.dat",
                              "view-convergence-022_5.dat", "view-monitor-270_0.dat",
                              "log-upwind_roughness-270_0", "calc_roughness1-022_5.tdt",
                              "restart-270_0-xyz.tuf", "restart-270_0-xyzc.tuf",
                              "restart-022_5-z0.tuf", "restart-022_5-vpkeinp.tuf",
                              "restart-022_5-restart.info", "restart-022_5-fingerprint.info",
                              "restart-270_0-torvex.conv.log", "sites-270_0-_INFLOW_PROFILE.tpd"}));
}

TEST(RunOutputs, CarryThePrefixOfTheRun) {
    CaseSettings settings;
    settings.run_prefix = "flat-";
    const std::vector<std::string> tags{"270_0"};
    const auto names = run_output_names(settings, tags);
    EXPECT_THAT(names, IsSupersetOf({"torvex.log", "flat-view-wind_direction.dat",
                                     "flat-restart-270_0-z0.tuf", "flat-log-meshnumber"}));
    EXPECT_THAT(names, Not(Contains("restart-270_0-z0.tuf")));
}

TEST(RunOutputs, AreOfTheDirectionsOfTheCaseOnly) {
    const std::vector<std::string> tags{"270_0"};
    EXPECT_THAT(run_output_names(CaseSettings{}, tags), Not(Contains("restart-090_0-xyz.tuf")));
}

TEST(RunOutputs, LinesAreWrittenWhereTheyAreFitted) {
    CaseSettings settings;
    EXPECT_THAT(run_output_names(settings, {}), Not(Contains("tmp")));
    settings.DEBUG_MODE = 1;
    EXPECT_THAT(run_output_names(settings, {}), Contains("tmp"));
    settings.XYCONF = "tmp";
    EXPECT_THAT(run_output_names(settings, {}), Not(Contains("tmp")));
}

TEST(RunOutputs, EachNameStandsOnceAndSitesHaveTheirs) {
    CaseSettings settings;
    settings.N_SITE = 2;
    settings.SITE[0].LAT = {35.0F, 0.0F, 0.0F};
    settings.SITE[0].LON = {139.0F, 0.0F, 0.0F};
    settings.SITE[1].LAT = {35.0F, 1.0F, 0.0F};
    settings.SITE[1].LON = {139.0F, 0.0F, 0.0F};
    const std::vector<std::string> tags{"270_0"};
    const auto names = run_output_names(settings, tags);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
    EXPECT_EQ(std::ranges::count_if(names,
                                    [](const std::string& name) { return name.ends_with(".tpd"); }),
              3);
}

}  // namespace
}  // namespace torvex
