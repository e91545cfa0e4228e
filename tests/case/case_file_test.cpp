// What follows from the groups: prefixes, positions, working constants, the monitor's checks, and
// the reading log.

#include "case/case_file.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

#include "case/case_reading.hpp"
#include "maps/local_metric.hpp"
#include "support/case_text.hpp"
#include "support/failures.hpp"
#include "support/temporary_directory.hpp"

namespace torvex {
namespace {

using test::case_text;
using test::CaseItems;
using test::ReadCase;
using test::stop_of;
using test::without_dates;
using ::testing::HasSubstr;
using ::testing::Not;

ReadCase read(const CaseItems& items) {
    return ReadCase(case_text(items));
}

std::optional<Stop> stop_from(const CaseItems& items) {
    return stop_of([&] { ReadCase(case_text(items)); });
}

int code_from(const CaseItems& items) {
    const auto stopped = stop_from(items);
    return stopped ? stopped->code() : 0;
}

std::string without_group(std::string text, const std::string& name) {
    const std::size_t start = text.find("&" + name + "\n");
    const std::size_t end = text.find("/\n", start) + 2;
    return text.erase(start, end - start);
}

// The nearest decimal text of a real, so that the reader finds the same bits.
std::string exact(float value) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.9g", static_cast<double>(value));
    return text.data();
}

// Groups

TEST(CaseFile, EveryGroupIsMandatory) {
    for (const CaseGroup& group : namelist_groups()) {
        const std::string name(group.name);
        const auto stopped = stop_of([&] { ReadCase(without_group(case_text(), name)); });
        ASSERT_TRUE(stopped) << name;
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("group &" + name + " is missing"));
        EXPECT_THAT(stopped->what(), HasSubstr("in case.tin"));
    }
}

TEST(CaseFile, EmptyGroupsAreEnough) {
    const ReadCase c(test::empty_groups());
    EXPECT_EQ(c.settings.N_SITE, 0);
    EXPECT_EQ(c.settings.MAXIT, 500);
}

TEST(CaseFile, OrderOfGroupsIsFree) {
    const std::string text = case_text({{"NML_RUN", "DEBUG_MODE = 7"}});
    const std::string first = "&NML_RUN\n  DEBUG_MODE = 7\n/\n";
    ASSERT_TRUE(text.starts_with(first));
    const ReadCase c(text.substr(first.size()) + first);
    EXPECT_EQ(c.settings.DEBUG_MODE, 7);
    EXPECT_EQ(c.log.kept().find("nml(run)") < c.log.kept().find("nml(casefile)"), true);
}

TEST(CaseFile, BlocksBetweenGroupsAreHarmless) {
    const std::string text = test::nest_block() + case_text() + "&shp_parameters\ncalc_fa = x\n/\n";
    EXPECT_EQ(ReadCase(text).settings.WE_LENGTH, 400.0F);
}

// The file itself

TEST(CaseFile, MissingOneIsToldOnTheConsoleToo) {
    const test::TemporaryDirectory directory;
    for (const std::string& name : {directory.file("none.tin"), directory.path().string(),
                                    std::string(), directory.file("no/such/directory.tin")}) {
        ::testing::internal::CaptureStdout();
        const auto stopped = stop_of([&] { load_case_text(name); });
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), "tin file missing.\n");
        ASSERT_TRUE(stopped) << name;
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_EQ(stopped->reason(), "tin file missing.");
    }
}

TEST(CaseFile, UnreadableOneCountsAsMissing) {
    const test::TemporaryDirectory directory;
    directory.write("case.tin", case_text());
    std::filesystem::permissions(directory.file("case.tin"), std::filesystem::perms::none);
    const test::OrdinaryUser user;
    if (!user.is_ordinary()) {
        GTEST_SKIP() << "the administrator reads everything";
    }
    ::testing::internal::CaptureStdout();
    const auto stopped = stop_of([&] { load_case_text(directory.file("case.tin")); });
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "tin file missing.\n");
    EXPECT_TRUE(stopped);
}

TEST(CaseFile, IsReadByteForByte) {
    const test::TemporaryDirectory directory;
    const std::string text("a\r\n\0b\xff", 6);
    directory.write("case.tin", text);
    EXPECT_EQ(load_case_text(directory.file("case.tin")).text, text);
    directory.write("empty.tin", "");
    EXPECT_EQ(load_case_text(directory.file("empty.tin")).text, "");
}

// Modes

