#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/row.hpp"

namespace torvex {

// The area vectors of the three directions along a row of cells.
struct MetricRows {
    Row<const float> xix, xiy, xiz, etx, ety, etz, zex, zey, zez;

    // Products of two of them in cell i.
    float xi_xi(int i) const { return xix[i] * xix[i] + xiy[i] * xiy[i] + xiz[i] * xiz[i]; }
    float et_et(int i) const { return etx[i] * etx[i] + ety[i] * ety[i] + etz[i] * etz[i]; }
    float ze_ze(int i) const { return zex[i] * zex[i] + zey[i] * zey[i] + zez[i] * zez[i]; }
    float xi_et(int i) const { return xix[i] * etx[i] + xiy[i] * ety[i] + xiz[i] * etz[i]; }
    float xi_ze(int i) const { return xix[i] * zex[i] + xiy[i] * zey[i] + xiz[i] * zez[i]; }
    float et_ze(int i) const { return etx[i] * zex[i] + ety[i] * zey[i] + etz[i] * zez[i]; }
};

inline MetricRows metric_rows(const GridGeometry& g, int j, int k) {
    return {row(g.xix, j, k), row(g.xiy, j, k), row(g.xiz, j, k),
            row(g.etx, j, k), row(g.ety, j, k), row(g.etz, j, k),
            row(g.zex, j, k), row(g.zey, j, k), row(g.zez, j, k)};
}

}  // namespace torvex
