// torvex-prep check: what it finds, what it leaves, and that it ends as a run of the same case
// does.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "prep/prep_fixture.hpp"
#include "run/run_fixture.hpp"

namespace torvex {
namespace {

using test::CaseItems;
using test::prep;
using test::PrepRun;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// The value behind "NAME": in a text of JSON, the first one; NaN if there is none.
double number_of(const std::string& json, const std::string& name) {
    const std::string head = "\"" + name + "\": ";
    const std::size_t at = json.find(head);
    return at == std::string::npos || json.compare(at + head.size(), 4, "null") == 0
               ? std::nan("")
               : std::stod(json.substr(at + head.size()));
}

// The member NAME of the document, which stands on a line of its own.
std::string member(const std::string& json, const std::string& name) {
    const std::size_t at = json.find("\n  \"" + name + "\": ");
    return at == std::string::npos ? "" : json.substr(at + 1, json.find('\n', at + 1) - at - 1);
}

class PrepCheck : public test::RunTest {
 protected:
    const CaseItems one{{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}};
    const CaseItems with_sites{
        {"NML_CASEFILE", "N_WIND_DIRECTION = 2"},
        {"NML_SITE",
         "N_SITE = 2, SITE(1)%LABEL = 'mid', SITE(1)%LON = 139, 45, 0, SITE(1)%LAT = 35, 30, 0, "
         "SITE(2)%LABEL = 'far', SITE(2)%LON = 141, 0, 0, SITE(2)%LAT = 35, 30, 0"}};

    // The status of a check and of a run of the same case, which must be one.
    int status_of_both(const CaseItems& items, const std::string& behind = {}) const {
        write_case(items, behind);
        const PrepRun checked = prep({"check"});
        const test::ProgramRun ran = run();
        EXPECT_EQ(checked.status, ran.status) << checked.err << "\n---\n" << ran.err;
        return checked.status;
    }
};

TEST_F(PrepCheck, LeavesItsLogAndNothingElse) {
    write_case(with_sites);
    const auto before = test::files_below(directory.path());
    const PrepRun checked = prep({"check"});
    ASSERT_EQ(checked.status, 0) << checked.err;
    auto after = test::files_below(directory.path());
    EXPECT_EQ(after.erase("torvex-prep.log"), 1U);
    EXPECT_EQ(after, before);
    EXPECT_THAT(checked.out, AllOf(HasSubstr("mesh "), HasSubstr("memory "), HasSubstr("time ")));
    EXPECT_THAT(directory.read("torvex-prep.log"), HasSubstr("The case was checked."));
}

TEST_F(PrepCheck, TellsTheMeshThatARunMakes) {
    write_case(one);
    const PrepRun checked = prep({"check", "--json"});
    ASSERT_EQ(run().status, 0);
    const auto counts = test::lines_of(directory.read("log-meshnumber"));
    EXPECT_EQ(number_of(checked.out, "ni"), std::stod(counts[0]));
    EXPECT_EQ(number_of(checked.out, "nj"), std::stod(counts[1]));
    EXPECT_EQ(number_of(checked.out, "nk"), std::stod(counts[2]));
    EXPECT_EQ(number_of(checked.out, "cells"),
              std::stod(counts[0]) * std::stod(counts[1]) * std::stod(counts[2]));
}

// The study area is a square of 400 m, the ground level at 10 m, so that the top is that of 1500 m.
TEST_F(PrepCheck, TellsTheDomain) {
    write_case(one);
    const PrepRun checked = prep({"check", "--json"});
    EXPECT_NEAR(number_of(checked.out, "max_rad"), std::sqrt(2.0) * 200.0, 0.01);
    EXPECT_EQ(number_of(checked.out, "top"), 1500.0);
    EXPECT_EQ(number_of(checked.out, "hmax"), 10.0);
    EXPECT_EQ(number_of(checked.out, "hmin"), 10.0);
    EXPECT_NEAR(number_of(checked.out, "havg"), 10.0, 1e-3);
    EXPECT_GT(number_of(checked.out, "need_m"), 3 * std::sqrt(2.0) * 200.0);
}

// What the run leaves is within a hundredth the bytes that were foretold: records have frames.
TEST_F(PrepCheck, TellsTheDiskThatARunTakes) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}, {"NML_NUMERICAL_SOLVER", "MAXIT = 1"}});
    const PrepRun checked = prep({"check", "--json"});
    ASSERT_EQ(run().status, 0);
    double written = 0;
    for (const auto& [name, bytes] : test::files_below(directory.path())) {
        written += name.ends_with(".tuf") ? static_cast<double>(bytes.size()) : 0.0;
    }
    const std::string disk = member(checked.out, "disk");
    EXPECT_NEAR(number_of(disk, "bytes"), written, 0.01 * written);
}

