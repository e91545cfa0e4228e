// What an accelerated direction does when it goes wrong: the set for steep ground, then the plain
// iteration, which is that of ACCEL = 0 to the bit.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>

#include "run/outer_iteration.hpp"
#include "run/whole_case.hpp"

namespace torvex::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

// A hand in the iterations, in front of each.
using Meddle = std::function<void(Direction& direction, const SolverContext& c, int iter)>;

// As if no residual of the stage were a good one: the next look at them finds a rise.
void spoil(Direction& direction) {
    direction.acceleration.course.smallest = 1e-30F;
}

class FallBack : public WholeCase {
 protected:
    FallBack() { write_ground(cosine_hill(100, 500)); }

    static CaseItems small(const CaseItems& more) {
        CaseItems items{{"NML_CASEFILE", "WE_LENGTH = 1000, NS_LENGTH = 800, MIN_DXY = 100"},
                        {"NML_CASEFILE", "MIN_DXY_RAD = 400, MIN_DZ = 8, MESH_VRATIO = 1.4"},
                        {"NML_NUMERICAL_SOLVER", "ACCEL = 1"}};
        items.insert(items.end(), more.begin(), more.end());
        return hill_case(items);
    }
    static CaseItems with_maxit(int n, CaseItems items) {
        items.push_back({"NML_NUMERICAL_SOLVER", "MAXIT = " + std::to_string(n)});
        return items;
    }
    RunHere run_meddled(const CaseItems& items, const Meddle& meddle) const {
        write_case(small(items));
        const auto solve = [&](torvex::Run& run, Direction& direction) {
            const OuterStep step = outer_step_of(run.settings, direction);
            OUTER_ITERATION(run, direction, [&](const SolverContext& c, int iter, int interval) {
                meddle(direction, c, iter);
                return step(c, iter, interval);
            });
        };
        RunHere ran = run_here({"/f", (directory.path() / "torvex.tin").string()}, solve);
        EXPECT_EQ(ran.status, 0) << ran.err;
        return ran;
    }
    void expect_finite(const Solution& s) const {
        for (const Field3* field : {&s.flow.u, &s.flow.v, &s.flow.w, &s.flow.p, &s.flow.tke}) {
            for (std::size_t n = 0; n < field->size(); ++n) {
                ASSERT_TRUE(std::isfinite(field->data()[n]));
            }
        }
    }
};

// The fields that a result file holds, behind its header.
bool same_fields(const Solution& a, const Solution& b) {
    for (const auto field : {&FlowState::u, &FlowState::v, &FlowState::w, &FlowState::p,
                             &FlowState::tke, &FlowState::ted, &FlowState::vis, &FlowState::flxU,
                             &FlowState::flxV, &FlowState::flxW, &FlowState::pp}) {
        const Field3& x = a.flow.*field;
        const Field3& y = b.flow.*field;
        if (x.size() == 0 || x.size() != y.size() ||
            std::memcmp(x.data(), y.data(), x.size() * sizeof(float)) != 0) {
            return false;
        }
    }
    return true;
}

// Spoiled in iteration 7 (six behind it) and from 20 on, looked at in front of a cycle, each second
// iteration of a stage: the robust set begins at 7, the plain iteration at 21 or 20.
TEST_F(FallBack, EndsInThePlainIterationToTheBit) {
    for (const std::string more : {"TURBULENCE_MODEL = 1", "TURBULENCE_MODEL = 2",
                                   "TURBULENCE_MODEL = 4, RATIO_KL = 0.3, DENSIT = 1.2"}) {
        SCOPED_TRACE(more);
        const CaseItems items{{"NML_NAVIER_STOKES", more}};
        int begun = 0;
        const RunHere ran =
            run_meddled(with_maxit(32, items), [&](Direction& d, const SolverContext&, int iter) {
                if (iter == 7 || iter >= 20) {
                    spoil(d);
                }
                begun = d.acceleration.begun;
            });
        ASSERT_TRUE(begun == 19 || begun == 20) << begun;
        EXPECT_THAT(log(), HasSubstr("it. 7 begins anew with the set for steep ground.\n"));
        EXPECT_THAT(log(), HasSubstr("it. " + std::to_string(begun + 1) +
                                     " begins anew with the keys of the case.\n"));
        EXPECT_THAT(log(), HasSubstr("; iterated without acceleration: 270.0; torvex.log"));
        EXPECT_THAT(ran.err, HasSubstr("; iterated without acceleration: 270.0; torvex.log"));
        const Solution fallen = stored();
        EXPECT_EQ(fallen.outer_count, 32);

        CaseItems plain = items;
        plain.push_back({"NML_NUMERICAL_SOLVER", "ACCEL = 0"});
        write_case(small(with_maxit(32 - begun, plain)));
        ASSERT_EQ(run().status, 0);
        EXPECT_TRUE(same_fields(stored(), fallen));
    }
}

