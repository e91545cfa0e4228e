#include "solver/accelerated/flux_transfers.hpp"

namespace torvex {

namespace {

int cells_in(const CoarseLine& line, int cell) {
    return line.last(cell) - line.first(cell) + 1;
}

// One plane k of the coarse mesh.
void sum_plane(const Coarsening& by, const GridGeometry& g, const FlowState& fine,
               const FluxFields& to, int k) {
    for (int J = 1; J <= g.ny; ++J) {
        const int node_j = by.j.node[CoarseLine::at(J)];
        for (int I = 1; I <= g.nx; ++I) {
            const int node_i = by.i.node[CoarseLine::at(I)];
            float east = 0;
            float north = 0;
            float top = 0;
            if (J > 1 && k > 1) {
                for (int j = by.j.first(J); j <= by.j.last(J); ++j) {
                    east += fine.flxU(node_i, j, k);
                }
                to.east(I, J, k) = east;
            }
            if (I > 1 && k > 1) {
                for (int i = by.i.first(I); i <= by.i.last(I); ++i) {
                    north += fine.flxV(i, node_j, k);
                }
                to.north(I, J, k) = north;
            }
            if (I > 1 && J > 1) {
                for (int j = by.j.first(J); j <= by.j.last(J); ++j) {
                    for (int i = by.i.first(I); i <= by.i.last(I); ++i) {
                        top += fine.flxW(i, j, k);
                    }
                }
                to.top(I, J, k) = top;
            }
        }
    }
}

void share_east(const Coarsening& by, const Field3& now, const Field3& before, float gain,
                Field3& fine, int J, int k) {
    const float share = gain / static_cast<float>(cells_in(by.j, J));
    const int nodes = by.i.node[CoarseLine::at(by.i.nodes)];
    for (int j = by.j.first(J); j <= by.j.last(J); ++j) {
        for (int i = 1; i <= nodes; ++i) {
            const int I = by.i.below[CoarseLine::at(i)];
            const float t = by.i.part[CoarseLine::at(i)];
            const float low = now(I, J, k) - before(I, J, k);
            const float high = now(I + 1, J, k) - before(I + 1, J, k);
            fine(i, j, k) += share * ((1.0F - t) * low + t * high);
        }
    }
}

void share_north(const Coarsening& by, const Field3& now, const Field3& before, float gain,
                 Field3& fine, int j, int k) {
    const int J = by.j.below[CoarseLine::at(j)];
    const float t = by.j.part[CoarseLine::at(j)];
    for (int I = 2; I <= by.i.nodes; ++I) {
        const float share = gain / static_cast<float>(cells_in(by.i, I));
        const float low = now(I, J, k) - before(I, J, k);
        const float high = now(I, J + 1, k) - before(I, J + 1, k);
        const float change = share * ((1.0F - t) * low + t * high);
        for (int i = by.i.first(I); i <= by.i.last(I); ++i) {
            fine(i, j, k) += change;
        }
    }
}

void share_top(const Coarsening& by, const Field3& now, const Field3& before, float gain,
               Field3& fine, int J, int k) {
    for (int I = 2; I <= by.i.nodes; ++I) {
        const int cells = cells_in(by.i, I) * cells_in(by.j, J);
        const float change = gain / static_cast<float>(cells) * (now(I, J, k) - before(I, J, k));
        for (int j = by.j.first(J); j <= by.j.last(J); ++j) {
            for (int i = by.i.first(I); i <= by.i.last(I); ++i) {
                fine(i, j, k) += change;
            }
        }
    }
}

}  // namespace

void restrict_fluxes(const Coarsening& by, const GridGeometry& coarse, const FlowState& fine,
                     const FluxFields& to) {
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= coarse.nz; ++k) {
        sum_plane(by, coarse, fine, to, k);
    }
}

void prolong_fluxes(const Coarsening& by, const GridGeometry& coarse, const FlowState& now,
                    const FlowState& before, float gain, FlowState& fine) {
    const int fine_ny = by.j.node[CoarseLine::at(by.j.nodes)];
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= coarse.nz; ++k) {
        for (int J = 2; J <= coarse.ny; ++J) {
            if (k > 1) {
                share_east(by, now.flxU, before.flxU, gain, fine.flxU, J, k);
            }
            share_top(by, now.flxW, before.flxW, gain, fine.flxW, J, k);
        }
        for (int j = 1; j <= fine_ny && k > 1; ++j) {
            share_north(by, now.flxV, before.flxV, gain, fine.flxV, j, k);
        }
    }
}

}  // namespace torvex
