#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "base/field.hpp"
#include "base/fixed_array.hpp"
#include "base/line1.hpp"

namespace torvex {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

TEST(FixedArray, CountsFromOne) {
    FixedArray<int, 4> list{7, 8};
    EXPECT_EQ(list.size(), 4);
    EXPECT_EQ(list(1), 7);
    EXPECT_EQ(list(2), 8);
    EXPECT_EQ(list(3), 0);
    list(4) = 9;
    EXPECT_THAT(list.span(), ElementsAre(7, 8, 0, 9));
    list.fill(5);
    EXPECT_THAT(std::as_const(list).span(), Each(5));
}

TEST(FixedArray, IsZeroUnlessGivenAndComparesByValue) {
    const Triple none;
    EXPECT_THAT(none.span(), ElementsAre(0.0F, 0.0F, 0.0F));
    const Triple angle{34, 30, 15.5F};
    const Triple copy(angle);
    EXPECT_EQ(angle, copy);
    EXPECT_NE(angle, none);
}

TEST(Line1, CountsFromOne) {
    Line1 line(3, 0.5F);
    EXPECT_EQ(line.size(), 3);
    line(1) = 1;
    line(3) = 3;
    EXPECT_THAT(line.values(), ElementsAre(1.0F, 0.5F, 3.0F));
    EXPECT_EQ(std::as_const(line)(3), 3.0F);
    EXPECT_EQ(Line1().size(), 0);
}

TEST(Array3, CountsFromOneWithIFastest) {
    Array3<int> a(3, 4, 5);
    EXPECT_EQ(a.ni(), 3);
    EXPECT_EQ(a.nj(), 4);
    EXPECT_EQ(a.nk(), 5);
    ASSERT_EQ(a.size(), 60U);
    a(1, 1, 1) = 1;
    a(2, 1, 1) = 2;
    a(1, 2, 1) = 3;
    a(1, 1, 2) = 4;
    a(3, 4, 5) = 5;
    EXPECT_EQ(a.data()[0], 1);
    EXPECT_EQ(a.data()[1], 2);
    EXPECT_EQ(a.data()[3], 3);
    EXPECT_EQ(a.data()[12], 4);
    EXPECT_EQ(a.data()[59], 5);
    EXPECT_EQ(std::as_const(a)(3, 4, 5), 5);
}

TEST(Array3, StartsOnACacheLineAndWithItsValue) {
    const Field3 field(5, 3, 2, 1.5F);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(field.data()) % 64, 0U);
    for (std::size_t n = 0; n < field.size(); ++n) {
        EXPECT_EQ(field.data()[n], 1.5F);
    }
}

TEST(Array3, AllocatesAnewAndForgets) {
    Field3 field(2, 2, 2, 1);
    field.allocate(4, 1, 2, 3);  // the same size in another shape
    EXPECT_EQ(field.ni(), 4);
    EXPECT_EQ(field(4, 1, 2), 3.0F);
    EXPECT_EQ(field(1, 1, 1), 3.0F);
    field.allocate(3, 3, 3);
    EXPECT_EQ(field(3, 3, 3), 0.0F);
    field.fill(2);
    EXPECT_EQ(field(3, 1, 2), 2.0F);
    field.release();
    EXPECT_EQ(field.size(), 0U);
    EXPECT_EQ(field.nk(), 0);
    field.allocate(0, 5, 5);
    EXPECT_EQ(field.size(), 0U);
}

TEST(Array3, CopiesAreDeepAndMovesLeaveNothing) {
    Field3 a(2, 3, 4, 1);
    Field3 b(a);
    b(1, 1, 1) = 9;
    EXPECT_EQ(a(1, 1, 1), 1.0F);
    a = b;
    EXPECT_EQ(a(1, 1, 1), 9.0F);
    const Field3& same = a;
    a = same;
    EXPECT_EQ(a(1, 1, 1), 9.0F);

    const float* const storage = a.data();
    Field3 c(std::move(a));
    EXPECT_EQ(c.data(), storage);
    Field3 d(1, 1, 1);
    d = std::move(c);
    EXPECT_EQ(d.data(), storage);
    EXPECT_EQ(d.nk(), 4);
    a = Field3();
    EXPECT_EQ(a.size(), 0U);
}

TEST(Array2, CountsFromOneWithIFastest) {
    Field2 a(3, 2, 1);
    a(2, 1) = 2;
    a(1, 2) = 3;
    EXPECT_EQ(a.data()[1], 2.0F);
    EXPECT_EQ(a.data()[3], 3.0F);
    EXPECT_EQ(std::as_const(a)(1, 2), 3.0F);
    EXPECT_EQ(a.size(), 6U);
    EXPECT_EQ(a.ni(), 3);
    EXPECT_EQ(a.nj(), 2);
    a.fill(4);
    EXPECT_EQ(a(3, 2), 4.0F);
    a.allocate(1, 1);
    EXPECT_EQ(a(1, 1), 0.0F);
    a.release();
    EXPECT_EQ(a.size(), 0U);
}

#ifdef TORVEX_CHECKS

TEST(IndexChecksDeathTest, FixedArrayDiesOutsideItsBounds) {
    FixedArray<int, 4> list;
    EXPECT_DEATH(list(0), "index outside a fixed list");
    EXPECT_DEATH(list(5), "index outside a fixed list");
    EXPECT_DEATH((FixedArray<int, 1>{1, 2}), "too many values");
}

TEST(IndexChecksDeathTest, Line1DiesOutsideItsBounds) {
    Line1 line(3);
    EXPECT_DEATH(line(0), "index outside a line");
    EXPECT_DEATH(line(4), "index outside a line");
    EXPECT_DEATH(Line1()(1), "index outside a line");
}

TEST(IndexChecksDeathTest, Array3DiesOutsideEachBound) {
    Field3 field(2, 3, 4);
    EXPECT_DEATH(field(0, 1, 1), "index outside an array");
    EXPECT_DEATH(field(3, 1, 1), "index outside an array");
    EXPECT_DEATH(field(1, 0, 1), "index outside an array");
    EXPECT_DEATH(field(1, 4, 1), "index outside an array");
    EXPECT_DEATH(field(1, 1, 0), "index outside an array");
    EXPECT_DEATH(field(1, 1, 5), "index outside an array");
    EXPECT_DEATH(Field3(-1, 1, 1), "negative extent");
    EXPECT_DEATH(Field2(2, 2)(3, 1), "index outside an array");
}

#endif

}  // namespace
}  // namespace torvex
