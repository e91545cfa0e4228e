// What passes between two meshes of the multigrid solver. A coarse cell is an aggregate of two by
// two columns, or of one at the end of an odd row.
//
//   coefficients   per line of fine cells across a coarse face the resistances in series between
//   the
//                  middles of the two aggregates,
//                     1/(0.5/a_before + 1/a_face + 0.5/a_behind)
//                  a half for an aggregate of two cells along the line and none for one of one; the
//                  lines of a coarse face are parallel, and so are the top faces: sums
//   restriction    sums of the residual, so that what is to be balanced stays
//   prolongation   linear, 3/4 of the own aggregate and 1/4 of the neighbour, in i and j; constant
//                  from the last middle to the boundary and in an aggregate of one cell
//
// reads   ae, an, at, z of the fine mesh, z of the coarse one
// writes  ae, an, at, r of the coarse mesh, z of the fine one
// ref     Patankar (1980) for conductances in series; Briggs, Henson and McCormick (2000)
// plain   tests/solver/reference/plain_multigrid
//
// Coefficients by resistances instead of sums alone follow a contrast of coefficients across a
// face. Zeros behind the last cell of a row make the coefficients there 0 by themselves.

#include "solver/multigrid_transfer.hpp"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace torvex {

namespace {

// a_face over 1 + the resistances of the halves relative to that of the face. A coefficient of 0
// stands for a resistance that is very large; the floor keeps 0/0 and overflow away.
[[gnu::always_inline]] inline float in_series(float half_before, float before, float face,
                                              float half_behind, float behind) {
    constexpr float least = std::numeric_limits<float>::min();
    constexpr float smallest_ratio = 1e-12F;
    const float floor = smallest_ratio * face > least ? smallest_ratio * face : least;
    const float lower = before > floor ? before : floor;
    const float upper = behind > floor ? behind : floor;
    return face / (1.0F + half_before * face / lower + half_behind * face / upper);
}

// Across i, one line of fine cells.
void add_east(const MultigridLevel& fine, int j, int k, float* coarse) {
    const float* a = line_row(fine.ae, j, k);
    const int pairs = fine.pitch / 2 - 1;
    const int wholes = fine.ni / 2 - 1;  // the next aggregate has two cells
#pragma omp simd
    for (int c = 0; c < pairs; ++c) {
        const float half = c < wholes ? 0.5F : 0.0F;
        coarse[c] += in_series(0.5F, a[2 * c], a[2 * c + 1], half, a[2 * c + 2]);
    }
}

// Across j, all lines of a row; j is the last slab of its pair.
void add_north(const MultigridLevel& fine, int j, int k, float* coarse) {
    const float* before = line_row(fine.an, j - 1, k);
    const float* face = line_row(fine.an, j, k);
    const float* behind = line_row(fine.an, j + 1, k);
    const float half = j + 2 <= fine.nj ? 0.5F : 0.0F;
    const int pairs = fine.pitch / 2;
#pragma omp simd
    for (int c = 0; c < pairs; ++c) {
        const int w = 2 * c;
        const int e = w + 1;
        coarse[c] = in_series(0.5F, before[w], face[w], half, behind[w]) +
                    in_series(0.5F, before[e], face[e], half, behind[e]);
    }
}

void add_top(const MultigridLevel& fine, int j, int k, float* coarse) {
    const float* a = line_row(fine.at, j, k);
    const int pairs = fine.pitch / 2;
#pragma omp simd
    for (int c = 0; c < pairs; ++c) {
        coarse[c] += a[2 * c] + a[2 * c + 1];
    }
}

int first_of_pair(int j) {
    return j - (1 - j % 2);
}

}  // namespace

MultigridLevel coarser(const MultigridLevel& fine) {
    MultigridLevel coarse;
    coarse.allocate((fine.ni + 1) / 2, (fine.nj + 1) / 2, fine.nk);
    return coarse;
}

