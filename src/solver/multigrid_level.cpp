#include "solver/multigrid_level.hpp"

#include <cstddef>
#include <cstdint>

namespace torvex {

namespace {

// Two blocks make one block of the next mesh, and at least one zero stands behind the last cell.
int pitch_of(int cells) {
    constexpr int width = 2 * block_cells;
    return (cells / width + 1) * width;
}

}  // namespace

void MultigridLevel::allocate(int cells_i, int cells_j, int cells_k) {
    ni = cells_i;
    nj = cells_j;
    nk = cells_k;
    pitch = pitch_of(ni);
    for (Field3* x : {&ae, &an, &at, &inv, &r, &z}) {
        allocate(*x);
    }
}

// Below, the threads would wait for each other as long as they work.
bool MultigridLevel::shared_out() const {
    constexpr std::int64_t least = 16384;
    return std::int64_t{ni} * nj * nk >= least;
}

void LineScratch::allocate(const MultigridLevel& finest) {
    const auto pitch = static_cast<std::size_t>(finest.pitch);
    before_ = finest.pitch;
    slab_.assign(pitch * static_cast<std::size_t>(finest.nk + 1), 0.0F);
    row_.assign(pitch + 2 * block_cells, 0.0F);
}

}  // namespace torvex
