#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/field.hpp"
#include "solver/accelerated/coarsening.hpp"
#include "solver/constants.hpp"
#include "solver/linear_system.hpp"

// How fields go between a mesh and the next coarser one. Indices of the fine mesh are i, j, those
// of the coarse one I, J; both share k.
namespace torvex {

// value(i, j, k) summed over the fine cells of each coarse cell of a range, told to put(I, J, k,
// sum, cells). The range may take in the planes on the boundary, whose coarse cells hold the fine
// ones on the same plane.
template <class Value, class Put>
void restrict_cells(const Coarsening& by, const CellRange& coarse, const Value& value,
                    const Put& put) {
    const int i1 = by.i.first(coarse.i1);
    const int i2 = by.i.last(coarse.i2);
#pragma omp parallel
    {
        std::vector<float> along(CoarseLine::at(i2 + 1));
        float* const sum = along.data();
#pragma omp for schedule(static)
        for (int k = coarse.k1; k <= coarse.k2; ++k) {
            for (int J = coarse.j1; J <= coarse.j2; ++J) {
                const int j1 = by.j.first(J);
                const int j2 = by.j.last(J);
#pragma omp simd
                for (int i = i1; i <= i2; ++i) {
                    sum[i] = value(i, j1, k);
                }
                for (int j = j1 + 1; j <= j2; ++j) {
#pragma omp simd
                    for (int i = i1; i <= i2; ++i) {
                        sum[i] += value(i, j, k);
                    }
                }
                for (int I = coarse.i1; I <= coarse.i2; ++I) {
                    const int a = by.i.first(I);
                    const int b = by.i.last(I);
                    float all = sum[a];
                    for (int i = a + 1; i <= b; ++i) {
                        all += sum[i];
                    }
                    put(I, J, k, all, (b - a + 1) * (j2 - j1 + 1));
                }
            }
        }
    }
}

// Mean over the fine cells.
inline void restrict_mean(const Coarsening& by, const CellRange& coarse, const Field3& fine,
                          Field3& to) {
    restrict_cells(
        by, coarse, [&](int i, int j, int k) { return fine(i, j, k); },
        [&](int I, int J, int k, float sum, int cells) {
            to(I, J, k) = sum / static_cast<float>(cells);
        });
}

// Mean of the logarithm, for what spans decades. Values at or below 0, which no logarithm has,
// count as TINY. Of two values it is the root of their product, which no logarithm is needed for.
inline float log_mean(float a, float b) {
    return std::sqrt(a * b);
}
inline float log_mean(float a, float b, float c) {
    return std::exp((std::log(a) + std::log(b) + std::log(c)) / 3.0F);
}

inline void restrict_log_mean(const Coarsening& by, const CellRange& coarse, const Field3& fine,
                              Field3& to) {
    const int i1 = by.i.first(coarse.i1);
    const int i2 = by.i.last(coarse.i2);
#pragma omp parallel
    {
        std::vector<float> along(CoarseLine::at(i2 + 1));
        float* const mean = along.data();
        const auto value = [&](int i, int j, int k) {
            const float x = fine(i, j, k);
            return x < TINY ? TINY : x;
        };
#pragma omp for schedule(static)
        for (int k = coarse.k1; k <= coarse.k2; ++k) {
            for (int J = coarse.j1; J <= coarse.j2; ++J) {
                const int j = by.j.first(J);
                const int rows = by.j.last(J) - j + 1;
                if (rows == 1) {
                    for (int i = i1; i <= i2; ++i) {
                        mean[i] = value(i, j, k);
                    }
                } else if (rows == 2) {
#pragma omp simd
                    for (int i = i1; i <= i2; ++i) {
                        mean[i] = log_mean(value(i, j, k), value(i, j + 1, k));
                    }
                } else {
                    for (int i = i1; i <= i2; ++i) {
                        mean[i] = log_mean(value(i, j, k), value(i, j + 1, k), value(i, j + 2, k));
                    }
                }
                for (int I = coarse.i1; I <= coarse.i2; ++I) {
                    const int i = by.i.first(I);
                    const int cells = by.i.last(I) - i + 1;
                    to(I, J, k) = cells == 1   ? mean[i]
                                  : cells == 2 ? log_mean(mean[i], mean[i + 1])
                                               : log_mean(mean[i], mean[i + 1], mean[i + 2]);
                }
            }
        }
    }
}

// take(i, j, k, change) in the fine cells of a range: from(I, J, k), told in the interior, bilinear
// between the coarse cells of a plane and constant behind the last ones. Cells of the range that
// stand on the boundary take the change of the cell beside them; nz is the last interior k.
template <class From, class Take>
void prolong(const Coarsening& by, const CellRange& fine, int nz, const From& from,
             const Take& take) {
    const int last = by.i.nodes;  // of the coarse cells
#pragma omp parallel
    {
        std::vector<float> along(CoarseLine::at(last + 2));
        float* const between_rows = along.data();
#pragma omp for schedule(static)
        for (int k = fine.k1; k <= fine.k2; ++k) {
            const int kc = std::clamp(k, 2, nz);
            for (int j = fine.j1; j <= fine.j2; ++j) {
                const int J = by.j.low[CoarseLine::at(j)];
                const int north = std::min(J + 1, by.j.nodes);
                const float t = by.j.weight[CoarseLine::at(j)];
#pragma omp simd
                for (int I = 2; I <= last; ++I) {
                    between_rows[I] = (1.0F - t) * from(I, J, kc) + t * from(I, north, kc);
                }
                between_rows[last + 1] = between_rows[last];
                const int* low = by.i.low.data();
                const float* weight = by.i.weight.data();
#pragma omp simd
                for (int i = fine.i1; i <= fine.i2; ++i) {
                    const float w = weight[i];
                    take(i, j, k, (1.0F - w) * between_rows[low[i]] + w * between_rows[low[i] + 1]);
                }
            }
        }
    }
}

}  // namespace torvex