TEST_F(PrepCheck, MeasuresMemoryAndTime) {
    write_case(one);
    const PrepRun checked = prep({"check", "--json"});
    const std::string memory = member(checked.out, "memory");
    const double cells = number_of(checked.out, "cells");
    EXPECT_GT(number_of(memory, "bytes"), 250 * cells);
    EXPECT_GT(number_of(memory, "limit_bytes"), number_of(memory, "bytes"));
    EXPECT_GT(number_of(checked.out, "s_per_iteration"), 0.0);
}

TEST_F(PrepCheck, SitesHaveTheirGround) {
    write_case(with_sites);
    const PrepRun checked = prep({"check", "--json"});
    ASSERT_EQ(checked.status, 0) << checked.err;
    EXPECT_EQ(member(checked.out, "sites"),
              "  \"sites\": [{\"ground\": 10.000, \"inside\": true}, "
              "{\"ground\": null, \"inside\": false}],");
    EXPECT_THAT(checked.err, HasSubstr("outside the mesh, so that no profile is written: far"));
    EXPECT_THAT(prep({"check"}).out, HasSubstr("far: outside the mesh of some direction"));
}

TEST_F(PrepCheck, CountsEveryKey) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                {"NML_RUN", "DEBUG_MODE = 0"},
                {"NML_NUMERICAL_SOLVER", "URFU_MAX = 0.7, SIP_ALPHA = 0.9"}});
    const std::string keys = member(prep({"check", "--json"}).out, "keys");
    const std::string given = keys.substr(0, keys.find("\"defaulted\""));
    const std::string idle = keys.substr(keys.find("\"without_effect\""));
    EXPECT_THAT(given, AllOf(HasSubstr("\"DEBUG_MODE\""), HasSubstr("\"URFU_MAX\""),
                             Not(HasSubstr("\"URFV_MAX\""))));
    EXPECT_THAT(keys, HasSubstr("\"URFV_MAX\""));
    EXPECT_THAT(keys, Not(HasSubstr("\"canopy_mode\"")));  // its block is not there
    EXPECT_EQ(idle, "\"without_effect\": [\"SIP_ALPHA\", \"URFU_MAX\"]},");
}

// The first cell is 20 m high: its centre stands 10 m over a roughness length of 0.03 m.
TEST_F(PrepCheck, WeighsTheFirstCellAgainstTheRoughness) {
    write_case(one);
    EXPECT_THAT(prep({"check"}).out, HasSubstr("\n  0.0         333.3         0.0"));
    directory.write("z0.map", test::level_map("8"));
    const PrepRun rough = prep({"check"});
    EXPECT_EQ(rough.status, 0);
    EXPECT_THAT(rough.err, HasSubstr("Cells are too low for the roughness"));
}

TEST_F(PrepCheck, MapsThatAreTooSmallAreToldForEveryDirection) {
    write_case({{"NML_CASEFILE",
                 "N_WIND_DIRECTION = 2, WE_LENGTH = 40000, NS_LENGTH = 40000, "
                 "MIN_DXY = 2000, MAX_DXY = 2000, MIN_DXY_RAD = 0"}});
    const PrepRun checked = prep({"check", "--json"});
    EXPECT_EQ(checked.status, run().status);
    EXPECT_EQ(checked.status, 151);
    EXPECT_THAT(checked.err, AllOf(HasSubstr("in 2 of 2 wind directions"), HasSubstr("stop 151")));
    const std::string maps = member(checked.out, "maps");
    EXPECT_LT(number_of(maps, "cover_m"), number_of(checked.out, "need_m"));
    EXPECT_LT(number_of(maps, "largest_study_m"), 40000.0);
    EXPECT_GT(number_of(checked.out, "cells"), 0.0);
    EXPECT_THAT(prep({"check"}).out, HasSubstr("stop 151"));
}

// A map that covers all allows the study area of the case.
TEST_F(PrepCheck, MapsThatAreLargeEnoughAllowTheStudyArea) {
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 4, NS_LENGTH = 200"}});
    const std::string maps = member(prep({"check", "--json"}).out, "maps");
    EXPECT_EQ(number_of(maps, "largest_study_m"), 400.0);
    EXPECT_NE(maps.find("}, {"), std::string::npos) << "terrain and roughness: " << maps;
}

