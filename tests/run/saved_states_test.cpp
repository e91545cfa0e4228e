// Saved states that belong to another case: a fresh run forgets them all, a resume tells them by
// their fingerprint. What counts in the end is the ground that a direction is solved over.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "canopy/canopy_file.hpp"
#include "results/result_files.hpp"
#include "run/run_fixture.hpp"
#include "run/run_state.hpp"
#include "run/saved_files.hpp"

namespace torvex::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
namespace fs = std::filesystem;

const std::string resumed = "Resume torvex default calculations..\n";
const std::string begun = "Start torvex default calculations...\n";
const std::vector<std::string> tags{"000_0", "180_0"};

std::string info_of(const std::string& tag) {
    return "restart-" + tag + "-restart.info";
}

class SavedStates : public RunTest {
 protected:
    static CaseItems two(const std::string& restart_flag, const CaseItems& more = {}) {
        CaseItems items{{"NML_CASEFILE", "N_WIND_DIRECTION = 2"},
                        {"NML_RUN", "RESTART_FLAG = " + restart_flag}};
        items.insert(items.end(), more.begin(), more.end());
        return items;
    }
    // A run that must end well.
    ProgramRun run_two(const std::string& restart_flag, const CaseItems& more = {},
                       const std::string& behind = {}) const {
        write_case(two(restart_flag, more), behind);
        ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        return ran;
    }
    static bool has_infos() {
        return std::ranges::all_of(tags, [](const auto& tag) { return fs::exists(info_of(tag)); });
    }
    // The last run began both directions anew, since so many keys changed.
    void expect_anew(const ProgramRun& ran, const std::string& keys) const {
        EXPECT_THAT(ran.out, Not(HasSubstr(resumed))) << keys;
        for (const std::string wd : {"  0.0", "180.0"}) {
            const std::string told = "Warning: WD " + wd + ": " + keys +
                                     " changed since this direction was begun; it begins anew.\n";
            EXPECT_THAT(ran.err, HasSubstr(told));
            EXPECT_THAT(log(), HasSubstr("<date> " + told));
        }
    }
    static void expect_gone_on(const ProgramRun& ran, const std::string& why) {
        EXPECT_THAT(ran.out, AllOf(HasSubstr(resumed), Not(HasSubstr(begun)))) << why;
        EXPECT_THAT(ran.err, Not(HasSubstr("anew"))) << why;
    }
};

// --- a fresh run ---

TEST_F(SavedStates, AreForgottenTogetherBeforeTheFirstDirectionIsSolved) {
    for (const char* flag : {"0", "2", "-1"}) {
        run_two("0");
        ASSERT_TRUE(has_infos());
        write_case(two(flag));
        std::vector<bool> there;
        run_here({}, [&](torvex::Run&, Direction& direction) {
            if (direction.iwd == 1) {
                there = {fs::exists(info_of(tags[0])), fs::exists(info_of(tags[1]))};
            }
        });
        EXPECT_THAT(there, ::testing::ElementsAre(false, false)) << flag;
    }
}

TEST_F(SavedStates, OfOtherDirectionsAndPrefixesAreNoneOfARunsBusiness) {
    run_two("0");
    directory.write("restart-090_0-restart.info", "7\n");
    directory.write("atlas-restart-000_0-restart.info", "7\n");
    run_two("0");
    EXPECT_TRUE(directory.has("restart-090_0-restart.info"));
    EXPECT_TRUE(directory.has("atlas-restart-000_0-restart.info"));
}

