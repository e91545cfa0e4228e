#include "base/list_input.hpp"

#include <gtest/gtest.h>

namespace torvex {
namespace {
TEST(ListInput, Smoke) {
    ListInput in("1 2.5, 3*7\n");
    float a = 0, b = 0, c = 0;
    ASSERT_TRUE(in.read(a, b, c));
    EXPECT_EQ(c, 7.0F);
}
}  // namespace
}  // namespace torvex