TEST_F(PrepCheck, EndsAsARunDoes) {
    EXPECT_EQ(status_of_both(one), 0);
    EXPECT_EQ(status_of_both({{"NML_CASEFILE", "N_WIND_DIRECTION = 1, BASIC_H_FILE = 'no.map'"}}),
              111);
    EXPECT_EQ(status_of_both({{"NML_CASEFILE", "N_WIND_DIRECTION = 1, BASIC_Z0_FILE = 'no.map'"}}),
              131);
    EXPECT_EQ(status_of_both({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                              {"NML_BOUNDARY_TREATMENT", "USE_DEFAULT_MAX_Z = F, MAX_Z = 5"}}),
              152);
    EXPECT_EQ(status_of_both({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                              {"NML_ER", "USE_EQUIVALENT_ROUGHNESS = T"}}),
              158);
    EXPECT_EQ(status_of_both({{"NML_CASEFILE", "N_WIND_DIRECTION = 1, MIN_DXY = 'a'"}}), 1);
}

// What an atlas run takes over is not there before the first normal run, and a check leaves none.
TEST_F(PrepCheck, EndsAsARunDoesWithoutAnEarlierRun) {
    EXPECT_EQ(
        status_of_both({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}, {"NML_RUN", "ATLAS_FLAG = 1"}}),
        186);
}

// The child reaches 120 m from the centre, the monitor stands 150 m to the east, inside the study
// area. A check of the child leaves the parent's and the child's files alone.
TEST_F(PrepCheck, AChildEndsAsItsRunDoes) {
    write_case(one);
    ASSERT_EQ(run().status, 0);
    const auto before = test::files_below(directory.path());
    write_case(one, test::nest_block());
    EXPECT_EQ(prep({"check"}).status, 0);
    auto after = test::files_below(directory.path());
    EXPECT_EQ(after.erase("torvex-prep.log"), 1U);
    after["torvex.tin"] = before.at("torvex.tin");
    EXPECT_EQ(after, before);
    EXPECT_EQ(status_of_both({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                              {"NML_MONITOR",
                               "MONITOR_POSITION = 1, MONITOR_HEIGHT = 10, "
                               "MONITOR_LON = 139, 45, 6, MONITOR_LAT = 35, 30"}},
                             test::nest_block()),
              161);
}

// A user's domain whose files are missing, a canopy whose file is, a child without its parent.
TEST_F(PrepCheck, EndsAsARunDoesWithBlocks) {
    status_of_both({{"NML_RUN", "TORVEX_MODE = 1"}},
                   "&user_domain\nmesh_n_file = 'n.txt'\nxyz_file = 'xyz.tuf'\n"
                   "roughness_file = 'z0.tuf'\n/\n");
    status_of_both(one, "&canopy_parameters\ncanopy_mode = 1\n/\n");
    status_of_both(one, test::nest_block());
}

TEST_F(PrepCheck, BadArgumentsAndNoCaseEndAsElsewhere) {
    EXPECT_EQ(prep({"check"}).status, 1);
    write_case(one);
    EXPECT_EQ(prep({"check", "--xml"}).status, 102);
    EXPECT_EQ(prep({"check", "/f", "other.tin"}).status, 1);
    EXPECT_EQ(prep({"check", "--json", "/f", "torvex.tin"}).status, 0);
}

TEST_F(PrepCheck, HelpsWithItself) {
    const PrepRun helped = prep({"check", "--help"});
    EXPECT_EQ(helped.status, 0);
    EXPECT_THAT(helped.out, AllOf(HasSubstr("--json"), HasSubstr("Exit status")));
    EXPECT_THAT(prep({"maps", "--help"}).out, HasSubstr("usage: torvex-prep ENTRY"));
}

// The case cannot be read: what is not known is null, and the status that of the run.
TEST_F(PrepCheck, JsonStandsAlsoBesideAStop) {
    write_case({{"NML_CASEFILE", "BASIC_H_FILE = 'no.map'"}});
    const PrepRun checked = prep({"check", "--json"});
    EXPECT_EQ(checked.status, 111);
    EXPECT_EQ(member(checked.out, "mesh"), "  \"mesh\": null,");
    EXPECT_EQ(member(checked.out, "sites"), "  \"sites\": [],");
}

// Where a run goes on from a saved state, its maps are not asked.
TEST_F(PrepCheck, ASavedDirectionIsLeftAlone) {
    write_case(one);
    ASSERT_EQ(run().status, 0);
    write_case({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"}, {"NML_RUN", "RESTART_FLAG = 1"}});
    const auto before = test::files_below(directory.path());
    const PrepRun checked = prep({"check"});
    EXPECT_EQ(checked.status, 0);
    EXPECT_THAT(checked.out, HasSubstr("goes on from its saved state"));
    auto after = test::files_below(directory.path());
    after.erase("torvex-prep.log");
    EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace torvex
