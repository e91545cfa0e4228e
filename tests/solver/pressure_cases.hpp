#pragma once

#include <omp.h>

#include <cstring>
#include <vector>

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"
#include "mesh/test_meshes.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// A mesh with its metrics and a state with all its fields, for the tests of the pressure
// correction.
struct PressureCase {
    GridGeometry g;
    FlowState s;
};

// Fluid at rest: density `den`, p = 0, and the pressure-gradient coefficients of momentum equations
// that all have the central coefficient `ap`: metric components over ap inside, 0 on the boundary.
PressureCase resting_case(GridGeometry mesh, float den = 1.0F, float ap = 2.0F);

// The same with every field drawn at random: u, v, w, p between -1 and 1 on the boundary too,
// central coefficients between 1 and 3, densities between 0.8 and 1.2.
PressureCase random_case(GridGeometry mesh, unsigned seed);

// A hill mesh whose nodes are shaken by about a fifth of a cell.
GridGeometry shaken_hill(Planes n, unsigned seed);

// Fills x with numbers between low and high, the same on every machine.
void fill_random(Field3& x, double low, double high, unsigned seed);

// Velocity (u, v, w) in every cell and on every boundary.
void set_velocity(FlowState& s, float u, float v, float w);

// All elements of a field, for comparison bit for bit.
inline std::vector<unsigned> bits(const Field3& x) {
    std::vector<unsigned> all(x.size());
    static_assert(sizeof(unsigned) == sizeof(float));
    std::memcpy(all.data(), x.data(), x.size() * sizeof(float));
    return all;
}

// Runs `step` with n threads.
template <class Step>
void with_threads(int n, Step step) {
    const int before = omp_get_max_threads();
    omp_set_num_threads(n);
    step();
    omp_set_num_threads(before);
}

// Calls action(i, j, k) for every cell of a range with inclusive bounds.
template <class Action>
void for_cells(Planes low, Planes high, Action action) {
    for (int k = low.nz; k <= high.nz; ++k) {
        for (int j = low.ny; j <= high.ny; ++j) {
            for (int i = low.nx; i <= high.nx; ++i) {
                action(i, j, k);
            }
        }
    }
}

template <class Action>
void for_interior(const GridGeometry& g, Action action) {
    for_cells({2, 2, 2}, {g.nx, g.ny, g.nz}, action);
}

template <class Action>
void for_all(const GridGeometry& g, Action action) {
    for_cells({1, 1, 1}, {g.ni, g.nj, g.nk}, action);
}

}  // namespace torvex