// A stage of the plain iteration is gone on with as such, and its own count with it.
TEST_F(FallBack, PlainIterationIsResumedAsSuch) {
    run_meddled(with_maxit(26, {}), [](Direction& d, const SolverContext&, int iter) {
        if (iter == 7 || iter >= 20) {
            spoil(d);
        }
    });
    write_case(small(with_maxit(6, {{"NML_RUN", "RESTART_FLAG = 1"}})));
    ASSERT_EQ(run().status, 0);
    EXPECT_THAT(log(), Not(HasSubstr("Nothing is known")));
    const Solution resumed = stored();
    EXPECT_EQ(resumed.outer_count, 32);
    run_meddled(with_maxit(32, {}), [](Direction& d, const SolverContext&, int iter) {
        if (iter == 7 || iter >= 20) {
            spoil(d);
        }
    });
    EXPECT_TRUE(same_fields(stored(), resumed));
}

TEST_F(FallBack, RobustSetIsNamedAtTheEnd) {
    const RunHere ran =
        run_meddled(with_maxit(30, {}), [](Direction& d, const SolverContext&, int iter) {
            if (iter == 7) {
                spoil(d);
            }
        });
    EXPECT_THAT(ran.err, AllOf(HasSubstr("; accelerated with the set for steep ground: 270.0;"),
                               Not(HasSubstr("without acceleration"))));
    const Solution robust = stored();
    EXPECT_NEAR(mass_imbalance(robust), 0.0, 1e-2);
}

// Fields that are no numbers: a cycle is taken back, then a stage begins from the start, then the
// next one. No direction is lost by it.
TEST_F(FallBack, FieldsThatAreNoNumbersAreNotTheEnd) {
    for (const int times : {1, 2, 3}) {
        SCOPED_TRACE(times);
        int left = times;
        run_meddled(with_maxit(60, {}), [&](Direction&, const SolverContext& c, int iter) {
            if (iter >= 9 && left > 0) {
                c.flow.u(5, 5, 5) = std::numeric_limits<float>::quiet_NaN();
                --left;
            }
        });
        EXPECT_EQ(left, 0);
        EXPECT_THAT(log(), Not(HasSubstr("Diverged")));
        expect_finite(stored());
        EXPECT_NEAR(mass_imbalance(stored()), 0.0, 1e-2);
    }
}

// Behind a resume there are no fields from in front of the last cycle: the resumed ones take their
// place.
TEST_F(FallBack, CycleOfAnEarlierRunIsTakenBackToItsResult) {
    write_case(small(with_maxit(10, {})));
    ASSERT_EQ(run().status, 0);
    bool first = true;
    run_meddled(with_maxit(20, {{"NML_RUN", "RESTART_FLAG = 1"}}),
                [&](Direction& d, const SolverContext&, int) {
                    if (first) {
                        d.acceleration.before_cycle = 1e-9F;
                        first = false;
                    }
                });
    EXPECT_THAT(log(), HasSubstr("a cycle is undone, the next are weaker."));
    EXPECT_THAT(log(), Not(HasSubstr("begins anew")));
    const Solution s = stored();
    EXPECT_GT(value_above(s, s.flow.u, column_at(s, 0, 0), 100), 5.0) << "there is a wind";
    EXPECT_NEAR(mass_imbalance(s), 0.0, 1e-2);
}

// 300 m high, 223 m from its middle at half of that, and at its steepest 96 %.
TEST_F(FallBack, SteepHillIsNotTheEnd) {
    write_ground([](double x, double y) {
        return 300 * std::exp(-std::log(2.0) * (x * x + y * y) / (223.0 * 223.0));
    });
    write_case(hill_case({{"NML_NUMERICAL_SOLVER", "ACCEL = 1, MAXIT = 150"}}));
    const ProgramRun ran = run();
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(log(), Not(HasSubstr("Diverged")));
    expect_finite(stored());
    EXPECT_NEAR(mass_imbalance(stored()), 0.0, 1e-3);
}

}  // namespace
}  // namespace torvex::test
