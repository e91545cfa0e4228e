// The search for values that are no finite numbers.

#include "results/finite_fields.hpp"

#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "solver/flow_fields.hpp"

namespace torvex {
namespace {

constexpr float inf = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

// The kept fields, of 3 by 4 by 5.
class FiniteFields : public ::testing::Test {
 protected:
    FiniteFields() {
        for (const FlowField& field : kept_fields) {
            (flow.*field.member).allocate(3, 4, 5, 1.0F);
        }
    }
    FlowState flow;
};

TEST_F(FiniteFields, FindsEachKindInTheCornersOfEachField) {
    for (const FlowField& field : kept_fields) {
        Field3& array = flow.*field.member;
        for (const float value : {nan, inf, -inf}) {
            for (const auto& [i, j, k] :
                 {std::array{1, 1, 1}, std::array{3, 4, 5}, std::array{2, 3, 4}}) {
                array(i, j, k) = value;
                const auto found = first_not_finite(flow);
                ASSERT_TRUE(found) << field.name;
                EXPECT_EQ(found->field, field.name);
                EXPECT_EQ(found->i, i);
                EXPECT_EQ(found->j, j);
                EXPECT_EQ(found->k, k);
                array(i, j, k) = 1.0F;
            }
        }
    }
}

TEST_F(FiniteFields, PassesEveryFiniteNumber) {
    using Limits = std::numeric_limits<float>;
    flow.u(1, 1, 1) = Limits::max();
    flow.u(2, 1, 1) = Limits::max();  // whose sum is none
    flow.u(3, 1, 1) = Limits::lowest();
    flow.v(1, 2, 3) = Limits::denorm_min();
    flow.w.fill(0.0F);
    EXPECT_FALSE(first_not_finite(flow));
}

TEST_F(FiniteFields, TellsTheFirstFieldAndInItTheFirstCell) {
    flow.tke(1, 1, 1) = nan;
    flow.p(1, 2, 3) = inf;
    flow.p(3, 1, 3) = inf;
    flow.p(1, 1, 4) = inf;
    const auto found = first_not_finite(flow);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->field, "p");
    EXPECT_EQ(found->i, 3);
    EXPECT_EQ(found->j, 1);
    EXPECT_EQ(found->k, 3);
}

TEST_F(FiniteFields, PassesOverFieldsWithoutRoomAndScratch) {
    flow.viskl(3, 4, 5) = nan;
    flow.lm.release();
    flow.tkl.release();
    const auto found = first_not_finite(flow);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->field, "viskl");
    flow.viskl.release();
    flow.gen.allocate(3, 4, 5, nan);
    EXPECT_FALSE(first_not_finite(flow));
    EXPECT_FALSE(first_not_finite({}));
}

}  // namespace
}  // namespace torvex
