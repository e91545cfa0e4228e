// Fluxes between a mesh and the next coarser one: no cell gains or loses by the transfer.

#include "solver/accelerated/flux_transfers.hpp"

#include <gtest/gtest.h>

#include "solver/fields.hpp"
#include "solver/flow_fields.hpp"

namespace torvex::test {
namespace {

// What a cell loses.
double loss(const FlowState& s, int i, int j, int k) {
    const auto x = [](float flux) { return static_cast<double>(flux); };
    return x(s.flxU(i, j, k)) - x(s.flxU(i - 1, j, k)) + x(s.flxV(i, j, k)) -
           x(s.flxV(i, j - 1, k)) + x(s.flxW(i, j, k)) - x(s.flxW(i, j, k - 1));
}

// Seven cells by six, so that the last coarse one along i is three wide.
class FluxTransfers : public ::testing::Test {
 protected:
    FluxTransfers() {
        make_coarse_mesh(fine_grid, by, grid);
        fine = random_fluxes(fine_grid, 1);
        before = random_fluxes(grid, 10);
        now = random_fluxes(grid, 20);
    }
    static FlowState random_fluxes(const GridGeometry& g, unsigned seed) {
        FlowState s;
        s.flxU = random_field(g, -3, 6, seed);
        s.flxV = random_field(g, -3, 3, seed + 1);
        s.flxW = random_field(g, -2, 2, seed + 2);
        return s;
    }
    template <class Cell>
    void for_coarse_cells(const Cell& cell) const {
        for (int k = 2; k <= grid.nz; ++k) {
            for (int J = 2; J <= grid.ny; ++J) {
                for (int I = 2; I <= grid.nx; ++I) {
                    cell(I, J, k);
                }
            }
        }
    }
    template <class Cell>
    void for_fine_cells_of(int I, int J, const Cell& cell) const {
        for (int j = by.j.first(J); j <= by.j.last(J); ++j) {
            for (int i = by.i.first(I); i <= by.i.last(I); ++i) {
                cell(i, j);
            }
        }
    }
    int cells_in(int I, int J) const {
        return (by.i.last(I) - by.i.first(I) + 1) * (by.j.last(J) - by.j.first(J) + 1);
    }

    GridGeometry fine_grid = with_metrics(uniform_mesh({8, 7, 5}, 1, 1, 1));
    Coarsening by{coarse_line(8), coarse_line(7)};
    GridGeometry grid;
    FlowState fine, before, now;
};

TEST_F(FluxTransfers, CoarseCellLosesWhatItsFineCellsLose) {
    FlowState coarse = random_fluxes(grid, 30);
    restrict_fluxes(by, grid, fine, fluxes_of(coarse));
    for_coarse_cells([&](int I, int J, int k) {
        double sum = 0;
        for_fine_cells_of(I, J, [&](int i, int j) { sum += loss(fine, i, j, k); });
        EXPECT_NEAR(loss(coarse, I, J, k), sum, 1e-4) << I << ' ' << J << ' ' << k;
    });
}

TEST_F(FluxTransfers, FineCellsShareWhatTheirCoarseCellLosesMore) {
    const FlowState old = fine;
    constexpr float gain = 1.2F;
    prolong_fluxes(by, grid, now, before, gain, fine);
    for_coarse_cells([&](int I, int J, int k) {
        const double more = loss(now, I, J, k) - loss(before, I, J, k);
        for_fine_cells_of(I, J, [&](int i, int j) {
            EXPECT_NEAR(loss(fine, i, j, k) - loss(old, i, j, k),
                        static_cast<double>(gain) * more / cells_in(I, J), 1e-5)
                << i << ' ' << j << ' ' << k;
        });
    });
}

// Down and up again: the fine faces in a coarse face carry together what that does.
TEST_F(FluxTransfers, ChangeOfACoarseFaceComesBackWhole) {
    FlowState carried;
    carried.flxU.allocate(fine_grid.ni, fine_grid.nj, fine_grid.nk);
    carried.flxV = carried.flxW = carried.flxU;
    prolong_fluxes(by, grid, now, before, 1.0F, carried);
    FlowState back = random_fluxes(grid, 40);
    restrict_fluxes(by, grid, carried, fluxes_of(back));
    for_coarse_cells([&](int I, int J, int k) {
        EXPECT_NEAR(back.flxU(I, J, k), now.flxU(I, J, k) - before.flxU(I, J, k), 1e-5);
        EXPECT_NEAR(back.flxV(I, J, k), now.flxV(I, J, k) - before.flxV(I, J, k), 1e-5);
        EXPECT_NEAR(back.flxW(I, J, k), now.flxW(I, J, k) - before.flxW(I, J, k), 1e-5);
    });
}

TEST_F(FluxTransfers, EvenChangeIsSharedEvenly) {
    now = before;
    for (std::size_t n = 0; n < now.flxU.size(); ++n) {
        before.flxU.data()[n] = before.flxV.data()[n] = before.flxW.data()[n] = 1.0F;
        now.flxU.data()[n] = now.flxV.data()[n] = now.flxW.data()[n] = 13.0F;
    }
    fine.flxU.fill(0);
    fine.flxV.fill(0);
    fine.flxW.fill(0);
    prolong_fluxes(by, grid, now, before, 1.0F, fine);
    for_coarse_cells([&](int I, int J, int k) {
        const int wide = by.i.last(I) - by.i.first(I) + 1;
        const int deep = by.j.last(J) - by.j.first(J) + 1;
        for_fine_cells_of(I, J, [&](int i, int j) {
            EXPECT_FLOAT_EQ(fine.flxU(i, j, k), 12.0F / static_cast<float>(deep));
            EXPECT_FLOAT_EQ(fine.flxV(i, j, k), 12.0F / static_cast<float>(wide));
            EXPECT_FLOAT_EQ(fine.flxW(i, j, k), 12.0F / static_cast<float>(wide * deep));
        });
    });
}

}  // namespace
}  // namespace torvex::test
