// GRID: volumes, metric terms and interpolation factors of a general hexahedral mesh.
//
// With a, b, c the vectors that join the centres of opposite faces of a cell along i, j, k:
//
//   (xix, xiy, xiz) = b x c     (etx, ety, etz) = c x a     (zex, zey, zez) = a x b
//   vol = a . (b x c)
//
// On a boundary plane the cell has no thickness: the vector across the plane joins the centre of
// the boundary face and that of the interior cell beside it, in the sense of rising index, and the
// other two join the midpoints of opposite edges of the boundary face. vol is the same determinant
// there, half the neighbouring cell on a uniform mesh: the wall terms read it as that half cell.
//
// The factor of the face between C(i) and C(i+1), with F the mean of the nodes the two cells share
// (four inside, two on a boundary plane, one on a block edge), is a ratio of two distances and no
// projection:
//
//   fx = |F - C(i)| / |C(i+1) - C(i)|,   X at the face = X(i) + fx * (X(i+1) - X(i))
//
// reads   nx..nk, xn, yn, zn, xc, yc, zc
// writes  vol [m3], xix..zez [m2] inside and on the six boundary planes, zero on the twelve edges
//         fx in 1..nx, 1..nj, 1..nk; fy in 1..ni, 1..ny, 1..nk; fz in 1..ni, 1..nj, 1..nz [-]
// All in single precision.

#include "mesh/grid.hpp"

#include "base/assertion.hpp"
#include "mesh/cell_nodes.hpp"

namespace torvex {

namespace {

// The axis along which the cells of a loop have no thickness.
enum class Flat { none, i, j, k };

// The vector along axis A between the centres of opposite faces. A cell that is flat along A has
// one node plane n there, the face between the centres n and n + 1 on either side of the block
// alike.
template <Axis A, bool is_flat>
[[gnu::always_inline]] inline Vec3 across(const GridGeometry& g, const CellNodes& c) {
    const NodePair n = c.pair<A>();
    if constexpr (is_flat) {
        return centre<A>(g, n.hi + 1, c) - centre<A>(g, n.hi, c);
    } else {
        return face_centre<A>(g, n.hi, c) - face_centre<A>(g, n.lo, c);
    }
}

template <Flat flat>
[[gnu::always_inline]] inline void fill_metric_cell(GridGeometry& g, CellNodes cell) {
    const Vec3 a = across<Axis::i, flat == Flat::i>(g, cell);
    const Vec3 b = across<Axis::j, flat == Flat::j>(g, cell);
    const Vec3 c = across<Axis::k, flat == Flat::k>(g, cell);
    const Vec3 xi = cross(b, c);
    const Vec3 et = cross(c, a);
    const Vec3 ze = cross(a, b);
    const auto [i, j, k, in, jn, kn] = cell;
    g.xix(i, j, k) = xi.x;
    g.xiy(i, j, k) = xi.y;
    g.xiz(i, j, k) = xi.z;
    g.etx(i, j, k) = et.x;
    g.ety(i, j, k) = et.y;
    g.etz(i, j, k) = et.z;
    g.zex(i, j, k) = ze.x;
    g.zey(i, j, k) = ze.y;
    g.zez(i, j, k) = ze.z;
    g.vol(i, j, k) = dot(a, xi);
}

template <Flat flat>
void fill_metric(GridGeometry& g, const RowPart& run, int j, int k) {
    const NodePair jn = node_pair(j, g.ny);
    const NodePair kn = node_pair(k, g.nz);
#pragma omp simd
    for (int i = run.first; i <= run.last; ++i) {
        fill_metric_cell<flat>(g, run.cell(i, j, k, jn, kn));
    }
}

void metric(GridGeometry& g) {
    const RowPart inner = RowPart::inner(g.nx);
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= g.nk; ++k) {
        const bool k_flat = k == 1 || k == g.nk;
        for (int j = 1; j <= g.nj; ++j) {
            const bool j_flat = j == 1 || j == g.nj;
            if (j_flat && k_flat) {
                continue;
            }
            if (j_flat) {
                fill_metric<Flat::j>(g, inner, j, k);
            } else if (k_flat) {
                fill_metric<Flat::k>(g, inner, j, k);
            } else {
                fill_metric<Flat::i>(g, RowPart::low_end(), j, k);
                fill_metric<Flat::none>(g, inner, j, k);
                fill_metric<Flat::i>(g, RowPart::high_end(g.nx), j, k);
            }
        }
    }
}

// Where two centres coincide (a node line drawn together on the boundary of a given mesh) both
// values stand at one point and any weight is right: the plain mean keeps 0/0 out of the fields.
template <Axis A>
[[gnu::always_inline]] inline float factor(const GridGeometry& g, CellNodes c) {
    const int n = c.pair<A>().hi;  // the face, and the index of the cell below it
    const Vec3 low = centre<A>(g, n, c);
    const float to_face = length(face_centre<A>(g, n, c) - low);
    const float to_high = length(centre<A>(g, n + 1, c) - low);
    return to_high == 0.0F ? 0.5F : to_face / to_high;
}

template <Axis A>
void fill_factors(const GridGeometry& g, Field3& f, const RowPart& run, int j, int k) {
    const NodePair jn = node_pair(j, g.ny);
    const NodePair kn = node_pair(k, g.nz);
#pragma omp simd
    for (int i = run.first; i <= run.last; ++i) {
        f(i, j, k) = factor<A>(g, run.cell(i, j, k, jn, kn));
    }
}

template <Axis A>
void fill_factor_row(const GridGeometry& g, Field3& f, int j, int k) {
    if constexpr (A == Axis::i) {
        // Face i lies on node plane i, the boundary faces included.
        fill_factors<A>(g, f, {1, g.nx, {0, 0}}, j, k);
    } else {
        fill_factors<A>(g, f, RowPart::low_end(), j, k);
        fill_factors<A>(g, f, RowPart::inner(g.nx), j, k);
        fill_factors<A>(g, f, RowPart::high_end(g.nx), j, k);
    }
}

void factors(GridGeometry& g) {
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            fill_factor_row<Axis::i>(g, g.fx, j, k);
            if (j <= g.ny) {
                fill_factor_row<Axis::j>(g, g.fy, j, k);
            }
            if (k <= g.nz) {
                fill_factor_row<Axis::k>(g, g.fz, j, k);
            }
        }
    }
}

}  // namespace

void GRID(GridGeometry& g) {
    require(g.nx >= 2 && g.ny >= 2 && g.nz >= 2, "a mesh needs a cell along each axis");
    require(g.xc.ni() == g.nx + 1 && g.xc.nj() == g.ny + 1 && g.xc.nk() == g.nz + 1,
            "the cell centres come before the metric");
    for (Field3* field : {&g.vol, &g.xix, &g.xiy, &g.xiz, &g.etx, &g.ety, &g.etz, &g.zex, &g.zey,
                          &g.zez, &g.fx, &g.fy, &g.fz}) {
        field->allocate(g.ni, g.nj, g.nk);
    }
    metric(g);
    factors(g);
}

}  // namespace torvex
