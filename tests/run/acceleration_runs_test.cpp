// Accelerated runs to convergence: the field of the plain iteration, sooner, the same on any number
// of threads.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <set>
#include <string>

#include "run/outer_iteration.hpp"
#include "run/whole_case.hpp"
#include "solver/linear_system.hpp"

namespace torvex::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class AcceleratedRuns : public WholeCase {
 protected:
    AcceleratedRuns() { write_ground(cosine_hill(100, 500)); }

    // About 8000 cells.
    static CaseItems small(const CaseItems& more) {
        CaseItems items{{"NML_CASEFILE", "WE_LENGTH = 1000, NS_LENGTH = 800, MIN_DXY = 100"},
                        {"NML_CASEFILE", "MIN_DXY_RAD = 400, MIN_DZ = 8, MESH_VRATIO = 1.4"}};
        items.insert(items.end(), more.begin(), more.end());
        return hill_case(items);
    }
    // Iterates until nothing is left of the start but rounding, whatever the criteria.
    Solution solve(const CaseItems& more, const std::string& keys) const {
        CaseItems items = more;
        items.push_back({"NML_NUMERICAL_SOLVER", "CC_OUT_M = 1E-9, " + keys});
        write_case(small(items));
        constexpr int seconds = 250;  // it takes one, but among other tests a minute
        const ProgramRun ran = run_torvex_program({}, directory.path(), seconds);
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_THAT(log(), Not(HasSubstr("begins anew")));
        return stored();
    }
    // Both lead to speeds that agree within 0.05 % at every probe.
    void expect_the_same_field(const CaseItems& more) const;

