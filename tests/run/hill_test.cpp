// Whole small cases with a hill, to convergence.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

class Hill : public WholeCase {
 protected:
    // A hill of 500 m half width.
    Solution solve(double height, const std::string& model) const {
        write_ground(cosine_hill(height, 500));
        return converged(hill_case({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = " + model}}));
    }
};

double speed_above_centre(const Solution& s, double height) {
    return value_above(s, s.flow.u, column_at(s, 0, 0), height);
}

// The hill is symmetric about the wind, and so is its flow, as far as it is converged.
float asymmetry(const Solution& s) {
    const GridGeometry& g = s.grid;
    float largest = 0;
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const float u = s.flow.u(i, j, k);
                const float mirrored = s.flow.u(i, g.nj + 1 - j, k);
                largest = std::max(largest, std::abs(u - mirrored));
            }
        }
    }
    return largest;
}

// Linear theory (Jackson and Hunt 1975) puts the speed-up of a hill of 100 m at 10 m near 1.32. It
// knows no turbulence model but a mixing length in the inner layer, so that all models must come
// near it.
TEST_F(Hill, SpeedsUpTheWindAsLinearTheorySays) {
    for (const std::string model : {"1", "2", "3"}) {
        SCOPED_TRACE("model " + model);
        const Solution flat = solve(0, model);
        const Solution hill = solve(100, model);
        EXPECT_NEAR(speed_above_centre(hill, 10) / speed_above_centre(flat, 10), 1.32, 0.03);
        EXPECT_NEAR(mass_imbalance(hill), 0.0, 1e-4);
        EXPECT_LT(asymmetry(hill), 0.02F) << "of a wind of 10 m/s";
    }
}

// Walls instead of open boundaries, rough ones so that they show: the wind behind the hill is
// slower beside them than without, and at the sides of mode 1 it is not.
TEST_F(Hill, StandsInAWindTunnelToo) {
    write_ground(cosine_hill(100, 500));
    const Solution open = converged(hill_case());
    for (const int mode : {1, 2}) {
        SCOPED_TRACE("mode " + std::to_string(mode));
        const std::string keys = "WIND_TUNNEL_MODE = " + std::to_string(mode) + ", ";
        const Solution s =
            converged(hill_case({{"NML_BOUNDARY_TREATMENT", keys + "WIND_TUNNEL_Z0 = 0.5"}}));
        EXPECT_NEAR(mass_imbalance(s), 0.0, 1e-4);
        EXPECT_LT(asymmetry(s), 0.02F);
        const auto slower = [&](int j, int k) {
            const int behind = s.grid.nx;
            return 1 - s.flow.u(behind, j, k) / open.flow.u(behind, j, k);
        };
        const int middle = s.grid.nj / 2;
        const int half_way = s.grid.nk / 2;
        EXPECT_GT(slower(middle, s.grid.nz), 0.05F) << "under the top";
        EXPECT_EQ(slower(2, half_way) > 0.05F, mode == 2) << "at the south wall";
        EXPECT_EQ(slower(s.grid.ny, half_way) > 0.05F, mode == 2) << "at the north wall";
    }
}

TEST_F(Hill, TheHybridModelWithoutItsKlPartIsKEpsilonToTheLastBit) {
    const Solution one = solve(100, "1");
    const Solution four = solve(100, "4");
    ASSERT_EQ(one.outer_count, four.outer_count);
    for (const auto& field : {&FlowState::u, &FlowState::p, &FlowState::tke, &FlowState::ted,
                              &FlowState::vis, &FlowState::flxW}) {
        const Field3& a = one.flow.*field;
        const Field3& b = four.flow.*field;
        for (std::size_t n = 0; n < a.size(); ++n) {
            ASSERT_EQ(a.data()[n], b.data()[n]);
        }
    }
}

}  // namespace
}  // namespace torvex::test
