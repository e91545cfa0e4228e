// Assembly of a momentum equation, phi = u, v or w (component a of the velocity):
//
//   su = (a) cross diffusion        sum over faces  vis/vol 0.5 (L.M) D_M phi,  M other than L
//      + (b) transposed stress      sum over faces  vis/vol M_a (L.D_M u),      all M
//      + (c) pressure gradient      the face values of p times the cell's own metric
//      - (d) deferred convection    RATIO/4 times the higher-order part of the face fluxes
//   sp = 0
//   ae..ab (u only) = upwind mass flux + central diffusion vis |L|^2/vol
//
// with D_M the difference along M over the face, from corner values where M lies in the face.
//
// reads   vol, xix..zez, fx..fz; u, v, w, p, vis, den, flxU..flxW
// writes  su, sp, and ae..ab for u, in 2..nx, 2..ny, 2..nz
// plain   tests/solver/reference/plain_momentum: neighbour_coefficients, sources
//
// Every corner and every face is formed once. A thread walks upward through its planes and keeps
// what the next plane and the next row need: the corners of the plane below and the fluxes through
// bottom and south faces. Where its part begins it forms those of the plane below anew, so that
// the bits do not depend on the number of threads. All in single precision, su stored in double.

#include "solver/momentum_assembly.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "solver/fetch_ahead.hpp"
#include "solver/momentum_faces.hpp"
#include "solver/momentum_work.hpp"
#include "solver/plane_walk.hpp"
#include "solver/row.hpp"

namespace torvex {

namespace {

// What the faces of one row give.
struct FluxRows {
    float* flux;  // explicit flux
    float* mass;  // and for u mass flux and coefficients, see coupling_row
    float* to_high;
    float* to_low;
};

template <Component A>
class MomentumWalk {
 public:
    MomentumWalk(const SolverContext& c, MomentumScratch& scratch)
        : g_(c.grid),
          eq_(c.flow.eq),
          f_(c.grid, c.flow),
          scratch_(scratch),
          phi_(A == Component::u   ? f_.velocity.x
               : A == Component::v ? f_.velocity.y
                                   : f_.velocity.z),
          deferred_{.amount = 0.25F * c.settings.RATIO,
                    .upwind = 1.0F - c.settings.ETA,
                    .downstream = 1.0F + c.settings.ETA},
          east_(flux_rows(MomentumScratch::east)),
          north_(flux_rows(MomentumScratch::north)),
          south_(flux_rows(MomentumScratch::south)),
          top_(flux_rows(MomentumScratch::top)),
          deferred_row_(named(MomentumScratch::deferred)),
          no_deferred_(named(MomentumScratch::nothing)) {}

    // Corners, levels and fluxes that plane k expects of the one below.
    void start_below(int k) {
        start_column(k - 1);
        for (int j = 1; j <= g_.ny; ++j) {
            node_row<false>(j, k - 2);
        }
        start_column(k);
        node_row<true>(1, k - 1);
        for (int j = 2; j <= g_.ny; ++j) {
            node_row<true>(j, k - 1);
            faces<Axis::k>(top_, j, k - 1);
            keep_top(j);
        }
    }

    // The south side of plane k.
    void start_plane(int k) {
        start_column(k + 1);
        node_row<true>(1, k);
        faces<Axis::j>(north_, 1, k);
    }

    // Row (j,k) of the cells.
    void next_row(int j, int k, bool /*with_plane_above*/) {
        std::swap(north_, south_);
        const Place next = f_.row(j + 1, k) + 1;
        const Place above = next + f_.plane_step;
        fetch(above + f_.row_step, f_.velocity.x, f_.velocity.y, f_.velocity.z);
        node_row<true>(j, k);
        fetch(above, f_.xi.x, f_.xi.y, f_.xi.z, f_.et.x, f_.et.y);
        faces<Axis::i>(east_, j, k);
        fetch(above, f_.et.z, f_.ze.x, f_.ze.y, f_.ze.z, f_.vol, f_.vis);
        faces<Axis::j>(north_, j, k);
        fetch(above, f_.fx, f_.fy, f_.fz, f_.p);
        fetch(next, f_.flxU, f_.flxV, f_.flxW);
        faces<Axis::k>(top_, j, k);
        fetch(next, eq_.su.data(), eq_.sp.data());
        sources(j, k);
        if constexpr (A == Component::u) {
            fetch(above, f_.den);
            fetch(next, eq_.ae.data(), eq_.aw.data(), eq_.an.data(), eq_.as.data(), eq_.at.data(),
                  eq_.ab.data());
            coefficients(j, k);
        }
        keep_top(j);
    }

 private:
    float* named(int name) { return &scratch_.rows(1, name + 1); }

