// The search for values that are no finite numbers.

#include "results/finite_fields.hpp"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <utility>

namespace torvex {
namespace {

constexpr float inf = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

using Member = const Field3* ResultFields::*;
constexpr std::array<std::pair<const char*, Member>, 14> members{{{"u", &ResultFields::u},
                                                                  {"v", &ResultFields::v},
                                                                  {"w", &ResultFields::w},
                                                                  {"p", &ResultFields::p},
                                                                  {"tke", &ResultFields::tke},
                                                                  {"ted", &ResultFields::ted},
                                                                  {"flxU", &ResultFields::flxU},
                                                                  {"flxV", &ResultFields::flxV},
                                                                  {"flxW", &ResultFields::flxW},
                                                                  {"vis", &ResultFields::vis},
                                                                  {"pp", &ResultFields::pp},
                                                                  {"lm", &ResultFields::lm},
                                                                  {"tkl", &ResultFields::tkl},
                                                                  {"viskl", &ResultFields::viskl}}};

// Fourteen arrays of 3 by 4 by 5.
class FiniteFields : public ::testing::Test {
 protected:
    FiniteFields() {
        for (std::size_t n = 0; n < arrays.size(); ++n) {
            arrays[n].allocate(3, 4, 5, 1.0F);
            fields.*members[n].second = &arrays[n];
        }
    }
    std::array<Field3, members.size()> arrays;
    ResultFields fields{};
};

TEST_F(FiniteFields, FindsEachKindInTheCornersOfEachField) {
    for (std::size_t n = 0; n < arrays.size(); ++n) {
        for (const float value : {nan, inf, -inf}) {
            for (const auto& [i, j, k] :
                 {std::array{1, 1, 1}, std::array{3, 4, 5}, std::array{2, 3, 4}}) {
                arrays[n](i, j, k) = value;
                const auto found = first_not_finite(fields);
                ASSERT_TRUE(found) << members[n].first;
                EXPECT_EQ(found->field, members[n].first);
                EXPECT_EQ(found->i, i);
                EXPECT_EQ(found->j, j);
                EXPECT_EQ(found->k, k);
                arrays[n](i, j, k) = 1.0F;
            }
        }
    }
}

TEST_F(FiniteFields, PassesEveryFiniteNumber) {
    using Limits = std::numeric_limits<float>;
    arrays[0](1, 1, 1) = Limits::max();
    arrays[0](2, 1, 1) = Limits::max();  // whose sum is none
    arrays[0](3, 1, 1) = Limits::lowest();
    arrays[1](1, 2, 3) = Limits::denorm_min();
    arrays[2].fill(0.0F);
    EXPECT_FALSE(first_not_finite(fields));
}

TEST_F(FiniteFields, TellsTheFirstFieldAndInItTheFirstCell) {
    arrays[4](1, 1, 1) = nan;
    arrays[3](1, 2, 3) = inf;
    arrays[3](3, 1, 3) = inf;
    arrays[3](1, 1, 4) = inf;
    const auto found = first_not_finite(fields);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->field, "p");
    EXPECT_EQ(found->i, 3);
    EXPECT_EQ(found->j, 1);
    EXPECT_EQ(found->k, 3);
}

TEST_F(FiniteFields, PassesOverArraysThatAreNotThere) {
    arrays[13](3, 4, 5) = nan;
    fields.lm = nullptr;
    arrays[12].release();
    const auto found = first_not_finite(fields);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->field, "viskl");
    fields.viskl = nullptr;
    EXPECT_FALSE(first_not_finite(fields));
    EXPECT_FALSE(first_not_finite({}));
}

}  // namespace
}  // namespace torvex