TEST_F(SavedStates, StayWhereACheckStopsTheRunBefore) {
    run_two("0");
    struct Refused {
        int status;
        CaseItems items;
    };
    const std::vector<Refused> refused{
        {1, {{"NML_ER", "BOGUS = 1"}}},
        {1, {{"NML_MONITOR", "MONITOR_STEP = 0"}}},
        {1, {{"NML_CASEFILE", "WD_TYPE = 1, WIND_DIRECTION_ANGLE = 0, 0"}}},
        {1, {{"NML_CASEFILE", "WE_LENGTH = 1E30"}}},
        {111, {{"NML_CASEFILE", "BASIC_H_FILE = 'absent.map'"}}},
        {133, {{"NML_CASEFILE", "BASIC_Z0_FILE = 'torvex.tin'"}}},
        {151, {{"NML_CASEFILE", "CENT_LON = 12, 0, 0"}}},
        {152, {{"NML_CASEFILE", "MIN_DZ = 1E30"}}},
        {153, {{"NML_CASEFILE", "WE_LENGTH = 1E-30, NS_LENGTH = 1E-30"}}},
        {154, {{"NML_ER", "BOUNDARY_HEIGHT_MODE = 2"}}},
        {155, {{"NML_BOUNDARY_TREATMENT", "DOWN_BR = -1E30"}}},
        {156, {{"NML_CASEFILE", "MIN_DXY = 60"}}},
        {162, {{"NML_BOUNDARY_TREATMENT", "CONSTANT_DZ_HEIGHT = 20"}}},
    };
    for (const char* flag : {"0", "2"}) {
        for (const Refused& r : refused) {
            write_case(two(flag, r.items));
            const ProgramRun ran = run();
            EXPECT_EQ(ran.status, r.status) << r.items[0].second << ": " << ran.err;
            EXPECT_TRUE(has_infos()) << r.items[0].second;
        }
    }
}

// The ground of a direction that the fresh run never came to must be the new one all the same.
TEST_F(SavedStates, OfAFreshRunThatIsStoppedInItsFirstDirectionAreNotThoseOfTheRunBefore) {
    for (const char* flag : {"0", "2"}) {
        directory.write("h.map", level_map("10"));
        run_two("0");
        for (const std::string& tag : tags) {
            directory.write(info_of(tag), "0\n 1e-5 1e-5 1e-5 1e-5\n");  // converged
            EXPECT_TRUE(lies_at("restart-" + tag + "-xyz.tuf", 10.0F));
        }
        directory.write("h.map", level_map("25"));
        write_case(two(flag));
        const RunHere stopped = run_here({}, [](torvex::Run&, Direction& direction) {
            direction.converged = true;
            direction.tested = {};
            direction.stop_requested = true;
        });
        EXPECT_EQ(stopped.status, 2) << stopped.err;
        const ProgramRun ran = run_two("1");
        EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 1");
        EXPECT_EQ(slot("view-wind_direction.dat", 3), "180.0 2") << "not done: begun only now";
        for (const std::string& tag : tags) {
            EXPECT_TRUE(lies_at("restart-" + tag + "-xyz.tuf", 25.0F)) << tag << ", " << ran.err;
        }
    }
}

// --- a resume behind a changed case ---

struct Changed {
    CaseItems items;
    std::string behind;
    const char* keys;  // that the warning names
};

