// The V(1,1) cycle of the multigrid solver, from z = 0 on every mesh:
//
//   downwards   lines of colour 0, then 1; restriction of the residual
//   coarsest    twelve times both colours
//   upwards     prolongation; lines of colour 1, then 0
//
// so that upwards mirrors downwards. The coarsest mesh has at most three columns.
//
// reads   r of the finest mesh, the coefficients
// writes  r of the coarser meshes, z of all
// ref     Briggs, Henson and McCormick (2000)
// plain   tests/solver/reference/plain_multigrid: v_cycle
//
// Each half of the cycle passes through the memory of a mesh once, see staged_rows.

#include "solver/multigrid_cycle.hpp"

#include <omp.h>

#include <algorithm>
#include <cstddef>

#include "solver/multigrid_lines.hpp"
#include "solver/multigrid_transfer.hpp"
#include "solver/staged_rows.hpp"

namespace torvex {

namespace {

constexpr int coarsest_columns = 3;
constexpr int coarsest_sweeps = 12;
// Added to 1 in the horizontal coefficients of the diagonal: it holds the level of z, which is
// free.
constexpr float shift = 1e-6F;
constexpr float coarsest_shift = 1e-5F;

LineScratch& scratch_of(MultigridMeshes& meshes, int thread) {
    return meshes.scratch[static_cast<std::size_t>(thread)];
}

void descend(MultigridMeshes& meshes, MultigridLevel& fine, MultigridLevel& coarse) {
    staged_rows(3, fine.nj, fine.shared_out(), [&](int stage, int j, int thread) {
        LineScratch& scratch = scratch_of(meshes, thread);
        switch (stage) {
            case 0:
                return solve_lines_from_zero(fine, j, scratch);
            case 1:
                return solve_lines(fine, j, 1, scratch);
            default:
                return restrict_residual(fine, j, coarse);
        }
    });
}

void prolong_and_smooth(MultigridMeshes& meshes, const MultigridLevel& coarse, MultigridLevel& fine,
                        int stage, int j, int thread) {
    LineScratch& scratch = scratch_of(meshes, thread);
    switch (stage) {
        case 0:
            return prolong(coarse, j, fine, scratch);
        case 1:
            return solve_lines(fine, j, 1, scratch);
        default:
            return solve_lines(fine, j, 0, scratch);
    }
}

void solve_coarsest(MultigridLevel& level, LineScratch& scratch) {
    for (int sweep = 0; sweep < coarsest_sweeps; ++sweep) {
        for (const int colour : {0, 1}) {
            for (int j = 1; j <= level.nj; ++j) {
                if (sweep + colour == 0) {
                    solve_lines_from_zero(level, j, scratch);
                } else {
                    solve_lines(level, j, colour, scratch);
                }
            }
        }
    }
}

}  // namespace

void MultigridMeshes::allocate(int ni, int nj, int nk) {
    level.clear();
    level.emplace_back().allocate(ni, nj, nk);
    while (level.back().ni * level.back().nj > coarsest_columns) {
        level.push_back(coarser(level.back()));
    }
    scratch.clear();
}

void set_coefficients(MultigridMeshes& meshes, const OfSlab& load) {
    std::vector<MultigridLevel>& level = meshes.level;
    const auto threads = static_cast<std::size_t>(std::max(1, omp_get_max_threads()));
    while (meshes.scratch.size() < threads) {
        meshes.scratch.emplace_back().allocate(level.front());
    }
    for (std::size_t l = 0; l < level.size(); ++l) {
        MultigridLevel& fine = level[l];
        const bool coarsest = l + 1 == level.size();
        staged_rows(3, fine.nj, fine.shared_out(), [&](int stage, int j, int thread) {
            if (stage == 0 && l == 0) {
                load(j);
            } else if (stage == 1) {
                line_pivots(fine, j, coarsest ? coarsest_shift : shift, scratch_of(meshes, thread));
            } else if (stage == 2 && !coarsest && (j % 2 == 0 || j == fine.nj)) {
                coarsen_faces(fine, j, level[l + 1]);
            }
        });
    }
}

void v_cycle(MultigridMeshes& meshes, const OfSlab& finish) {
    std::vector<MultigridLevel>& level = meshes.level;
    for (std::size_t l = 0; l + 1 < level.size(); ++l) {
        descend(meshes, level[l], level[l + 1]);
    }
    solve_coarsest(level.back(), meshes.scratch.front());
    for (std::size_t l = level.size() - 1; l > 1; --l) {
        MultigridLevel& fine = level[l - 1];
        staged_rows(3, fine.nj, fine.shared_out(), [&](int stage, int j, int thread) {
            prolong_and_smooth(meshes, level[l], fine, stage, j, thread);
        });
    }
    MultigridLevel& finest = level.front();
    if (level.size() == 1) {
        for (int j = 1; j <= finest.nj; ++j) {
            finish(j);
        }
        return;
    }
    staged_rows(4, finest.nj, finest.shared_out(), [&](int stage, int j, int thread) {
        if (stage < 3) {
            prolong_and_smooth(meshes, level[1], finest, stage, j, thread);
        } else {
            finish(j);
        }
    });
}

}  // namespace torvex
