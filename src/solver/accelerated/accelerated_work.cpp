#include "solver/accelerated/accelerated_work.hpp"

#include "solver/accelerated/coarse_level.hpp"

namespace torvex {

// Here, where the next level is a whole type.
AcceleratedWork::AcceleratedWork() = default;
AcceleratedWork::~AcceleratedWork() = default;
AcceleratedWork::AcceleratedWork(AcceleratedWork&&) noexcept = default;
AcceleratedWork& AcceleratedWork::operator=(AcceleratedWork&&) noexcept = default;

void fit(AcceleratedWork& work, const GridGeometry& g) {
    if (work.rap.ni() == g.ni && work.rap.nj() == g.nj && work.rap.nk() == g.nk) {
        return;
    }
    for (Field3* field : {&work.su_u, &work.su_v, &work.su_w, &work.rap}) {
        field->allocate(g.ni, g.nj, g.nk);
    }
}

}  // namespace torvex
