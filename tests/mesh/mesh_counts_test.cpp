#include "mesh/mesh_counts.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "mesh_cases.hpp"

namespace torvex {
namespace {

using test::stop_of;

constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();

TEST(MeshCounts, MustBeNumberedBy32Bits) {
    // 2147483647 is prime; 2147483646 = 2 * 3^2 * 7 * 11 * 31 * 151 * 331.
    EXPECT_EQ(stop_of([] { check_mesh_counts(2147483647, 1, 1, endless); }).code(), -1);
    EXPECT_EQ(stop_of([] { check_mesh_counts(2 * 9 * 7 * 11, 31 * 151, 331, endless); }).code(),
              -1);
    const Stop stop = stop_of([] { check_mesh_counts(2048, 1024, 1024, endless); });
    EXPECT_EQ(stop.code(), 1);
    EXPECT_NE(stop.reason().find("2048 x 1024 x 1024"), std::string::npos);
    // 2^62 times 2^31 would wrap round to 0 in 64 bits.
    EXPECT_EQ(stop_of([] { check_mesh_counts(1 << 30, 1 << 30, 1 << 30, endless); }).code(), 1);
    EXPECT_EQ(stop_of([] { check_mesh_counts(40002, 40002, 5001, endless); }).code(), 1);
}

TEST(MeshCounts, MustFitIntoTheMemory) {
    const std::int64_t gigabyte = 1000000000;
    EXPECT_EQ(stop_of([&] { check_mesh_counts(100, 100, 100, gigabyte); }).code(), -1);
    EXPECT_EQ(stop_of([&] { check_mesh_counts(1000, 100, 100, gigabyte); }).code(), 1);
    EXPECT_EQ(stop_of([&] { check_mesh_counts(1000, 100, 100, gigabyte, "n.txt"); }).where(),
              "n.txt");
    EXPECT_GT(machine_memory(), 100000000);
}

}  // namespace
}  // namespace torvex