    // A run of so many iterations on so many threads.
    std::map<std::string, std::string> fields_after(int iterations, const CaseItems& more,
                                                    const char* threads) const {
        CaseItems items = more;
        items.push_back({"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(iterations)});
        write_case(small(items));
        const std::string before =
            std::getenv("OMP_NUM_THREADS") ? std::getenv("OMP_NUM_THREADS") : "";
        setenv("OMP_NUM_THREADS", threads, 1);
        const ProgramRun ran = run();
        before.empty() ? unsetenv("OMP_NUM_THREADS") : setenv("OMP_NUM_THREADS", before.c_str(), 1);
        EXPECT_EQ(ran.status, 0) << ran.err;
        std::map<std::string, std::string> found = files_below(directory.path());
        std::erase_if(found, [](const auto& file) {
            return file.first.find("vpkeout") == std::string::npos;
        });
        EXPECT_EQ(found.size(), 1U);
        return found;
    }
};

double speed_at(const Solution& s, const Column& at, double height) {
    return std::hypot(value_above(s, s.flow.u, at, height), value_above(s, s.flow.v, at, height),
                      value_above(s, s.flow.w, at, height));
}

bool is_same(const Field3& a, const Field3& b, const CellRange& cells) {
    for (int k = cells.k1; k <= cells.k2; ++k) {
        for (int j = cells.j1; j <= cells.j2; ++j) {
            for (int i = cells.i1; i <= cells.i2; ++i) {
                if (a(i, j, k) != b(i, j, k)) {
                    return false;
                }
            }
        }
    }
    return true;
}

// The planes of the boundary without the rows where they meet, and these rows, by name.
std::map<std::string, CellRange> boundary_of(const GridGeometry& g) {
    struct Part {
        const char* name;
        int from, to;
    };
    std::map<std::string, CellRange> found;
    for (const Part& i : {Part{"west ", 1, 1}, {"", 2, g.nx}, {"east ", g.ni, g.ni}}) {
        for (const Part& j : {Part{"south ", 1, 1}, {"", 2, g.ny}, {"north ", g.nj, g.nj}}) {
            for (const Part& k : {Part{"ground ", 1, 1}, {"", 2, g.nz}, {"top ", g.nk, g.nk}}) {
                const std::string name = std::string(i.name) + j.name + k.name;
                if (!name.empty()) {
                    found[name] = {i.from, j.from, k.from, i.to, j.to, k.to};
                }
            }
        }
    }
    return found;
}

const std::string plain_keys = "MAXIT = 300";
const std::string fast_keys = "MAXIT = 80, ACCEL = 1";

void expect_the_same_speeds(const Solution& fast, const Solution& plain) {
    for (const double x : {-400.0, 0.0, 300.0, 600.0, 900.0}) {
        for (const double y : {-200.0, 0.0, 300.0}) {
            for (const double height : {10.0, 40.0, 150.0}) {
                const Column at = column_at(plain, x, y);
                EXPECT_NEAR(speed_at(fast, at, height) / speed_at(plain, at, height), 1, 5e-4)
                    << x << ' ' << y << ' ' << height;
            }
        }
    }
}

// The discrete equations are the same. What is between the fields is what the iterations have left
// of the residuals; that of single precision is ten times smaller than the bound.
void AcceleratedRuns::expect_the_same_field(const CaseItems& more) const {
    const Solution plain = solve(more, plain_keys);
    const Solution fast = solve(more, fast_keys);
    expect_the_same_speeds(fast, plain);
    EXPECT_NEAR(mass_imbalance(fast), 0.0, 1e-4);
}

TEST_F(AcceleratedRuns, LeadToTheFieldOfModel1) {
    expect_the_same_field({});
}
TEST_F(AcceleratedRuns, LeadToTheFieldOfModel2) {
    expect_the_same_field({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 2"}});
}
TEST_F(AcceleratedRuns, LeadToTheFieldOfModel3) {
    expect_the_same_field({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 3"}});
}
TEST_F(AcceleratedRuns, LeadToTheFieldOfModel4) {
    expect_the_same_field({{"NML_NAVIER_STOKES", "TURBULENCE_MODEL = 4, RATIO_KL = 0.3"}});
}
TEST_F(AcceleratedRuns, LeadToTheFieldUnderAWallInDenseAir) {
    expect_the_same_field(
        {{"NML_BOUNDARY_TREATMENT", "WIND_TUNNEL_MODE = 1, WIND_TUNNEL_Z0 = 0.001"},
         {"NML_NAVIER_STOKES", "DENSIT = 1.2"}});
}
TEST_F(AcceleratedRuns, LeadToTheFieldBetweenWalls) {
    expect_the_same_field(
        {{"NML_BOUNDARY_TREATMENT", "WIND_TUNNEL_MODE = 2, WIND_TUNNEL_Z0 = 0.001"}});
}
// The factors of the case are a part of the discretisation, each of its own component.
TEST_F(AcceleratedRuns, LeadToTheFieldOfTheRelaxationThatTheCaseGives) {
    expect_the_same_field({{"NML_NUMERICAL_SOLVER", "URFU = 0.6, URFV = 0.4, URFW = 0.5"}});
}
TEST_F(AcceleratedRuns, LeadToTheFieldOnOneMeshAndOnThree) {
    const Solution plain = solve({}, plain_keys);
    for (const std::string levels : {"1", "3"}) {
        const Solution fast = solve({}, fast_keys + ", ACCEL_LEVELS = " + levels);
        EXPECT_THAT(log(), HasSubstr("Accelerated iteration on " + levels +
                                     (levels == "1" ? " mesh." : " meshes.")));
        expect_the_same_speeds(fast, plain);
    }
}

// A usual criterion is met sooner.
TEST_F(AcceleratedRuns, ConvergeSooner) {
    const Solution plain = converged(hill_case());
    const Solution fast = converged(hill_case({{"NML_NUMERICAL_SOLVER", "ACCEL = 1"}}));
    EXPECT_LT(fast.outer_count, 0.7 * plain.outer_count);
}

// Eleven iterations hold a start on the coarse mesh and five cycles.
TEST_F(AcceleratedRuns, HaveTheSameBitsOnAnyNumberOfThreads) {
    const CaseItems fast{{"NML_NUMERICAL_SOLVER", "ACCEL = 1"}};
    const auto one = fields_after(11, fast, "1");
    for (const char* threads : {"2", "3", "5"}) {
        EXPECT_TRUE(fields_after(11, fast, threads) == one) << threads;
    }
}

// The boosted factors would change the field that is sought.
TEST_F(AcceleratedRuns, AreThePlainOnesUnderBoostcal) {
    const auto plain = fields_after(8, {{"NML_NUMERICAL_SOLVER", "BOOSTCAL = T"}}, "1");
    const auto asked = fields_after(8, {{"NML_NUMERICAL_SOLVER", "BOOSTCAL = T, ACCEL = 1"}}, "1");
    EXPECT_TRUE(asked == plain);
    EXPECT_THAT(log(), AllOf(HasSubstr("ACCEL"), Not(HasSubstr("Accelerated iteration"))));
    EXPECT_FALSE(fields_after(8, {{"NML_NUMERICAL_SOLVER", "ACCEL = 1"}}, "1") == plain);
}

// 24 by 17 cells: the third mesh has 6 by 4 and the fourth would have 3 by 2.
TEST_F(AcceleratedRuns, LeaveOutAMeshThatWouldBeTooSmall) {
    converged(small({{"NML_NUMERICAL_SOLVER", "ACCEL = 1, ACCEL_LEVELS = 4"}}));
    EXPECT_THAT(log(),
                HasSubstr("Accelerated iteration: mesh 4 would be too small and is left out."));
    EXPECT_THAT(log(), HasSubstr("Accelerated iteration on 3 meshes."));
}

// Which planes of the boundary are held, and which rows where planes meet, is told by the plain
// iteration: what it leaves alone to the bit, cycles leave alone.
TEST_F(AcceleratedRuns, HoldTheBoundaryThatThePlainOnesHold) {
    struct Field {
        const char* name;
        Field3 FlowState::*member;
    };
    constexpr std::array fields{Field{"u", &FlowState::u},     Field{"v", &FlowState::v},
                                Field{"w", &FlowState::w},     Field{"tke", &FlowState::tke},
                                Field{"ted", &FlowState::ted}, Field{"vis", &FlowState::vis}};
    const auto held_after = [&](int iterations, const std::string& keys) {
        write_case(small({{"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(iterations)},
                          {"NML_NUMERICAL_SOLVER", keys}}));
        std::set<std::string> held;
        const auto solve = [&](torvex::Run& run, Direction& direction) {
            const FlowState start = direction.flow;
            OUTER_ITERATION(run, direction);
            for (const auto& [place, cells] : boundary_of(direction.grid)) {
                for (const Field& field : fields) {
                    if (is_same(start.*field.member, direction.flow.*field.member, cells)) {
                        held.insert(place + field.name);
                    }
                }
            }
        };
        EXPECT_EQ(run_here({"/f", (directory.path() / "torvex.tin").string()}, solve).status, 0);
        return held;
    };
    const auto plain = held_after(9, "ACCEL = 0");
    const auto fast = held_after(9, "ACCEL = 1, ACCEL_LEVELS = 3");
    EXPECT_EQ(fast, plain);
    // These at least, so that the comparison means something.
    EXPECT_THAT(plain, ::testing::IsSupersetOf({"west u", "west tke", "west ted", "top v", "top w",
                                                "top ted", "top vis", "south v", "north v",
                                                "south ground tke"}));
}

}  // namespace
}  // namespace torvex::test
