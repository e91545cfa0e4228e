#pragma once

#include <cstdint>
#include <vector>

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

// A system with all arrays of the bounds ni, nj, nk: neighbour coefficients 0, ap 1, su, sp, res 0.
LinearSystem empty_system(int ni, int nj, int nk);

// The interior of arrays with the bounds ni, nj, nk.
CellRange interior(int ni, int nj, int nk);

// Coefficients and sources of both signs spread over a decade, ap the sum of the neighbours times
// `dominance`, boundary cells included. `seed` chooses the numbers.
LinearSystem random_system(int ni, int nj, int nk, float dominance, std::uint32_t seed);
Field3 random_field(int ni, int nj, int nk, std::uint32_t seed);

// Diffusion with unit coefficients plus upwind convection (cx, cy, cz), the boundary indices
// holding prescribed values, and the source that makes `exact` the solution.
LinearSystem transport_system(const Field3& exact, float cx, float cy, float cz);

// The same diffusion without any flux through the boundary: singular, the sources add up to 0.
LinearSystem neumann_system(const Field3& exact);

// A smooth field of order 1.
Field3 smooth_field(int ni, int nj, int nk);

// The solution over `cells` by Gaussian elimination in double precision, with the values of phi
// beside the range as they stand.
Field3 direct_solution(const CellRange& cells, const LinearSystem& eq, const Field3& phi);

// Largest |a - b| in a range, and largest |a|.
double largest_difference(const CellRange& cells, const Field3& a, const Field3& b);
double largest(const CellRange& cells, const Field3& a);

// Whether two fields hold the same bits.
bool same_bits(const Field3& a, const Field3& b);
// Whether they do outside a range.
bool same_outside(const CellRange& cells, const Field3& a, const Field3& b);

template <class Visit>
void for_cells(const CellRange& c, const Visit& visit) {
    for (int k = c.k1; k <= c.k2; ++k) {
        for (int j = c.j1; j <= c.j2; ++j) {
            for (int i = c.i1; i <= c.i2; ++i) {
                visit(i, j, k);
            }
        }
    }
}

}  // namespace torvex
