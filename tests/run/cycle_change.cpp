#include "run/cycle_change.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "run/outer_iteration.hpp"
#include "run/run_fixture.hpp"
#include "solver/accelerated/accelerated_iteration.hpp"
#include "solver/accelerated/coarse_cycle.hpp"
#include "solver/accelerated/coarse_level.hpp"
#include "solver/flow_fields.hpp"

namespace torvex::test {

namespace {

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

std::vector<std::string> fields_that_differ(const FlowState& one, const FlowState& other) {
    std::vector<std::string> found;
    for (const FlowField& field : flow_fields) {
        const Field3& a = one.*field.member;
        const Field3& b = other.*field.member;
        if (field.kept != Kept::no && a.size() > 0 &&
            std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) != 0) {
            found.emplace_back(field.name);
        }
    }
    return found;
}

}  // namespace

std::map<std::string, double> change_by_cycle(const std::vector<std::string>& arguments,
                                              int settling) {
    std::map<std::string, double> found;
    const auto solve = [&](torvex::Run& run, Direction& direction) {
        AcceleratedWork work;
        OUTER_ITERATION(run, direction, [&](const SolverContext& c, int iter, int interval) {
            StepReport report;
            accelerated_iteration(c, work, {}, Coarse::nothing, iter % interval == 0);
            if (iter == settling) {
                work.coarser = make_coarse_level(c);
                EXPECT_TRUE(work.coarser);
                const FlowState before = c.flow;
                const Cycling one{.coarse_iterations = 1, .gain = 1.0F};
                coarse_cycle(c, work, one);
                found = changes(before, c.flow, c.grid);
            }
            return report;
        });
    };
    const RunHere ran = run_here(arguments, solve);
    EXPECT_EQ(ran.status, 0) << ran.err;
    return found;
}

std::vector<std::string> fields_that_remember(const std::vector<std::string>& arguments,
                                              int iterations) {
    std::vector<std::string> found{"no cycle was made"};
    const auto solve = [&](torvex::Run& run, Direction& direction) {
        AcceleratedWork work;
        const Cycling cycling{};
        OUTER_ITERATION(run, direction, [&](const SolverContext& c, int iter, int interval) {
            if (iter == 1) {
                work.coarser = make_coarse_level(c);
            }
            accelerated_iteration(c, work, cycling, coarse_at(cycling, iter - 1),
                                  iter % interval == 0);
            if (iter == iterations) {
                const FlowState before = c.flow;
                coarse_cycle(c, work, cycling);
                const FlowState on_the_old = c.flow;
                c.flow = before;
                AcceleratedWork anew;
                anew.coarser = make_coarse_level(c);
                coarse_cycle(c, anew, cycling);
                found = fields_that_differ(on_the_old, c.flow);
            }
            return StepReport{};
        });
    };
    const RunHere ran = run_here(arguments, solve);
    EXPECT_EQ(ran.status, 0) << ran.err;
    return found;
}

void expect_fixed_point(const std::map<std::string, double>& changes) {
    EXPECT_FALSE(changes.empty());
    for (const auto& [name, change] : changes) {
        EXPECT_LT(change, 2e-4) << name;
    }
}

}  // namespace torvex::test
