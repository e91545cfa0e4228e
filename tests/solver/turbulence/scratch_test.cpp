// Room that is kept from one direction to the next fits the mesh at hand.

#include <gtest/gtest.h>

#include "mesh/test_meshes.hpp"
#include "solver/turbulence/transport_scratch.hpp"

namespace torvex {
namespace {

TEST(TransportScratchRoom, FollowsTheMesh) {
    TransportScratch scratch;
    for (const auto& [nx, ny] : {std::pair{4, 5}, std::pair{6, 5}, std::pair{6, 3}}) {
        const GridGeometry g = uniform_mesh({nx, ny, 3}, 1, 1, 1);
        fit(scratch, g);
        fit_columns(scratch, g);
        EXPECT_EQ(scratch.column_sum.ni(), g.ni);
        EXPECT_EQ(scratch.column_sum.nj(), g.nj);
        EXPECT_EQ(scratch.column_moment.ni(), g.ni);
        EXPECT_EQ(scratch.column_moment.nj(), g.nj);
        ASSERT_FALSE(scratch.threads.empty());
        for (const PlaneScratch& room : scratch.threads) {
            EXPECT_EQ(room.rows.ni(), g.ni);
            EXPECT_EQ(room.cross_bottom.ni(), g.ni);
            EXPECT_EQ(room.cross_bottom.nj(), g.nj);
            EXPECT_EQ(room.level.ni(), g.nx);
            EXPECT_EQ(room.node.nj(), g.ny);
        }
    }
}

TEST(TransportScratchRoom, StaysWhereTheMeshDoes) {
    TransportScratch scratch;
    const GridGeometry g = uniform_mesh({4, 5, 3}, 1, 1, 1);
    fit_columns(scratch, g);
    scratch.column_sum(2, 2) = 7;
    fit_columns(scratch, g);
    EXPECT_EQ(scratch.column_sum(2, 2), 7);
}

}  // namespace
}  // namespace torvex
