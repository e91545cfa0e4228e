#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "solver/fetch_ahead.hpp"
#include "solver/momentum_faces.hpp"
#include "solver/momentum_work.hpp"
#include "solver/plane_walk.hpp"
#include "solver/row.hpp"

namespace torvex {

// The walk of walk_planes that assembles the components A, with u the coefficients as well. The
// sources are stored as T.
template <class T, Component... A>
class MomentumWalk {
 public:
    static constexpr std::size_t count = sizeof...(A);

    // su of each component, and what is to be 0 beside it or nothing.
    MomentumWalk(const SolverContext& c, MomentumScratch& scratch, std::array<Array3<T>*, count> su,
                 Array3<double>* sp)
        : g_(c.grid),
          flow_(c.flow),
          log_faces_(c.walls.log_faces),
          eq_(c.flow.eq),
          f_(c.grid, c.flow),
          scratch_(scratch),
          su_(su),
          sp_(sp),
          deferred_{.amount = 0.25F * c.settings.RATIO,
                    .upwind = 1.0F - c.settings.ETA,
                    .downstream = 1.0F + c.settings.ETA},
          east_(flux_rows(MomentumScratch::east)),
          north_(flux_rows(MomentumScratch::north)),
          south_(flux_rows(MomentumScratch::south)),
          top_(flux_rows(MomentumScratch::top)),
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
        (fetch(next, su<A>()), ...);
        if (sp_ != nullptr) {
            fetch(next, sp_->data());
        }
        sources(j, k);
        if constexpr (with_coefficients) {
            fetch(above, f_.den);
            fetch(next, eq_.ae.data(), eq_.aw.data(), eq_.an.data(), eq_.as.data(), eq_.at.data(),
                  eq_.ab.data());
            coefficients(j, k);
        }
        keep_top(j);
    }

 private:
    static constexpr bool with_coefficients = ((A == Component::u) || ...);

    // Which of the components C is.
    template <Component C>
    static constexpr int number() {
        int n = 0;
        int found = 0;
        ((found = A == C ? n : found, ++n), ...);
        return found;
    }

    // What the faces of one row give.
    struct FluxRows {
        float* first_flux;  // explicit fluxes, one row behind the other
        Place next_flux;
        float* mass;  // and with u mass flux and coefficients, see coupling_row
        float* to_high;
        float* to_low;

        template <Component C>
        float* flux() const {
            return first_flux + number<C>() * next_flux;
        }
    };

    float* named(int name) const { return &scratch_.rows(1, name + 1); }

    FluxRows flux_rows(int name) const {
        constexpr int fluxes = MomentumScratch::components;
        return {.first_flux = named(name),
                .next_flux = scratch_.rows.ni(),
                .mass = named(name + fluxes),
                .to_high = named(name + fluxes + 1),
                .to_low = named(name + fluxes + 2)};
    }
    template <Component C>
    float* bottom(int j) const {
        return &scratch_.bottom(1, j, 1 + number<C>());
    }
    template <Component C>
    const float* phi() const {
        return f_.velocity.template of<C>();
    }
    template <Component C>
    T* su() const {
        return su_[number<C>()]->data();
    }