TEST_F(SavedStates, BehindAChangedGroundOrInflowBeginAnewAndSayWhy) {
    directory.write("fine.map", level_map("11"));
    directory.write("profile", "0 0 0.1\n100 5 0.5\n5000 9 0.5\n");
    directory.write("alpha", "2\n0 0.15\n180 0.2\n");
    const std::vector<Changed> changes{
        {{{"NML_CASEFILE", "BASIC_H_FILE = 'fine.map'"}}, "", "BASIC_H_FILE"},
        {{{"NML_CASEFILE", "DETAILED_H_FILE = 'fine.map'"}}, "", "DETAILED_H_FILE"},
        {{{"NML_CASEFILE", "DETAILED_Z0_FILE = 'z0.map'"}}, "", "DETAILED_Z0_FILE"},
        {{{"NML_CASEFILE", "CENT_LON = 139, 45, 1"}}, "", "CENT_LON"},
        {{{"NML_CASEFILE", "CENT_LAT = 35, 30, 0.1"}}, "", "CENT_LAT"},
        {{{"NML_CASEFILE", "GS = 1"}}, "", "GS"},
        {{{"NML_RUN", "TERRAIN_MODE = 'flatX'"}}, "", "TERRAIN_MODE"},
        {{{"NML_CASEFILE", "SPECIFY_ELEVATION_CORRECTION_FACTOR = T"},
          {"NML_CASEFILE", "ELEVATION_CORRECTION_FACTOR = 2*2.0"}},
         "",
         "ELEVATION_CORRECTION_FACTOR"},
        {{{"NML_ER", "SPECIFY_INFLOW_ELEVATION = T, INFLOW_ELEVATION = 12"}},
         "",
         "SPECIFY_INFLOW_ELEVATION, INFLOW_ELEVATION"},
        {{{"NML_ER", "USE_EQUIVALENT_ROUGHNESS = T, EQUIVALENT_ROUGHNESS = 2*0.1"}},
         "",
         "EQUIVALENT_ROUGHNESS"},
        {{{"NML_ER", "USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN = T"}},
         "",
         "USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN"},
        {{{"NML_ER", "USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = T"}},
         "",
         "USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN"},
        {{{"NML_BOUNDARY_TREATMENT", "SPECIFY_INFLOW_PROFILE = T"},
          {"NML_BOUNDARY_TREATMENT", "INFLOW_PROFILE_FILE = 'profile'"}},
         "",
         "INFLOW_PROFILE_FILE"},
        {{{"NML_ER", "USE_DIRECTIONAL_ALPHA = T, DIRECTIONAL_ALPHA_FILE_NAME = 'alpha'"}},
         "",
         "DIRECTIONAL_ALPHA_FILE_NAME, DIRECTIONAL_ALPHA_APPLICABLE_WDS, "
         "DIRECTIONAL_ALPHA_Z0_MIN, DIRECTIONAL_ALPHA_Z0_MAX, DIRECTIONAL_ALPHA_BS_EPS, "
         "DIRECTIONAL_ALPHA_BS_MAXIT"},
        {{},
         "&canopy_parameters\nmodify_terrain = T\nmodify_circle_range = 100\n/\n",
         "modify_circle_range"},
    };
    for (const Changed& change : changes) {
        run_two("0");
        const ProgramRun ran = run_two("1", change.items, change.behind);
        expect_anew(ran, change.keys);
    }
}

// The elevations and a hash of them: 20 in place of 10 on the ground, and the earlier result stays.
TEST_F(SavedStates, BehindANewMapHaveItsGroundAndKeepTheEarlierResult) {
    run_two("0");
    for (const std::string& tag : tags) {
        fs::rename("restart-" + tag + "-vpkeout_00000.tuf",
                   "restart-" + tag + "-vpkeout_00480.tuf");
        directory.write(info_of(tag), "480\n 1e-5 1e-5 1e-5 1e-5\n");
    }
    const std::string earlier = directory.read("restart-000_0-vpkeout_00480.tuf");
    directory.write("h.map", level_map("20"));
    expect_anew(run_two("1"), "BASIC_H_FILE");
    for (const std::string& tag : tags) {
        EXPECT_TRUE(lies_at("restart-" + tag + "-xyz.tuf", 20.0F));
        EXPECT_TRUE(directory.has("restart-" + tag + "-vpkeout_00000.tuf"));
    }
    EXPECT_EQ(directory.read("restart-000_0-vpkeout_00480.tuf"), earlier);
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 2");
    expect_gone_on(run_two("1"), "the fingerprint is the new one now");
}