struct Mode {
    const char* terrain;
    const char* atlas;
    const char* prefix;
    int directions;
};

TEST(CaseFile, ModesSetPrefixAndDirections) {
    for (const Mode& mode :
         {Mode{"normal", "0", "", 16}, Mode{"normal", "1", "atlas-", 16},
          Mode{"normal", "2", "", 16}, Mode{"flat", "0", "flat-", 1},
          Mode{"flat2", "0", "flat2-", 16}, Mode{"flatX", "0", "", 16}, Mode{"Flat", "0", "", 16},
          Mode{"FLAT2", "1", "atlas-", 16}, Mode{"flat3", "0", "", 16}, Mode{"", "1", "atlas-", 16},
          Mode{" flat", "0", "", 16}, Mode{"flat", "2", "flat-", 1}}) {
        const ReadCase c = read({{"NML_RUN", "TERRAIN_MODE = '" + std::string(mode.terrain) + "'"},
                                 {"NML_RUN", "ATLAS_FLAG = " + std::string(mode.atlas)}});
        EXPECT_EQ(c.settings.run_prefix, mode.prefix) << mode.terrain;
        EXPECT_EQ(c.settings.N_WIND_DIRECTION, mode.directions) << mode.terrain;
    }
}

TEST(CaseFile, FlatRunHasItsOneDirectionAtZero) {
    const CaseItems angles{{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 2"},
                           {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 30, 60"}};
    CaseItems flat = angles;
    flat.emplace_back("NML_RUN", "TERRAIN_MODE = 'flat'");
    EXPECT_EQ(read(flat).settings.WIND_DIRECTION_ANGLE(1), 0.0F);
    EXPECT_EQ(read(flat).settings.WIND_DIRECTION_ANGLE(2), 60.0F);
    EXPECT_EQ(read(angles).settings.WIND_DIRECTION_ANGLE(1), 30.0F);
}

TEST(CaseFile, AtlasWithFlatTerrainStops191) {
    for (const char* terrain : {"flat", "flat2", "flatX", "flat  ", "flat99"}) {
        const auto stopped =
            stop_from({{"NML_RUN", "ATLAS_FLAG = 1"},
                       {"NML_RUN", "TERRAIN_MODE = '" + std::string(terrain) + "'"}});
        ASSERT_TRUE(stopped) << terrain;
        EXPECT_EQ(stopped->code(), 191);
        EXPECT_THAT(stopped->what(), HasSubstr("in case.tin, line 3"));
    }
    EXPECT_EQ(code_from({{"NML_RUN", "ATLAS_FLAG = 1, TERRAIN_MODE = 'fla'"}}), 0);
}

TEST(CaseFile, FlatTerrainHasNoSecondCorrection) {
    const auto second = [](const std::string& terrain) {
        return read({{"NML_NUMERICAL_SOLVER", "DOUBLE_CORRECTION = T"},
                     {"NML_RUN", "TERRAIN_MODE = '" + terrain + "'"}})
            .settings.DOUBLE_CORRECTION;
    };
    EXPECT_FALSE(second("flat"));
    EXPECT_TRUE(second("flat2"));
    EXPECT_TRUE(second("normal"));
}

TEST(CaseFile, DetailedMapsAreGivenWhenTheirNameBeginsWithNoBlank) {
    const auto given = [](const std::string& item) {
        return read({{"NML_CASEFILE", item}}).settings;
    };
    EXPECT_FALSE(given("").detailed_h_given);
    EXPECT_FALSE(given("").detailed_z0_given);
    EXPECT_TRUE(given("DETAILED_H_FILE = 'a.map'").detailed_h_given);
    EXPECT_FALSE(given("DETAILED_H_FILE = 'a.map'").detailed_z0_given);
    EXPECT_TRUE(given("DETAILED_Z0_FILE = 'a.map'").detailed_z0_given);
    EXPECT_FALSE(given("DETAILED_H_FILE = '   '").detailed_h_given);
    EXPECT_FALSE(given("DETAILED_H_FILE = ' a.map'").detailed_h_given);
    EXPECT_FALSE(given("DETAILED_Z0_FILE = ' a.map'").detailed_z0_given);
}

// Positions

TEST(CaseFile, PositionsBecomeMinutesOfArc) {
    const ReadCase c = read(
        {{"NML_CASEFILE", "CENT_LON = 139, 45, 30"}, {"NML_CASEFILE", "CENT_LAT = -35, -30, -15"}});
    EXPECT_DOUBLE_EQ(c.settings.cent_lon_min, 139 * 60 + 45 + 0.5);
    EXPECT_DOUBLE_EQ(c.settings.cent_lat_min, -35 * 60 - 30 - 0.25);
}

TEST(CaseFile, MonitorStandsAtTheCentreByDefault) {
    const ReadCase c = read({{"NML_MONITOR", "MONITOR_LON = 1, 2, 3, MONITOR_HEIGHT = 77"}});
    EXPECT_EQ(c.settings.MONITOR_LON, c.settings.CENT_LON);
    EXPECT_EQ(c.settings.MONITOR_LAT, c.settings.CENT_LAT);
    EXPECT_EQ(c.settings.MONITOR_HEIGHT, 30.0F);
    EXPECT_DOUBLE_EQ(c.settings.monitor_lon_min, c.settings.cent_lon_min);
    EXPECT_DOUBLE_EQ(c.settings.monitor_lat_min, c.settings.cent_lat_min);
}

CaseItems monitor_at(const std::string& lon, const std::string& lat, const std::string& height) {
    return {{"NML_MONITOR", "MONITOR_POSITION = 1"},
            {"NML_MONITOR", "MONITOR_LON = " + lon},
            {"NML_MONITOR", "MONITOR_LAT = " + lat},
            {"NML_MONITOR", "MONITOR_HEIGHT = " + height}};
}

TEST(CaseFile, MonitorStandsWhereItIsPut) {
    const ReadCase c = read(monitor_at("139, 45, 3", "35, 30, -3", "45.5"));
    EXPECT_EQ(c.settings.MONITOR_HEIGHT, 45.5F);
    EXPECT_DOUBLE_EQ(c.settings.monitor_lon_min, 139 * 60 + 45 + 0.05);
    EXPECT_DOUBLE_EQ(c.settings.monitor_lat_min, 35 * 60 + 30 - 0.05);
}

// A minute of longitude at 35 N is 1521.469 m on the default ellipsoid and 1521.288 m on the Tokyo
// one; a minute of latitude is 1849.009 m and 1848.814 m. A monitor one minute off the centre is
// inside exactly when half the study area reaches as far.
CaseItems one_minute_off(const std::string& monitor_lon, const std::string& monitor_lat, float we,
                         float ns, int gs) {
    CaseItems items = monitor_at(monitor_lon, monitor_lat, "30");
    items.emplace_back("NML_CASEFILE", "CENT_LON = 139, 45, 0, CENT_LAT = 35, 0, 0");
    items.emplace_back("NML_CASEFILE", "WE_LENGTH = " + exact(we) + ", NS_LENGTH = " + exact(ns));
    items.emplace_back("NML_CASEFILE", "GS = " + std::to_string(gs));
    return items;
}

TEST(CaseFile, MonitorOutsideTheStudyAreaStops161) {
    for (const char* lon : {"139, 46, 0", "139, 44, 0"}) {
        EXPECT_EQ(code_from(one_minute_off(lon, "35, 0, 0", 2 * 1521.48F, 10, 0)), 0);
        EXPECT_EQ(code_from(one_minute_off(lon, "35, 0, 0", 2 * 1521.46F, 9000, 0)), 161);
        EXPECT_EQ(code_from(one_minute_off(lon, "35, 0, 0", 2 * 1521.30F, 10, 1)), 0);
        EXPECT_EQ(code_from(one_minute_off(lon, "35, 0, 0", 2 * 1521.28F, 9000, 1)), 161);
    }
    for (const char* lat : {"35, 1, 0", "34, 59, 0"}) {
        EXPECT_EQ(code_from(one_minute_off("139, 45, 0", lat, 10, 2 * 1849.02F, 0)), 0);
        EXPECT_EQ(code_from(one_minute_off("139, 45, 0", lat, 9000, 2 * 1849.00F, 0)), 161);
    }
}

TEST(CaseFile, MonitorExactlyOnTheEdgePasses) {
    const MeshPosition offset =
        position_from_centre(139 * 60 + 46.0, 35 * 60 + 1.0, 139 * 60 + 45.0, 35 * 60.0, 0, 270.0F);
    const float we = 2.0F * offset.x;
    const float ns = 2.0F * offset.y;
    EXPECT_EQ(code_from(one_minute_off("139, 46, 0", "35, 1, 0", we, ns, 0)), 0);
    EXPECT_EQ(code_from(one_minute_off("139, 46, 0", "35, 1, 0", std::nextafter(we, 0.0F), ns, 0)),
              161);
    EXPECT_EQ(code_from(one_minute_off("139, 46, 0", "35, 1, 0", we, std::nextafter(ns, 0.0F), 0)),
              161);
}

TEST(CaseFile, PositionsBeyondAllNumbersStop161) {
    EXPECT_EQ(code_from(monitor_at("3e38, 0, 0", "35, 30, 0", "30")), 161);
    EXPECT_EQ(code_from(monitor_at("139, 45, 0", "3e38, 0, 0", "30")), 161);
    EXPECT_EQ(code_from(monitor_at("3e38, 0, 0", "3e38, 0, 0", "30")), 161);
}

TEST(CaseFile, MonitorStopNamesPlaceAndLine) {
    const CaseItems items = one_minute_off("139, 46, 0", "35, 0, 0", 1000, 1000, 0);
    const auto stopped = stop_from(items);
    ASSERT_TRUE(stopped);
    EXPECT_THAT(stopped->what(), HasSubstr("stop 161: "));
    EXPECT_THAT(stopped->what(), HasSubstr("1521.5 m east"));
    EXPECT_THAT(stopped->what(),
                HasSubstr("case.tin, line " +
                          std::to_string(test::line_of(case_text(items), "MONITOR_LON"))));
}

TEST(CaseFile, MonitorHeightIsBounded) {
    const auto code = [](const std::string& height, const std::string& constant) {
        CaseItems items = monitor_at("139, 45, 0", "35, 30, 0", height);
        items.emplace_back("NML_BOUNDARY_TREATMENT", "CONSTANT_DZ_HEIGHT = " + constant);
        return code_from(items);
    };
    EXPECT_EQ(code("100", "100"), 0);
    EXPECT_EQ(code("100.01", "100"), 162);
    EXPECT_EQ(code("0.01", "100"), 0);
    EXPECT_EQ(code("0", "100"), 163);
    EXPECT_EQ(code("-5", "100"), 163);
    EXPECT_EQ(code("-5", "-10"), 162) << "162 is tested before 163";
    EXPECT_EQ(code("20", "20"), 0);
}

TEST(CaseFile, DefaultMonitorNeedsThirtyMetresOfEvenLayers) {
    const auto stopped = stop_from({{"NML_BOUNDARY_TREATMENT", "CONSTANT_DZ_HEIGHT = 20"}});
    ASSERT_TRUE(stopped);
    EXPECT_EQ(stopped->code(), 162);
    EXPECT_THAT(stopped->what(), HasSubstr("with MONITOR_POSITION = 0 the height is 30 m"));
    EXPECT_EQ(code_from({{"NML_BOUNDARY_TREATMENT", "CONSTANT_DZ_HEIGHT = 30"}}), 0);
}

TEST(CaseFile, MonitorPositionIsTestedBeforeItsHeight) {
    EXPECT_EQ(code_from(monitor_at("140, 0, 0", "35, 30, 0", "500")), 161);
    EXPECT_EQ(code_from(monitor_at("140, 0, 0", "35, 30, 0", "-1")), 161);
    CaseItems items = monitor_at("140, 0, 0", "35, 30, 0", "500");
    items.emplace_back("NML_RUN", "ATLAS_FLAG = 1, TERRAIN_MODE = 'flat'");
    EXPECT_EQ(code_from(items), 191) << "and 191 before everything";
}

// Turbulence model and relaxation

TEST(CaseFile, ModelChoosesTheWorkingConstants) {
    const std::string constants =
        "KE_CMU = 1, KE_CE1 = 2, KE_CE2 = 3, KE_SIGMA_K = 4, KE_SIGMA_E = 5, KL_CMU = 6, "
        "KL_SIGMA_K = 7";
    for (const char* model : {"1", "3", "4"}) {
        const CaseSettings s =
            read({{"NML_NAVIER_STOKES", constants},
                  {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + std::string(model)}})
                .settings;
        EXPECT_EQ(s.CMU, 1.0F);
        EXPECT_EQ(s.CE1, 2.0F);
        EXPECT_EQ(s.CE2, 3.0F);
        EXPECT_EQ(s.SIGK, 4.0F);
        EXPECT_EQ(s.SIGE, 5.0F);
    }
    const CaseSettings kl =
        read({{"NML_NAVIER_STOKES", constants}, {"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 2"}})
            .settings;
    EXPECT_EQ(kl.CMU, 6.0F);
    EXPECT_EQ(kl.SIGK, 7.0F);
}

TEST(CaseFile, UnknownModelEndsTheRun) {
    for (const char* model : {"0", "5", "-1", "2147483647"}) {
        const CaseItems items{{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + std::string(model)}};
        const auto stopped = stop_from(items);
        ASSERT_TRUE(stopped) << model;
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("key TURBULENCE_MODEL is " + std::string(model)));
        EXPECT_THAT(stopped->what(),
                    HasSubstr("case.tin, line " +
                              std::to_string(test::line_of(case_text(items), "TURBULENCE_MODEL"))));
    }
}

TEST(CaseFile, GeodeticSystemIsOneOfFour) {
    for (const char* gs : {"0", "1", "2", "3"}) {
        EXPECT_EQ(code_from({{"NML_CASEFILE", "GS = " + std::string(gs)}}), 0);
    }
    for (const char* gs : {"-1", "4"}) {
        const auto stopped = stop_from({{"NML_CASEFILE", "GS = " + std::string(gs)}});
        ASSERT_TRUE(stopped);
        EXPECT_EQ(stopped->code(), 1);
        EXPECT_THAT(stopped->what(), HasSubstr("key GS is " + std::string(gs)));
    }
}

TEST(CaseFile, RelaxationFactorsAreKeptAsRead) {
    const CaseSettings s = read({{"NML_NUMERICAL_SOLVER",
                                  "URFU=0.11 URFV=0.12 URFW=0.13 URFP=0.14 URFK=0.15 URFE=0.16 "
                                  "URFVIS=0.17"}})
                               .settings;
    EXPECT_EQ(s.URFU, 0.11F);
    EXPECT_EQ(s.URFV, 0.12F);
    EXPECT_EQ(s.URFW, 0.13F);
    EXPECT_EQ(s.URFP, 0.14F);
    EXPECT_EQ(s.URFK, 0.15F);
    EXPECT_EQ(s.URFE, 0.16F);
    EXPECT_EQ(s.URFVIS, 0.17F);
}

// The reading log

TEST(CaseFile, ReadingLogInFull) {
    EXPECT_EQ(without_dates(read({}).log.kept()),
              "<date> Input file is set to [case.tin]\n"
              "                     - nml(run) was read.\n"
              "                     - nml(casefile) was read.\n"
              "                     - nml(monitor) was read.\n"
              "                     - nml(er) was read.\n"
              "                     - nml(boundary_treatment) was read.\n"
              "                     - nml(navier_stokes) was read.\n"
              "                     - nml(numerical_solver) was read.\n"
              "  atlas_mode    = F\n"
              "  terrain_flat  = normal\n"
              "  meso_dws_mode = F\n"
              " F\n"
              "   - k-epsilon model is used.\n"
              "     > C_mu:   0.090\n"
              "     > C_e1:   1.440\n"
              "     > C_e2:   1.920\n"
              "     > TKE Pr: 1.000\n"
              "     > TED Pr: 1.300\n");
}

TEST(CaseFile, ReadingLogTellsTheModes) {
    const std::string log = read({{"NML_RUN", "ATLAS_FLAG = 1, MESO_DWS_MODE = T"},
                                  {"NML_ER", "USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = T"}})
                                .log.kept();
    EXPECT_THAT(log, HasSubstr("\n  atlas_mode    = T\n  terrain_flat  = normal\n"
                               "  meso_dws_mode = T\n T\n"));
    EXPECT_THAT(read({{"NML_RUN", "ATLAS_FLAG = 2"}}).log.kept(),
                HasSubstr("  atlas_mode    = F\n"));
    EXPECT_THAT(read({{"NML_RUN", "TERRAIN_MODE = 'flat2'"}}).log.kept(),
                HasSubstr("  terrain_flat  = flat2\n"));
}

TEST(CaseFile, ReadingLogEndsAtTheGroupThatFails) {
    RunLog log;
    CaseSettings settings;
    KeyLines lines;
    const CaseText file{"case.tin", case_text({{"NML_ER", "BOGUS = 1"}})};
    EXPECT_TRUE(stop_of([&] { read_case_file(file, settings, lines, log); }));
    EXPECT_THAT(log.kept(), HasSubstr("- nml(monitor) was read.\n"));
    EXPECT_THAT(log.kept(), Not(HasSubstr("nml(er)")));
}

}  // namespace
}  // namespace torvex
