// The smoother of the multigrid solver: lines along k, solved exactly, in two colours of (i + j).
//
//   h = (ae + aw + an + as) (1 + shift)          a line is coupled to its neighbours by h
//   s(k) = h(k) + ab(k) s(k-1)/(s(k-1) + at(k-1)),      ab(k) = at(k-1), s(0) = 0
//   inv(k) = 1/(s(k) + at(k))
//   y(k) = (f(k) + ab(k) y(k-1)) inv(k)          f = r + ae z_e + aw z_w + an z_n + as z_s
//   z(k) = y(k) + at(k) inv(k) z(k+1)
//
// which is the algorithm of Thomas for the diagonal h + at + ab. Written with s the pivots are made
// of positive terms alone: in flat cells at is a million times h, and the pivots of the usual form
// would be differences of nothing but rounding. A line without neighbours has a free level; its
// last pivot is 0 and its last cell is held at 0.
//
// reads   ae, an, at; inv, r, z of slabs j-1, j, j+1
// writes  inv; z of the lines of one colour
// ref     Thomas (1949); Grassmann, Taksar and Heyman (1985) for the pivots
// plain   tests/solver/reference/plain_multigrid: solve_line
//
// A slab is solved row by row, all lines of both colours at a time; lines of the other colour are
// not stored.

#include "solver/multigrid_lines.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>

namespace torvex {

namespace {

using Lanes [[gnu::vector_size(block_cells * sizeof(std::int32_t))]] = std::int32_t;

// The lanes of every block, which begin at odd i, that hold a colour of slab j.
Lanes lanes_of(int j, int colour) {
    const Lanes odd_i = {-1, 0, -1, 0, -1, 0, -1, 0};
    return (1 + j) % 2 == colour ? odd_i : ~odd_i;
}

// y of row k from f and from y of the row below it, which is a pitch before.
template <class RightSide>
void eliminate(const MultigridLevel& level, int j, float* slab, const RightSide& f_of_row) {
    const int pitch = level.pitch;
    for (int k = 1; k <= level.nk; ++k) {
        const auto f = f_of_row(k);
        const float* ab = line_row(level.at, j, k - 1);
        const float* inv = line_row(level.inv, j, k);
        float* y = slab + static_cast<std::ptrdiff_t>(k - 1) * pitch;
        const float* below = y - pitch;
        for_blocks(pitch, [=](int m) {
            const Block known = load<Block>(ab + m) * load<Block>(below + m);
            store(y + m, (f(m) + known) * load<Block>(inv + m));
        });
    }
}

// z from y; `others` is what the lines of the other colour keep.
template <class Others>
void substitute(MultigridLevel& level, int j, Lanes own, const float* slab, const Others& others) {
    const int pitch = level.pitch;
    for (int k = level.nk; k >= 1; --k) {
        const float* at = line_row(level.at, j, k);
        const float* inv = line_row(level.inv, j, k);
        const float* y = slab + static_cast<std::ptrdiff_t>(k - 1) * pitch;
        float* z = line_row(level.z, j, k);
        const float* above = z + pitch;
        for_blocks(pitch, [=](int m) {
            const Block x = load<Block>(y + m) +
                            load<Block>(at + m) * load<Block>(inv + m) * load<Block>(above + m);
            store(z + m, own ? x : others(z + m));
        });
    }
}

}  // namespace

void line_pivots(MultigridLevel& level, int j, float shift, LineScratch& scratch) {
    const int pitch = level.pitch;
    const float factor = 1.0F + shift;
    constexpr float least = 2.0F * std::numeric_limits<float>::min();
    for (int k = 1; k <= level.nk; ++k) {
        const float* ae = line_row(level.ae, j, k);
        const float* an = line_row(level.an, j, k);
        const float* as = line_row(level.an, j - 1, k);
        const float* at = line_row(level.at, j, k);
        const float* ab = at - pitch;
        float* inv = line_row(level.inv, j, k);
        const float* inv_below = inv - pitch;
        float* s = scratch.slab() + static_cast<std::ptrdiff_t>(k - 1) * pitch;
        const float* s_below = s - pitch;
        for_blocks(pitch, [=](int m) {
            const Block h = (load<Block>(ae + m) + load<Block>(ae + m - 1) + load<Block>(an + m) +
                             load<Block>(as + m)) *
                            factor;
            const Block excess =
                h + load<Block>(ab + m) * (load<Block>(s_below + m) * load<Block>(inv_below + m));
            const Block pivot = excess + load<Block>(at + m);
            store(s + m, excess);
            store(inv + m, pivot > least ? 1.0F / pivot : Block{});
        });
    }
}

void solve_lines(MultigridLevel& level, int j, int colour, LineScratch& scratch) {
    eliminate(level, j, scratch.slab(), [&](int k) {
        const float* r = line_row(level.r, j, k);
        const float* ae = line_row(level.ae, j, k);
        const float* an = line_row(level.an, j, k);
        const float* as = line_row(level.an, j - 1, k);
        const float* z = line_row(level.z, j, k);
        const float* north = line_row(level.z, j + 1, k);
        const float* south = line_row(level.z, j - 1, k);
        return [=](int m) {
            return load<Block>(r + m) + load<Block>(ae + m) * load<Block>(z + m + 1) +
                   load<Block>(ae + m - 1) * load<Block>(z + m - 1) +
                   load<Block>(an + m) * load<Block>(north + m) +
                   load<Block>(as + m) * load<Block>(south + m);
        };
    });
    substitute(level, j, lanes_of(j, colour), scratch.slab(),
               [](const float* z) { return load<Block>(z); });
}

void solve_lines_from_zero(MultigridLevel& level, int j, LineScratch& scratch) {
    eliminate(level, j, scratch.slab(), [&](int k) {
        const float* r = line_row(level.r, j, k);
        return [=](int m) { return load<Block>(r + m); };
    });
    substitute(level, j, lanes_of(j, 0), scratch.slab(),
               [](const float* /*z*/) { return Block{}; });
}

}  // namespace torvex
