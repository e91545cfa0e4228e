// The steps together, from the parent's files to vpkeinp.tuf of the child.

#include "nest/nest_bc_set.hpp"

#include <gmock/gmock.h>

#include "nest/nest_balance.hpp"
#include "nest/parent_files.hpp"

namespace torvex {
namespace {

using test::NestCase;
using test::ParentFiles;

void set_quietly(NestCase& c, const ParentFiles& files) {
    ::testing::internal::CaptureStdout();
    nest_bc_set(c.pass(), files.stem, "nest-" + files.stem, c.flow);
    ::testing::internal::GetCapturedStdout();
}

TEST(NestBcSet, UniformParentGivesAUniformBalancedChild) {
    NestCase c;
    c.parent.flow.u.fill(7.0F);
    c.parent.flow.v.fill(-1.0F);
    c.parent.flow.tke.fill(0.5F);
    c.parent.flow.ted.fill(0.05F);
    const ParentFiles files(c);
    set_quietly(c, files);
    const GridGeometry& g = c.child;
    test::for_boundary_columns(g, [&](int i, int j) {
        for (int k = 2; k <= g.nk; ++k) {
            EXPECT_NEAR(c.flow.u(i, j, k), 7.0F, 7.0e-6F);
            EXPECT_NEAR(c.flow.v(i, j, k), -1.0F, 1.0e-6F);
            EXPECT_EQ(c.flow.w(i, j, k), 0.0F);
        }
    });
    const NestBalance b = nest_balance(g, c.flow);
    EXPECT_LT(std::fabs(b.surplus()) / b.inflow, 1.0e-6);
}

TEST(NestBcSet, StoresTheStartOfTheChild) {
    NestCase c;
    c.parent.flow.u.fill(7.0F);
    c.parent.flow.tke.fill(0.5F);
    c.parent.flow.ted.fill(0.05F);
    c.flow.u.fill(2.5F);
    const ParentFiles files(c);
    set_quietly(c, files);
    const GridGeometry& g = c.child;
    FlowState stored;
    allocate(stored, start_fields, g.ni, g.nj, g.nk);
    ASSERT_TRUE(read_vpkeinp("nest-restart-270_0-vpkeinp.tuf", stored));
    EXPECT_EQ(stored.u(3, 3, 3), 2.5F);
    EXPECT_EQ(stored.u(1, 3, 3), c.flow.u(1, 3, 3));
    EXPECT_EQ(stored.u(g.ni, 4, 5), c.flow.u(g.ni, 4, 5));
    EXPECT_EQ(stored.ted(2, 1, 3), c.flow.ted(2, 1, 3));
}

}  // namespace
}  // namespace torvex
