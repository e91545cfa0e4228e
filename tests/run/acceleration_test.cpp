// Cycles on a coarse mesh and a state that solves the fine equations.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "run/cycle_change.hpp"
#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

class Acceleration : public WholeCase {
 protected:
    void expect_fixed_point(const CaseItems& items) const {
        write_ground(cosine_hill(100, 500));
        CaseItems all = items;
        all.push_back({"NML_NUMERICAL_SOLVER", "MAXIT = 300"});
        write_case(hill_case(all));
        test::expect_fixed_point(
            change_by_cycle({"/f", (directory.path() / "torvex.tin").string()}, 300));
    }
};

// What a cycle does follows from the fine fields alone, so that a resume, which makes its coarse
// mesh anew, goes on as if there had been no stop.
TEST_F(Acceleration, CycleRemembersNothing) {
    write_ground(cosine_hill(100, 500));
    for (const std::string keys :
         {"TURBULENCE_MODEL = 1", "TURBULENCE_MODEL = 2", "TURBULENCE_MODEL = 4"}) {
        write_case(hill_case({{"NML_NAVIER_STOKES", keys}, {"NML_NUMERICAL_SOLVER", "MAXIT = 8"}}));
        EXPECT_THAT(fields_that_remember({"/f", (directory.path() / "torvex.tin").string()}, 8),
                    testing::IsEmpty())
            << keys;
    }
}

// A state that solves the fine equations is one that a cycle leaves alone.
TEST_F(Acceleration, CycleKeepsASolutionOfModel1) {
    expect_fixed_point({});
}
TEST_F(Acceleration, CycleKeepsASolutionOfModel2) {
    expect_fixed_point({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 2"}});
}
TEST_F(Acceleration, CycleKeepsASolutionOfModel3) {
    expect_fixed_point({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 3"}});
}
TEST_F(Acceleration, CycleKeepsASolutionOfModel4) {
    expect_fixed_point({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 4, RATIO_KL = 0.3"}});
}
TEST_F(Acceleration, CycleKeepsASolutionUnderAWall) {
    expect_fixed_point(
        {{"NML_BOUNDARY_TREATMENT", "WIND_TUNNEL_MODE = 1, WIND_TUNNEL_Z0 = 0.001"}});
}
TEST_F(Acceleration, CycleKeepsASolutionBetweenWalls) {
    expect_fixed_point(
        {{"NML_BOUNDARY_TREATMENT", "WIND_TUNNEL_MODE = 2, WIND_TUNNEL_Z0 = 0.001"}});
}
TEST_F(Acceleration, CycleKeepsASolutionOfAnotherDensity) {
    expect_fixed_point({{"NML_NAVIER_STOKES", "DENSIT = 1.2"}});
}

}  // namespace
}  // namespace torvex::test
