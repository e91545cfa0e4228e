// Level ground over the whole range of roughness, first cells and growth that the equilibrium layer
// is for.

#include <gtest/gtest.h>

#include <vector>

#include "run/level_ground.hpp"

namespace torvex::test {
namespace {

std::vector<LevelGround> matrix() {
    std::vector<LevelGround> cases;
    for (const double z0 : {0.0002, 0.03, 0.3, 1.0}) {
        for (const double first_cell : {1.0, 2.0, 5.0}) {
            for (const double ratio : {1.1, 1.2, 1.35}) {
                if (first_cell / 2 > 2 * z0) {
                    cases.push_back({.z0 = z0, .first_cell = first_cell, .ratio = ratio});
                }
            }
        }
    }
    return cases;
}

class LevelGroundMatrix : public WholeCase, public testing::WithParamInterface<LevelGround> {};

TEST_P(LevelGroundMatrix, StaysLevelOverTenKilometres) {
    write_case(case_of(GetParam()));
    const ProgramRun ran = run();
    ASSERT_EQ(ran.status, 0) << ran.err;
    expect_level(stored("000_0", "flat-"), GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, LevelGroundMatrix, testing::ValuesIn(matrix()));

}  // namespace
}  // namespace torvex::test