    FluxRows flux_rows(int name) {
        return {.flux = named(name),
                .mass = named(name + 1),
                .to_high = named(name + 2),
                .to_low = named(name + 3)};
    }

    // The row from place n on, which the walk comes to next.
    template <class... T>
    void fetch(Place n, const T*... x) const {
        fetch_cells(n, g_.ni, x...);
    }

    // u, v, w between the columns of row 1 of cell plane k.
    void start_column(int k) {
        const Place row = f_.row(1, k);
        const float* fx = f_.fx;
        for (int c = 1; c <= 3; ++c) {
            const float* x = velocity(c);
            float* column = &scratch_.column(1, c);
#pragma omp simd
            for (int i = 1; i <= g_.nx; ++i) {
                column[i] = between(x[row + i], x[row + i + 1], fx[row + i]);
            }
        }
    }

    // Row j of node plane k: the corner values lie between the level kept from the cells below and
    // that of the cells above, which takes its place. The corners of the plane below move to
    // `lower`. Without corners only the level is made.
    template <bool with_corners>
    void node_row(int j, int k) {
        const Place above = f_.row(j, k + 1);
        const Place here = above - f_.plane_step;
        const Place next = above + f_.row_step;
        const float* fx = f_.fx;
        const float* fy = f_.fy;
        const float* fz = f_.fz;
        for (int c = 1; c <= 3; ++c) {
            const float* x = velocity(c);
            float* column = &scratch_.column(1, c);
            float* level = &scratch_.level(1, j, c);
            float* corner = &scratch_.corner(1, j, c);
            float* lower = &scratch_.lower(1, lower_row(j), c);
#pragma omp simd
            for (int i = 1; i <= g_.nx; ++i) {
                const float north = between(x[next + i], x[next + i + 1], fx[next + i]);
                const float high = between(column[i], north, fy[above + i]);
                if constexpr (with_corners) {
                    lower[i] = corner[i];
                    corner[i] = between(level[i], high, fz[here + i]);
                }
                level[i] = high;
                column[i] = north;
            }
        }
    }

    const float* velocity(int c) const {
        return c == 1 ? f_.velocity.x : (c == 2 ? f_.velocity.y : f_.velocity.z);
    }

    static int lower_row(int j) {
        return 1 + j % 2;
    }

    CornerRows corners(int j, int c) const {
        return {&scratch_.corner(1, j, c), &scratch_.corner(1, std::max(j - 1, 1), c),
                &scratch_.lower(1, lower_row(j), c), &scratch_.lower(1, lower_row(j + 1), c)};
    }

    template <Axis L>
    int last() const {
        return L == Axis::i ? g_.nx : (L == Axis::j ? g_.ny : g_.nz);
    }

    // The faces of row (j,k) across axis L. Boundary faces carry no deferred convection.
    template <Axis L>
    void faces(const FluxRows& out, int j, int k) {
        const Place row = f_.row(j, k);
        const FaceRange all{L == Axis::i ? 1 : 2, g_.nx};
        const float* F = f_.flux<L>() + row;
        if constexpr (A == Component::u) {
            coupling_row<L>(f_, row, all, out.mass, out.to_high, out.to_low);
            F = out.mass;
        }
        const int n = L == Axis::j ? j : k;
        const float* deferred = no_deferred_;
        if (L == Axis::i || (n >= 2 && n < last<L>())) {
            const FaceRange inner{2, L == Axis::i ? g_.nx - 1 : g_.nx};
            deferred_row(deferred_, phi_, row, f_.step<L>(), inner, F, deferred_row_);
            deferred_row_[1] = 0.0F;
            deferred_row_[g_.nx] = L == Axis::i ? 0.0F : deferred_row_[g_.nx];
            deferred = deferred_row_;
        }
        stress_row<A, L>(f_, row, all, corners(j, 1), corners(j, 2), corners(j, 3), deferred,
                         out.flux);
    }

    // su and sp of a row of cells from the fluxes of its faces and the pressure.
    void sources(int j, int k) {
        const Place row = f_.row(j, k);
        const Place south_step = f_.row_step;
        const Place below_step = f_.plane_step;
        const float* east = east_.flux;
        const float* north = north_.flux;
        const float* south = south_.flux;
        const float* top = top_.flux;
        const float* bottom = &scratch_.bottom(1, j);
        const float* p = f_.p;
        const float* fx = f_.fx;
        const float* fy = f_.fy;
        const float* fz = f_.fz;
        const float* xi = own(f_.xi);
        const float* et = own(f_.et);
        const float* ze = own(f_.ze);
        double* su = eq_.su.data();
        double* sp = eq_.sp.data();
        along_row(2, g_.nx, [=](int i) {
            const Place n = row + i;
            const Place s = n - south_step;
            const Place b = n - below_step;
            const float viscous =
                (east[i] - east[i - 1]) + (north[i] - south[i]) + (top[i] - bottom[i]);
            const float p_i = between(p[n - 1], p[n], fx[n - 1]) - between(p[n], p[n + 1], fx[n]);
            const float p_j = between(p[s], p[n], fy[s]) - between(p[n], p[n + south_step], fy[n]);
            const float p_k = between(p[b], p[n], fz[b]) - between(p[n], p[n + below_step], fz[n]);
            const float pressure = p_i * xi[n] + p_j * et[n] + p_k * ze[n];
            su[n] = static_cast<double>(viscous + pressure);
            sp[n] = 0.0;
        });
        double_the_ends<Axis::i>(row, {2, 2}, 2);
        double_the_ends<Axis::i>(row, {g_.nx, g_.nx}, g_.nx);
        double_the_ends<Axis::j>(row, {2, g_.nx}, j);
        double_the_ends<Axis::k>(row, {2, g_.nx}, k);
    }