TEST_F(SavedStates, GoByTheValuesOfTheirFilesNotByTheText) {
    directory.write("profile", "0 0 0.1\n100 5 0.5\n5000 9 0.5\n");
    directory.write("alpha", "2\n0 0.15\n180 0.2\n");
    const CaseItems files{{"NML_BOUNDARY_TREATMENT", "SPECIFY_INFLOW_PROFILE = T"},
                          {"NML_BOUNDARY_TREATMENT", "INFLOW_PROFILE_FILE = 'profile'"},
                          {"NML_ER", "USE_DIRECTIONAL_ALPHA = T"},
                          {"NML_ER", "DIRECTIONAL_ALPHA_APPLICABLE_WDS = 1, 2, -1"},
                          {"NML_ER", "DIRECTIONAL_ALPHA_FILE_NAME = 'alpha'"}};
    run_two("0", files);

    std::string map = level_map("10");
    map.replace(map.find("21*10"), 5, "10.0, 1E1 18*10\n 1.0D+01");
    directory.write("h.map", map);
    directory.write("profile", "height u tke\n0.0, 0.0, 1E-1\n\n100 5.0 0.5 9 9\n5000 9 0.5\n");
    directory.write("alpha", "2\n 0.0, 0.15\n\n1.8E2 0.20\n");
    expect_gone_on(run_two("1", files), "the same values");

    directory.write("profile", "0 0 0.1\n100 5.5 0.5\n5000 9 0.5\n");
    expect_anew(run_two("1", files), "INFLOW_PROFILE_FILE");
    directory.write("alpha", "2\n0 0.15\n180 0.21\n");
    expect_anew(run_two("1", files), "DIRECTIONAL_ALPHA_FILE_NAME");
    map.replace(map.find("1.0D+01"), 7, "1.1D+01");
    directory.write("h.map", map);
    expect_anew(run_two("1", files), "BASIC_H_FILE");
}

TEST_F(SavedStates, BeginAnewBehindAChangedCanopy) {
    run_two("0");
    const Extents nodes = read_extents("restart-000_0-xyz.tuf", xyz_codes);
    const auto lay = [&](const std::string& tag, float density) {
        CanopyRecords wood;
        for (Field3* field : {&wood.gp_cf, &wood.gp_density, &wood.gp_length}) {
            field->allocate(nodes.ni + 1, nodes.nj + 1, nodes.nk + 1, 0.1F);
        }
        wood.gp_density(2, 2, 2) = density;
        write_canopy_file("restart-" + tag + "-ccd.tuf", wood);
    };
    const std::string block = "&canopy_parameters\ncanopy_mode = 1\n/\n";
    lay(tags[0], 0.2F);
    lay(tags[1], 0.2F);
    run_two("0", {}, block);
    expect_gone_on(run_two("1", {}, block), "the same canopy");
    lay(tags[1], 0.3F);
    const ProgramRun ran = run_two("1", {}, block);
    EXPECT_THAT(ran.err, AllOf(HasSubstr("WD 180.0: restart-180_0-ccd.tuf changed since"),
                               Not(HasSubstr("WD   0.0"))));
    EXPECT_THAT(ran.out, AllOf(HasSubstr(resumed), HasSubstr(begun)));
}

TEST_F(SavedStates, GoOnBehindChangesThatLeaveTheGroundAlone) {
    run_two("0");
    const CaseItems site{{"NML_SITE", "N_SITE = 1, SITE(1)%LABEL = 'a'"},
                         {"NML_SITE", "SITE(1)%LON = 139, 45, 0, SITE(1)%LAT = 35, 30, 1"}};
    const std::vector<CaseItems> changes{
        {{"NML_NUMERICAL_SOLVER", "MAXIT = 1"}},
        {{"NML_NUMERICAL_SOLVER", "URFU = 0.3, URFP = 0.1, NSWPU = 3, DOUBLE_CORRECTION = T"}},
        {{"NML_NUMERICAL_SOLVER", "BOOSTCAL = T, CC_OUT_M = 0.002, OUT_CC_LIMIT = 0"}},
        {{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 3"}},
        {{"NML_MONITOR", "MONITOR_STEP = 2, MONITOR_POSITION = 1, MONITOR_HEIGHT = 20"},
         {"NML_MONITOR", "MONITOR_LON = 139, 45, 0, MONITOR_LAT = 35, 30, 1"}},
        {{"NML_RUN", "DEBUG_MODE = 5"}},
        site,
        // behind a switch that is off
        {{"NML_CASEFILE", "ELEVATION_CORRECTION_FACTOR = 2*3.0"}},
        {{"NML_ER", "INFLOW_ELEVATION = 50, EQUIVALENT_ROUGHNESS = 2*0.4"}},
        {{"NML_BOUNDARY_TREATMENT", "INFLOW_PROFILE_FILE = 'absent'"}},
    };
    for (const CaseItems& change : changes) {
        expect_gone_on(run_two("1", change), change[0].second);
    }
}

TEST_F(SavedStates, GoOnWithOneLineWhereNobodyCanTell) {
    run_two("0");
    fs::remove("restart-000_0-fingerprint.info");
    ProgramRun ran = run_two("1");
    expect_gone_on(ran, "no fingerprint");
    EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: No fingerprint; the saved state is taken as it "
                                 "stands.\n"));

    // A map whose header serves the sizing, but whose values are gone.
    fs::rename("z0.map", "elsewhere.map");
    write_case(two("1"));
    ran = run();
    if (ran.status == 0) {
        expect_gone_on(ran, "no map");
        EXPECT_THAT(log(), HasSubstr("<date> WD 180.0: " + directory.file("z0.map") +
                                     " cannot be read; the saved state is taken as it stands.\n"));
    } else {
        EXPECT_EQ(ran.status, 131) << "refused before any direction: " << ran.err;
        EXPECT_TRUE(has_infos());
    }
}

