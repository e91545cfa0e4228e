// The seven relaxation factors under BOOSTCAL: which of them double, where they end, and that each
// direction begins with those of the case.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "run/outer_iteration_fixture.hpp"

namespace torvex::test {
namespace {

struct Factors {
    float u, v, w, p, k, e, vis;
    friend bool operator==(const Factors&, const Factors&) = default;
};

void PrintTo(const Factors& f, std::ostream* out) {
    for (const float value : {f.u, f.v, f.w, f.p, f.k, f.e, f.vis}) {
        *out << value << ' ';
    }
}

Factors factors_of(const SolveControls& c) {
    return {c.URFU, c.URFV, c.URFW, c.URFP, c.URFK, c.URFE, c.URFVIS};
}

constexpr Factors start{0.11F, 0.12F, 0.13F, 0.07F, 0.15F, 0.16F, 0.17F};

class RelaxationBoost : public OuterIterationTest {
 protected:
    // What iterations 1, 50, 51, 100, 101 of each of two directions see.
    std::map<int, std::vector<Factors>> seen_with(const std::string& boostcal) const {
        write_case({{"NML_CASEFILE", "WD_TYPE = 1, N_WIND_DIRECTION = 2"},
                    {"NML_CASEFILE", "WIND_DIRECTION_ANGLE = 0, 90"},
                    {"NML_NUMERICAL_SOLVER", "MAXIT = 101, BOOSTCAL = " + boostcal},
                    {"NML_NUMERICAL_SOLVER", "URFU = 0.11, URFV = 0.12, URFW = 0.13, URFP = 0.07"},
                    {"NML_NUMERICAL_SOLVER", "URFK = 0.15, URFE = 0.16, URFVIS = 0.17"},
                    {"NML_NUMERICAL_SOLVER", "URFU_MAX = 0.2, URFV_MAX = 0.9, URFW_MAX = 0.3"},
                    {"NML_NUMERICAL_SOLVER", "URFP_MAX = 0.1, URFK_MAX = 0.4, URFE_MAX = 0.12"},
                    {"NML_NUMERICAL_SOLVER", "URFVIS_MAX = 0.9"}});
        FakeEquations fake;
        fake.level = far_off;
        Equations equations = fake.equations();
        std::map<int, std::vector<Factors>> seen;
        equations.CALCVIS = [&](const SolverContext& c) {
            const int iter = fake.iterations;
            if (iter % 50 == 0 || iter % 50 == 1) {
                seen[iter].push_back(factors_of(c.controls));
            }
        };
        const RunHere ran = run_here({}, [&](torvex::Run& run, Direction& direction) {
            OUTER_ITERATION(run, direction, equations);
        });
        EXPECT_EQ(ran.status, 0) << ran.err;
        return seen;
    }
    static std::vector<Factors> in_both_directions(const Factors& factors) {
        return {factors, factors};
    }
};

TEST_F(RelaxationBoost, DoublesSixFactorsUpToTheirOwnCeilingsInEachDirection) {
    const auto seen = seen_with("T");
    EXPECT_EQ(seen.at(1), in_both_directions(start));
    EXPECT_EQ(seen.at(50), in_both_directions(start));
    // e falls: its ceiling lies below the start. vis has none that counts.
    const Factors once{0.2F, 0.24F, 0.26F, 0.1F, 0.3F, 0.12F, 0.17F};
    EXPECT_EQ(seen.at(51), in_both_directions(once));
    EXPECT_EQ(seen.at(100), in_both_directions(once));
    const Factors twice{0.2F, 0.48F, 0.3F, 0.1F, 0.4F, 0.12F, 0.17F};
    EXPECT_EQ(seen.at(101), in_both_directions(twice));
}

TEST_F(RelaxationBoost, LeavesAllFactorsAloneWhereItIsOff) {
    for (const auto& [iteration, factors] : seen_with("F")) {
        EXPECT_EQ(factors, in_both_directions(start)) << iteration;
    }
}

}  // namespace
}  // namespace torvex::test