    // The row from place n on, which the walk comes to next.
    template <class... X>
    void fetch(Place n, const X*... x) const {
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

    // The viscosity of the log law on the faces of row (j,k) across axis L; null where there is
    // none.
    template <Axis L>
    const float* law_of_faces(int j, int k) const {
        float* const of_face = named(MomentumScratch::log_viscosity);
        const bool found =
            L != Axis::i && log_face_viscosity(log_faces_, g_, flow_, LogFlux::of_speed, L, j, k,
                                               {of_face + 1, g_.nx});
        return found ? of_face : nullptr;
    }

    // The faces of row (j,k) across axis L. Boundary faces carry no deferred convection.
    template <Axis L>
    void faces(const FluxRows& out, int j, int k) {
        if (const float* const law = law_of_faces<L>(j, k)) {
            faces_of<L, FaceViscosity::of_law>(out, law, j, k);
        } else {
            faces_of<L, FaceViscosity::of_cells>(out, nullptr, j, k);
        }
    }

    template <Axis L, FaceViscosity viscosity>
    void faces_of(const FluxRows& out, const float* law, int j, int k) {
        const Place row = f_.row(j, k);
        const FaceRange all{L == Axis::i ? 1 : 2, g_.nx};
        if constexpr (with_coefficients) {
            coupling_row<L, viscosity>(f_, row, all, law, out.mass, out.to_high, out.to_low);
        }
        stress_row<L, viscosity>(f_, row, all, law, corners(j, 1), corners(j, 2), corners(j, 3),
                                 FaceRow<A>{deferred<L, A>(out, j, k), out.template flux<A>()}...);
    }

    // The deferred convection of C through those faces: of u with the mass flux, of v and w with
    // the volume flux.
    template <Axis L, Component C>
    const float* deferred(const FluxRows& faces, int j, int k) {
        const int n = L == Axis::j ? j : k;
        if (L != Axis::i && (n < 2 || n >= last<L>())) {
            return no_deferred_;
        }
        const Place row = f_.row(j, k);
        const float* F = C == Component::u ? faces.mass : f_.flux<L>() + row;
        const FaceRange inner{2, L == Axis::i ? g_.nx - 1 : g_.nx};
        float* deferred = named(MomentumScratch::deferred + number<C>());
        deferred_row(deferred_, phi<C>(), row, f_.step<L>(), inner, F, deferred);
        deferred[1] = 0.0F;
        deferred[g_.nx] = L == Axis::i ? 0.0F : deferred[g_.nx];
        return deferred;
    }

    // The sources of a row of cells, and sp.
    void sources(int j, int k) {
        const Place row = f_.row(j, k);
        source_row<T, A...>(f_, row, {2, g_.nx},
                            CellRow<A, T>{east_.template flux<A>(), north_.template flux<A>(),
                                          south_.template flux<A>(), top_.template flux<A>(),
                                          bottom<A>(j), su<A>()}...);
        if (sp_ != nullptr) {
            std::fill_n(sp_->data() + row + 2, g_.nx - 1, 0.0);
        }
        (double_the_ends<A>(row, j, k), ...);
    }

    template <Component C>
    void double_the_ends(Place row, int j, int k) {
        double_the_ends<C, Axis::i>(row, {2, 2}, 2);
        double_the_ends<C, Axis::i>(row, {g_.nx, g_.nx}, g_.nx);
        double_the_ends<C, Axis::j>(row, {2, g_.nx}, j);
        double_the_ends<C, Axis::k>(row, {2, g_.nx}, k);
    }

    // A difference across the half cell at a boundary counts twice, but only in the cell beside
    // that boundary and not in the next one, so that the two cells at the second inner face see
    // different fluxes: the faces carry the single difference, and the second one is added here.
    // n is the cell's index along L; a line of one cell has no inner face.
    template <Component C, Axis L>
    void double_the_ends(Place row, FaceRange cells, int n) {
        const bool at_start = n == 2;
        if ((!at_start && n != last<L>()) || last<L>() == 2) {
            return;
        }
        const Place step = f_.step<L>();
        const float* x = phi<C>();
        for (int i = cells.first; i <= cells.last; ++i) {
            const Place c = row + i;
            if (at_start) {
                const float F = std::max(flux<C, L>(c), 0.0F);
                take_deferred<C>(c, (x[c] - x[c - step]) * F);
            }
            if (n == last<L>()) {
                const float F = std::min(flux<C, L>(c - step), 0.0F);
                take_deferred<C>(c, (x[c + step] - x[c]) * F);
            }
        }
    }

    template <Component C>
    void take_deferred(Place c, float flux) {
        su<C>()[c] -= static_cast<T>(deferred_.amount * (deferred_.upwind * flux));
    }

    // Flux of the deferred convection of C through the high face of a cell.
    template <Component C, Axis L>
    float flux(Place c) const {
        if constexpr (C == Component::u) {
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
        (keep_row(top_.template flux<A>(), bottom<A>(j)), ...);
        if constexpr (with_coefficients) {
            keep_row(top_.to_low, &scratch_.bottom_to_low(1, j));
        }
    }
    void keep_row(const float* row, float* kept) const {
        std::copy(row + 2, row + g_.nx + 1, kept + 2);
    }

    const GridGeometry& g_;
    const FlowState& flow_;
    const LogFaces& log_faces_;
    LinearSystem& eq_;
    MomentumFields f_;
    MomentumScratch& scratch_;
    std::array<Array3<T>*, count> su_;
    Array3<double>* sp_;
    Deferred deferred_;
    FluxRows east_, north_, south_, top_;
    const float* no_deferred_;  // never written, all 0
};

}  // namespace torvex
