// Every second node line, and the mesh that they make.

#include "solver/accelerated/coarsening.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "mesh/test_meshes.hpp"

namespace torvex {
namespace {

// Place of the centre of a coarse cell, counted in fine cells.
double centre(const CoarseLine& line, int cell) {
    const int inside = std::min(cell, line.nodes);  // behind the last one its value holds
    return 0.5 * (line.first(inside) + line.last(inside));
}

class Lines : public ::testing::TestWithParam<int> {
 protected:
    int nodes = GetParam();
    CoarseLine line = coarse_line(nodes);
};

TEST_P(Lines, CoarseCellsTakeTheFineOnesInTurn) {
    int next = 2;
    for (int cell = 2; cell <= line.nodes; ++cell) {
        EXPECT_EQ(line.first(cell), next);
        const int width = line.last(cell) - line.first(cell) + 1;
        const int cells = nodes - 1;
        const bool last = cell == line.nodes;
        EXPECT_EQ(width, cells == 1 ? 1 : (last && cells % 2 == 1 ? 3 : 2)) << cell;
        next = line.last(cell) + 1;
    }
    EXPECT_EQ(next, nodes + 1);
}

TEST_P(Lines, PlanesOnTheBoundaryAreCellsOfTheirOwn) {
    EXPECT_EQ(line.first(1), 1);
    EXPECT_EQ(line.last(1), 1);
    EXPECT_EQ(line.first(line.nodes + 1), nodes + 1);
    EXPECT_EQ(line.last(line.nodes + 1), nodes + 1);
}

// What is linear in the index stays so; outside the centres the nearest value holds.
TEST_P(Lines, WeightsInterpolateBetweenTheCentres) {
    for (int n = 1; n <= nodes + 1; ++n) {
        const int low = line.low[CoarseLine::at(n)];
        const auto w = static_cast<double>(line.weight[CoarseLine::at(n)]);
        ASSERT_GE(low, 2);
        ASSERT_LE(low, line.nodes);
        const int beside = std::clamp(n, 2, nodes);
        const double expected =
            std::clamp(static_cast<double>(beside), centre(line, 2), centre(line, line.nodes));
        EXPECT_NEAR((1 - w) * centre(line, low) + w * centre(line, low + 1), expected, 1e-6) << n;
    }
}

TEST_P(Lines, PartsTellWhereAFineNodeLineLies) {
    for (int n = 1; n <= nodes; ++n) {
        const int below = line.below[CoarseLine::at(n)];
        const auto t = static_cast<double>(line.part[CoarseLine::at(n)]);
        ASSERT_GE(below, 1);
        ASSERT_LT(below, line.nodes);
        EXPECT_NEAR(
            (1 - t) * line.node[CoarseLine::at(below)] + t * line.node[CoarseLine::at(below + 1)],
            n, 1e-6);
        EXPECT_GE(t, 0);
        EXPECT_LE(t, 1);
    }
}

INSTANTIATE_TEST_SUITE_P(OfTwoToTwelveNodes, Lines, ::testing::Range(2, 13));

// On straight lines a coarse cell is the union of its fine ones.
TEST(CoarseMesh, CellsHoldTheVolumeOfTheirFineCells) {
    const GridGeometry fine = with_metrics(stretched_mesh({8, 9, 5}, {10, 20, 2}, {1.2, 0.9, 1.4}));
    const Coarsening by{coarse_line(fine.nx), coarse_line(fine.ny)};
    GridGeometry coarse;
    make_coarse_mesh(fine, by, coarse);
    ASSERT_EQ(coarse.nx, 4);
    ASSERT_EQ(coarse.ny, 5);
    ASSERT_EQ(coarse.nz, fine.nz);
    for (int k = 2; k <= coarse.nz; ++k) {
        for (int J = 2; J <= coarse.ny; ++J) {
            for (int I = 2; I <= coarse.nx; ++I) {
                double sum = 0;
                for (int j = by.j.first(J); j <= by.j.last(J); ++j) {
                    for (int i = by.i.first(I); i <= by.i.last(I); ++i) {
                        sum += static_cast<double>(fine.vol(i, j, k));
                    }
                }
                EXPECT_NEAR(static_cast<double>(coarse.vol(I, J, k)) / sum, 1, 1e-5);
            }
        }
    }
}

TEST(CoarseMesh, HasTheOuterNodesOfTheFineOne) {
    const GridGeometry fine = with_metrics(hill_mesh({8, 7, 5}));
    const Coarsening by{coarse_line(fine.nx), coarse_line(fine.ny)};
    GridGeometry coarse;
    make_coarse_mesh(fine, by, coarse);
    for (int k = 1; k <= fine.nz; ++k) {
        EXPECT_EQ(coarse.zn(1, 1, k), fine.zn(1, 1, k));
        EXPECT_EQ(coarse.xn(coarse.nx, 2, k), fine.xn(fine.nx, 3, k));
        EXPECT_EQ(coarse.yn(2, coarse.ny, k), fine.yn(3, fine.ny, k));
    }
}

}  // namespace
}  // namespace torvex
