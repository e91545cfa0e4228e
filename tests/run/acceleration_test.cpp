// The accelerated iteration on whole cases.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

#include "run/outer_iteration.hpp"
#include "run/whole_case.hpp"
#include "solver/accelerated/accelerated_iteration.hpp"
#include "solver/accelerated/coarse_cycle.hpp"
#include "solver/accelerated/coarse_level.hpp"
#include "solver/flow_fields.hpp"

namespace torvex::test {
namespace {

// The largest changes of the fields, as fractions of their largest value; of the positive ones as
// the change of their logarithm.
std::map<std::string, double> changes(const FlowState& before, const FlowState& now,
                                      const GridGeometry& g) {
    std::map<std::string, double> found;
    for (const FlowField& field : flow_fields) {
        if (field.kept == Kept::no || field.name == "pp" || (now.*field.member).size() == 0) {
            continue;
        }
        const Field3& a = before.*field.member;
        const Field3& b = now.*field.member;
        const bool positive = field.name == "tke" || field.name == "ted" || field.name == "vis" ||
                              field.name == "tkl" || field.name == "viskl";
        double scale = 0;
        double most = 0;
        for (int k = 2; k <= g.nz; ++k) {
            for (int j = 2; j <= g.ny; ++j) {
                for (int i = 2; i <= g.nx; ++i) {
                    const auto x = static_cast<double>(a(i, j, k));
                    const auto y = static_cast<double>(b(i, j, k));
                    scale = std::max(scale, std::abs(x));
                    most = std::max(most, positive ? std::abs(std::log(y / x)) : std::abs(y - x));
                }
            }
        }
        found[std::string(field.name)] = positive ? most : most / scale;
    }
    return found;
}

class Acceleration : public WholeCase {
 protected:
    // Iterates without coarse meshes until nothing moves, then makes one cycle of one coarse
    // iteration, and tells what that changed.
    std::map<std::string, double> change_by_cycle(const CaseItems& items) const {
        write_ground(cosine_hill(100, 500));
        write_case(hill_case(items));
        std::map<std::string, double> found;
        constexpr int settling = 300;
        const auto solve = [&](torvex::Run& run, Direction& direction) {
            AcceleratedWork work;
            OUTER_ITERATION(run, direction, [&](const SolverContext& c, int iter, int interval) {
                StepReport report;
                accelerated_iteration(c, work, {}, Coarse::nothing, iter % interval == 0);
                if (iter == settling) {
                    work.coarser = make_coarse_level(c);
                    const FlowState before = c.flow;
                    const Cycling one{.coarse_iterations = 1, .gain = 1.0F};
                    coarse_cycle(c, work, one);
                    found = changes(before, c.flow, c.grid);
                }
                return report;
            });
        };
        run_here({"/f", (directory.path() / "torvex.tin").string()}, solve);
        return found;
    }

    void expect_fixed_point(const CaseItems& items) const {
        CaseItems all = items;
        all.push_back({"NML_NUMERICAL_SOLVER", "MAXIT = 300"});
        const auto found = change_by_cycle(all);
        ASSERT_FALSE(found.empty());
        for (const auto& [name, change] : found) {
            EXPECT_LT(change, 2e-4) << name;
        }
    }
};

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