// --- start fields of an earlier run that left no saved state ---

TEST_F(SavedStates, StartFieldsAreTakenOnlyFromTheSameCase) {
    run_two("0");
    for (const std::string& tag : tags) {
        fs::remove(info_of(tag));
    }
    const std::string same =
        " WD   0.0: Fields start from restart-000_0-vpkeinp.tuf, an earlier "
        "start.\n";
    run_two("1");
    EXPECT_THAT(log(), HasSubstr("<date>" + same));

    fs::remove("torvex.log");
    for (const std::string& tag : tags) {
        fs::remove(info_of(tag));
    }
    directory.write("h.map", level_map("12"));
    run_two("1");
    EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: The start fields of an earlier run are not "
                                 "taken, since BASIC_H_FILE changed.\n"));
    EXPECT_THAT(log(), Not(HasSubstr("an earlier start.")));
    EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: Fields start from the power law of the "
                                 "inflow.\n"));
}

TEST_F(SavedStates, TheLogTellsWhatTheFieldsStartFrom) {
    run_two("0");
    EXPECT_THAT(log(), HasSubstr("<date> WD 180.0: Fields start from the power law of the "
                                 "inflow.\n"));
    directory.write("profile", "0 0 0.1\n100 5 0.5\n5000 9 0.5\n");
    run_two("0", {{"NML_BOUNDARY_TREATMENT",
                   "SPECIFY_INFLOW_PROFILE = T, INFLOW_PROFILE_FILE = 'profile'"}});
    EXPECT_THAT(log(), HasSubstr("<date> WD   0.0: Fields start from the inflow profile file.\n"));
    run_two("0", {{"NML_NUMERICAL_SOLVER", "MAXIT = 2"}});
    run_two("1", {{"NML_NUMERICAL_SOLVER", "MAXIT = 2"}});
    EXPECT_THAT(log(), HasSubstr("<date> WD 180.0: Fields start from the result of iteration "
                                 "2.\n"));
}

// A direction may have diverged in cells of which no residual tells.
TEST_F(SavedStates, ThatHoldNoFiniteNumbersAreNotDoneWhateverTheirResiduals) {
    write_case(two("0"));
    run_here({}, [](torvex::Run&, Direction& direction) {
        direction.flow.w(2, 2, 2) = std::numeric_limits<float>::infinity();
    });
    for (const std::string& tag : tags) {
        directory.write(info_of(tag), "0\n 1e-5 1e-5 1e-5 1e-5\n");
    }
    run_two("1");
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 2") << "MAXIT is 0";
    run_two("1", {{"NML_NUMERICAL_SOLVER", "MAXIT = 3"}});
    EXPECT_EQ(slot("view-wind_direction.dat", 2), "  0.0 3");
}

}  // namespace
}  // namespace torvex::test