void coarsen_faces(const MultigridLevel& fine, int j, MultigridLevel& coarse) {
    const int J = (j + 1) / 2;
    for (int k = 1; k <= fine.nk; ++k) {
        float* ae = line_row(coarse.ae, J, k);
        float* at = line_row(coarse.at, J, k);
        std::fill_n(ae, coarse.pitch, 0.0F);
        std::fill_n(at, coarse.pitch, 0.0F);
        for (int row = first_of_pair(j); row <= j; ++row) {
            add_east(fine, row, k, ae);
            add_top(fine, row, k, at);
        }
        if (j < fine.nj) {
            add_north(fine, j, k, line_row(coarse.an, J, k));
        }
    }
}

// The lines of colour 1 balance exactly, those of colour 0 did when their neighbours were 0: what
// is left of the residual is what the neighbours brought since. Of two cells of a row one is of
// colour 0.
void restrict_residual(const MultigridLevel& fine, int j, MultigridLevel& coarse) {
    const bool is_first = j % 2 == 1;
    // Colour 0 has (i + j) even; blocks begin at odd i.
    const bool odd_i = j % 2 == 1;
    for (int k = 1; k <= fine.nk; ++k) {
        const float* ae = line_row(fine.ae, j, k);
        const float* an = line_row(fine.an, j, k);
        const float* as = line_row(fine.an, j - 1, k);
        const float* z = line_row(fine.z, j, k);
        const float* north = line_row(fine.z, j + 1, k);
        const float* south = line_row(fine.z, j - 1, k);
        float* r = line_row(coarse.r, (j + 1) / 2, k);
        const auto residual = [=](int m) {
            return load<Block>(ae + m) * load<Block>(z + m + 1) +
                   load<Block>(ae + m - 1) * load<Block>(z + m - 1) +
                   load<Block>(an + m) * load<Block>(north + m) +
                   load<Block>(as + m) * load<Block>(south + m);
        };
        for_blocks(fine.pitch / 2, [=](int m) {
            const Block a = residual(2 * m);
            const Block b = residual(2 * m + block_cells);
            const Block own = odd_i ? __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14)
                                    : __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15);
            store(r + m, is_first ? own : load<Block>(r + m) + own);
        });
    }
}

void prolong(const MultigridLevel& coarse, int j, MultigridLevel& fine, LineScratch& scratch) {
    const int J = (j + 1) / 2;
    const bool is_first = j % 2 == 1;
    const bool alone = is_first && j == fine.nj;
    const int beside = std::clamp(alone ? J : (is_first ? J - 1 : J + 1), 1, coarse.nj);
    const bool last_alone = fine.ni % 2 == 1;
    float* t = scratch.row();
    for (int k = 1; k <= fine.nk; ++k) {
        const float* own = line_row(coarse.z, J, k);
        const float* next = line_row(coarse.z, beside, k);
        for_blocks(fine.pitch / 2, [=](int m) {
            store(t + m, 0.75F * load<Block>(own + m) + 0.25F * load<Block>(next + m));
        });
        t[-1] = t[0];
        t[coarse.ni] = t[coarse.ni - 1];
        float* z = line_row(fine.z, j, k);
        const float of_last = z[fine.ni - 1] + t[coarse.ni - 1];
        for_blocks(fine.pitch / 2, [=](int m) {
            const Block c = 0.75F * load<Block>(t + m);
            const Block left = c + 0.25F * load<Block>(t + m - 1);
            const Block right = c + 0.25F * load<Block>(t + m + 1);
            float* x = z + static_cast<std::ptrdiff_t>(2) * m;
            store(x,
                  load<Block>(x) + __builtin_shufflevector(left, right, 0, 8, 1, 9, 2, 10, 3, 11));
            store(x + block_cells,
                  load<Block>(x + block_cells) +
                      __builtin_shufflevector(left, right, 4, 12, 5, 13, 6, 14, 7, 15));
        });
        if (last_alone) {
            z[fine.ni - 1] = of_last;
        }
    }
}

}  // namespace torvex
