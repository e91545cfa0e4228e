// The solver of the pressure correction does not show in the flow.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

class PressureSolverRuns : public WholeCase {
 protected:
    // Far beyond the usual criteria, so that what is left of the start does not hide a difference.
    Solution solve(int solver, const CaseItems& more = {}) const {
        const std::string keys =
            "PRESSURE_SOLVER = " + std::to_string(solver) +
            ", MAXIT = 1000, CC_OUT_M = 1e-4, CC_OUT_U = 1e-4, CC_OUT_V = 1e-4, "
            "CC_OUT_W = 1e-4";
        CaseItems items{{"NML_NUMERICAL_SOLVER", keys}};
        items.insert(items.end(), more.begin(), more.end());
        return converged(hill_case(items));
    }
};

// Largest difference of the velocities over the largest speed.
double difference(const Solution& a, const Solution& b) {
    double largest = 0;
    double speed = 0;
    for (const auto& field : {&FlowState::u, &FlowState::v, &FlowState::w}) {
        const Field3& x = a.flow.*field;
        const Field3& y = b.flow.*field;
        EXPECT_EQ(x.size(), y.size());
        for (std::size_t n = 0; n < x.size(); ++n) {
            largest = std::max(largest, std::abs(double(x.data()[n]) - double(y.data()[n])));
            speed = std::max(speed, std::abs(double(x.data()[n])));
        }
    }
    return largest / speed;
}

TEST_F(PressureSolverRuns, BothLeadToTheSameFlow) {
    write_ground(cosine_hill(100, 500));
    const Solution cutting = solve(0);
    const Solution multigrid = solve(1);
    EXPECT_LT(difference(cutting, multigrid), 5e-4);
    EXPECT_NEAR(mass_imbalance(multigrid), 0.0, 1e-4);
    // The correction is as good, so that the outer iterations are about as many.
    EXPECT_NEAR(multigrid.outer_count, cutting.outer_count, 0.1 * cutting.outer_count);
}

TEST_F(PressureSolverRuns, BothLeadToTheSameFlowWithTheSecondCorrector) {
    write_ground(cosine_hill(100, 500));
    const CaseItems twice{{"NML_NUMERICAL_SOLVER", "DOUBLE_CORRECTION = T"},
                          {"NML_NAVIER_STOKES", "DENSIT = 1.2"}};
    EXPECT_LT(difference(solve(0, twice), solve(1, twice)), 5e-4);
}

}  // namespace
}  // namespace torvex::test
