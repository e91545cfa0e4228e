// XYZ2XYZC: the cell centres, plain means of node coordinates without weights.
//
//   interior cells     0.125 * sum of the eight corner nodes
//   boundary planes    0.25 * sum of the four nodes of the boundary face
//   block edges        0.5 * sum of the two nodes of the edge piece
//   block corners      the node
//
// reads   nx..nk, xn, yn, zn
// writes  xc, yc, zc in 1..ni, 1..nj, 1..nk [m]

#include "mesh/cell_geometry.hpp"

#include "base/assertion.hpp"
#include "mesh/cell_nodes.hpp"

namespace torvex {

namespace {

template <class Mean>
void fill_run(Field3& centre, const RowPart& run, int j, int k, NodePair jn, NodePair kn,
              Mean mean) {
#pragma omp simd
    for (int i = run.first; i <= run.last; ++i) {
        centre(i, j, k) = mean(run.cell(i, j, k, jn, kn));
    }
}

void fill_row(const Field3& node, Field3& centre, int j, int k) {
    const int nx = node.ni();
    const NodePair jn = node_pair(j, node.nj());
    const NodePair kn = node_pair(k, node.nk());
    const auto face_i = [&node](const CellNodes& c) {
        return face_mean<Axis::i>(node, c.in.hi, c);
    };
    const auto face_j = [&node](const CellNodes& c) {
        return face_mean<Axis::j>(node, c.jn.hi, c);
    };
    const auto face_k = [&node](const CellNodes& c) {
        return face_mean<Axis::k>(node, c.kn.hi, c);
    };
    const auto inside = [&node](const CellNodes& c) { return cell_mean(node, c); };

    // On an edge or a corner the node planes of the face are doubled as well, which leaves the mean
    // of the two nodes or the node.
    fill_run(centre, RowPart::low_end(), j, k, jn, kn, face_i);
    fill_run(centre, RowPart::high_end(nx), j, k, jn, kn, face_i);
    if (jn.lo == jn.hi) {
        fill_run(centre, RowPart::inner(nx), j, k, jn, kn, face_j);
    } else if (kn.lo == kn.hi) {
        fill_run(centre, RowPart::inner(nx), j, k, jn, kn, face_k);
    } else {
        fill_run(centre, RowPart::inner(nx), j, k, jn, kn, inside);
    }
}

}  // namespace

void XYZ2XYZC(GridGeometry& g) {
    require(g.nx >= 2 && g.ny >= 2 && g.nz >= 2, "a mesh needs a cell along each axis");
    require(g.ni == g.nx + 1 && g.nj == g.ny + 1 && g.nk == g.nz + 1, "cell counts of the mesh");
    for (Field3* centre : {&g.xc, &g.yc, &g.zc}) {
        centre->allocate(g.ni, g.nj, g.nk);
    }
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            fill_row(g.xn, g.xc, j, k);
            fill_row(g.yn, g.yc, j, k);
            fill_row(g.zn, g.zc, j, k);
        }
    }
}

}  // namespace torvex