    // A difference across the half cell at a boundary counts twice, but only in the cell beside
    // that boundary and not in the next one, so that the two cells at the second inner face see
    // different fluxes: the faces carry the single difference, and the second one is added here.
    // n is the cell's index along L; a line of one cell has no inner face.
    template <Axis L>
    void double_the_ends(Place row, FaceRange cells, int n) {
        const bool at_start = n == 2;
        if ((!at_start && n != last<L>()) || last<L>() == 2) {
            return;
        }
        const Place step = f_.step<L>();
        for (int i = cells.first; i <= cells.last; ++i) {
            const Place c = row + i;
            if (at_start) {
                const float F = std::max(flux<L>(c), 0.0F);
                take_deferred(c, (phi_[c] - phi_[c - step]) * F);
            }
            if (n == last<L>()) {
                const float F = std::min(flux<L>(c - step), 0.0F);
                take_deferred(c, (phi_[c + step] - phi_[c]) * F);
            }
        }
    }

    void take_deferred(Place c, float flux) {
        eq_.su.data()[c] -= static_cast<double>(deferred_.amount * (deferred_.upwind * flux));
    }

    // Flux of the deferred convection through the high face of a cell: mass in u, volume in v, w.
    template <Axis L>
    float flux(Place c) const {
        if constexpr (A == Component::u) {
            const float* den = f_.den;
            return between(den[c], den[c + f_.step<L>()], f_.factor<L>()[c]) * f_.flux<L>()[c];
        } else {
            return f_.flux<L>()[c];
        }
    }

    void coefficients(int j, int k) {
        const float* bottom = &scratch_.bottom_to_low(1, j);
        const Place row = f_.row(j, k);
        float* ae = eq_.ae.data();
        float* aw = eq_.aw.data();
        float* an = eq_.an.data();
        float* as = eq_.as.data();
        float* at = eq_.at.data();
        float* ab = eq_.ab.data();
        const FluxRows east = east_;
        const FluxRows north = north_;
        const FluxRows south = south_;
        const FluxRows top = top_;
        along_row(2, g_.nx, [=](int i) {
            const Place n = row + i;
            ae[n] = east.to_high[i];
            aw[n] = east.to_low[i - 1];
            an[n] = north.to_high[i];
            as[n] = south.to_low[i];
            at[n] = top.to_high[i];
            ab[n] = bottom[i];
        });
    }

    // The top faces of row j are the bottom faces of the next plane.
    void keep_top(int j) {
        float* bottom = &scratch_.bottom(1, j);
        float* bottom_to_low = &scratch_.bottom_to_low(1, j);
        for (int i = 2; i <= g_.nx; ++i) {
            bottom[i] = top_.flux[i];
        }
        if constexpr (A == Component::u) {
            for (int i = 2; i <= g_.nx; ++i) {
                bottom_to_low[i] = top_.to_low[i];
            }
        }
    }

    static const float* own(const VectorField& area) {
        return A == Component::u ? area.x : (A == Component::v ? area.y : area.z);
    }

    const GridGeometry& g_;
    LinearSystem& eq_;
    MomentumFields f_;
    MomentumScratch& scratch_;
    const float* phi_;
    Deferred deferred_;
    FluxRows east_, north_, south_, top_;
    float* deferred_row_;
    const float* no_deferred_;  // never written, all 0
};

}  // namespace

template <Component A>
void assemble_momentum(const SolverContext& c, MomentumWork& work) {
    fit(work, c.grid);
    walk_planes(c.grid,
                [&](std::size_t thread) { return MomentumWalk<A>(c, work.threads[thread]); });
}

template void assemble_momentum<Component::u>(const SolverContext&, MomentumWork&);
template void assemble_momentum<Component::v>(const SolverContext&, MomentumWork&);
template void assemble_momentum<Component::w>(const SolverContext&, MomentumWork&);

}  // namespace torvex
