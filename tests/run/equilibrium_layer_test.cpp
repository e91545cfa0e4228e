// Whole cases with the equilibrium surface layer: level ground stays level, what wins over the
// layer, and that stopping and going on changes nothing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "base/edit.hpp"
#include "run/level_ground.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const CaseItems both_keys{{"NML_BOUNDARY_TREATMENT", "EQUILIBRIUM_INFLOW = T"},
                          {"NML_NAVIER_STOKES", "WALL_DISSIPATION_AT_CENTRE = T"}};

CaseItems with_both(CaseItems items) {
    items.insert(items.end(), both_keys.begin(), both_keys.end());
    return items;
}

class LevelGroundStaysLevel : public WholeCase, public testing::WithParamInterface<LevelGround> {};

TEST_P(LevelGroundStaysLevel, OverTenKilometres) {
    write_case(case_of(GetParam()));
    const ProgramRun ran = run();
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(log(),
                HasSubstr("TED Pr: " + std::string(GetParam().model == 4 ? " " : "") + "1.167\n"));
    expect_level(stored("000_0", "flat-"), GetParam());
}

// The ends of what the layer is for: smooth and rough ground, low and high first cells, even and
// steep growth; and the three models that keep it.
INSTANTIATE_TEST_SUITE_P(Ends, LevelGroundStaysLevel,
                         testing::Values(LevelGround{.z0 = 0.0002, .first_cell = 1, .ratio = 1.35},
                                         LevelGround{.z0 = 0.0002, .first_cell = 5, .ratio = 1.1},
                                         LevelGround{.z0 = 0.03, .first_cell = 1, .ratio = 1.2},
                                         LevelGround{.z0 = 0.03, .first_cell = 5, .ratio = 1.35},
                                         LevelGround{.z0 = 0.3, .first_cell = 2, .ratio = 1.35},
                                         LevelGround{.z0 = 1, .first_cell = 5, .ratio = 1.35},
                                         LevelGround{.z0 = 0.03, .model = 3},
                                         LevelGround{.z0 = 0.03, .model = 4},
                                         LevelGround{.z0 = 0.03, .accelerated = true},
                                         LevelGround{.z0 = 1, .ratio = 1.35, .accelerated = true}));

class EquilibriumLayerRuns : public WholeCase {
 protected:
    void expect_gives_way(const CaseItems& items, const std::string& behind,
                          const std::string& winner) {
        write_case(with_both(items), behind);
        const ProgramRun ran = run();
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_THAT(log(), HasSubstr("EQUILIBRIUM_INFLOW gives way to " + winner));
        EXPECT_THAT(log(), Not(HasSubstr("equilibrium layer, u*")));
    }
};

const CaseItems short_run{{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                          {"NML_NUMERICAL_SOLVER", "MAXIT = 2"}};

TEST_F(EquilibriumLayerRuns, TellWhatTheyStartFrom) {
    write_case(with_both(short_run));
    ASSERT_EQ(run().status, 0);
    EXPECT_THAT(log(), HasSubstr("Inflow: equilibrium layer, u*=  0.4331"));
    EXPECT_THAT(log(), HasSubstr("Fields start from the equilibrium layer of the inflow."));
    EXPECT_THAT(log(), Not(HasSubstr("gives way")));
    EXPECT_THAT(directory.read("restart-000_0-fingerprint.info"),
                HasSubstr("EQUILIBRIUM_INFLOW = T\n"));
}

TEST_F(EquilibriumLayerRuns, LeaveNoTraceInAFingerprintWithoutTheKey) {
    write_case(short_run);
    ASSERT_EQ(run().status, 0);
    EXPECT_THAT(directory.read("restart-000_0-fingerprint.info"), Not(HasSubstr("EQUILIBRIUM")));
}

TEST_F(EquilibriumLayerRuns, GiveWayToAProfileFile) {
    directory.write("profile.txt", "10 5 1\n500 10 1\n");
    CaseItems items = short_run;
    items.emplace_back("NML_BOUNDARY_TREATMENT", "SPECIFY_INFLOW_PROFILE = T");
    items.emplace_back("NML_BOUNDARY_TREATMENT", "INFLOW_PROFILE_FILE = 'profile.txt'");
    expect_gives_way(items, "", "the profile of INFLOW_PROFILE_FILE (");
    EXPECT_THAT(log(), HasSubstr("TED Pr: 1.300\n"));
}

TEST_F(EquilibriumLayerRuns, GiveWayToTheKLModel) {
    CaseItems items = short_run;
    items.emplace_back("NML_NAVIER_STOKES", "TURBULENCE_MODEL = 2");
    expect_gives_way(items, "", "the k-l model");
}

// The layer stops at every iteration with what a resume can build anew: the stress on top from the
// roughness, the faces beside the walls from the mesh.
TEST_F(EquilibriumLayerRuns, GoOnWhereTheyStopped) {
    for (const std::string mode : {"0", "2"}) {
        SCOPED_TRACE("WIND_TUNNEL_MODE = " + mode);
        const auto items = [&](int iterations, int restart) {
            return with_both({{"NML_CASEFILE", "N_WIND_DIRECTION = 1"},
                              {"NML_RUN", "RESTART_FLAG = " + std::to_string(restart)},
                              {"NML_BOUNDARY_TREATMENT", "WIND_TUNNEL_MODE = " + mode},
                              {"NML_BOUNDARY_TREATMENT", "WIND_TUNNEL_Z0 = 0.01"},
                              {"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(iterations)},
                              {"NML_NUMERICAL_SOLVER", "CC_OUT_U = 1E-9"}});
        };
        write_case(items(12, 0));
        ASSERT_EQ(run().status, 0);
        const std::string straight = directory.read("restart-000_0-vpkeout_00012.tuf");
        write_case(items(7, 0));
        ASSERT_EQ(run().status, 0);
        write_case(items(5, 1));
        ASSERT_EQ(run().status, 0);
        EXPECT_TRUE(directory.read("restart-000_0-vpkeout_00012.tuf") == straight);
    }
}

TEST_F(EquilibriumLayerRuns, BeginAnewWhereTheKeyChanged) {
    write_case(short_run);
    ASSERT_EQ(run().status, 0);
    CaseItems items = with_both(short_run);
    items.emplace_back("NML_RUN", "RESTART_FLAG = 1");
    write_case(items);
    ASSERT_EQ(run().status, 0);
    EXPECT_THAT(log(), HasSubstr("EQUILIBRIUM_INFLOW changed since this direction was begun"));
}

}  // namespace
}  // namespace torvex::test
