#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "mesh/cell_nodes.hpp"
#include "mesh/vec3.hpp"
#include "solver/interpolation.hpp"
#include "solver/momentum_component.hpp"
#include "solver/row.hpp"

// What passes through the faces of a row, each face once. Face i of axis L lies between cell i of
// the row and its neighbour on the high side of L. A place is the linear index of a cell, which all
// cell arrays share: row + i, the neighbour at + step. The kernels take bare pointers on purpose:
// they read some thirty arrays, and with a checked Row for each the assembly was a fifth slower.
namespace torvex {

using Place = std::ptrdiff_t;

// The three components of a vector field.
struct VectorField {
    const float* x;
    const float* y;
    const float* z;

    [[gnu::always_inline]] Vec3 at(Place n) const { return {x[n], y[n], z[n]}; }
    template <Component A>
    [[gnu::always_inline]] const float* of() const {
        return A == Component::u ? x : (A == Component::v ? y : z);
    }
};

// The mesh and the flow as bare arrays.
struct MomentumFields {
    Place row_step, plane_step;
    VectorField velocity;
    VectorField xi, et, ze;
    const float *fx, *fy, *fz;
    const float *flxU, *flxV, *flxW;
    const float *vol, *vis, *den, *p;

    MomentumFields(const GridGeometry& g, const FlowState& s)
        : row_step(g.ni),
          plane_step(Place{g.ni} * g.nj),
          velocity{s.u.data(), s.v.data(), s.w.data()},
          xi{g.xix.data(), g.xiy.data(), g.xiz.data()},
          et{g.etx.data(), g.ety.data(), g.etz.data()},
          ze{g.zex.data(), g.zey.data(), g.zez.data()},
          fx(g.fx.data()),
          fy(g.fy.data()),
          fz(g.fz.data()),
          flxU(s.flxU.data()),
          flxV(s.flxV.data()),
          flxW(s.flxW.data()),
          vol(g.vol.data()),
          vis(s.vis.data()),
          den(s.den.data()),
          p(s.p.data()) {}

    // Place of the cell before the first one of row (j,k).
    Place row(int j, int k) const { return (j - 1) * row_step + (k - 1) * plane_step - 1; }

    template <Axis L>
    Place step() const {
        return L == Axis::i ? 1 : (L == Axis::j ? row_step : plane_step);
    }
    template <Axis L>
    const float* factor() const {
        return L == Axis::i ? fx : (L == Axis::j ? fy : fz);
    }
    template <Axis L>
    const float* flux() const {
        return L == Axis::i ? flxU : (L == Axis::j ? flxV : flxW);
    }
    template <Axis L>
    const VectorField& area() const {
        return L == Axis::i ? xi : (L == Axis::j ? et : ze);
    }
};

// Rows of u, v or w at the nodes: rows j and j-1 of the upper and of the lower node plane.
struct CornerRows {
    const float* up;
    const float* up_south;
    const float* low;
    const float* low_south;
};

// The axes M and N that lie in a face of axis L, in the order i, j, k.
template <Axis L>
inline constexpr Axis first_across = L == Axis::i ? Axis::j : Axis::i;
template <Axis L>
inline constexpr Axis second_across = L == Axis::k ? Axis::j : Axis::k;

// Differences along those two axes over the face, twice as large as between two cells.
struct InFace {
    float m, n;
};

template <Axis L>
[[gnu::always_inline]] inline InFace in_face(const CornerRows& c, int i) {
    const float high_high = c.up[i];
    const float high_low = L == Axis::k ? c.up_south[i] : c.low[i];
    const float low_high = L == Axis::i ? c.up_south[i] : c.up[i - 1];
    const float low_low =
        L == Axis::i ? c.low_south[i] : (L == Axis::j ? c.low[i - 1] : c.up_south[i - 1]);
    return {high_high + high_low - low_high - low_low, high_high + low_high - high_low - low_low};
}

// A vector for each of the axes L, M, N of a face.
struct FaceVectors {
    Vec3 l, m, n;
};

// The metric part of the explicit stress, in the cell on one side of a face of axis L:
//
//   (b)  M_a (L . D_M u), halved where D_M is the double difference within the face
//   (a)  0.5 (L . M) D_M u_a for the two M within the face
template <Component A>
[[gnu::always_inline]] inline float stress_side(const FaceVectors& area, const FaceVectors& d) {
    const auto& [l, m, n] = area;
    const float across = component<A>(l) * dot(l, d.l);
    const float along_m = component<A>(m) * dot(l, d.m) + dot(l, m) * component<A>(d.m);
    const float along_n = component<A>(n) * dot(l, d.n) + dot(l, n) * component<A>(d.n);
    return across + 0.5F * (along_m + along_n);
}

struct FaceRange {
    int first, last;
};

// Where the viscosity on a row of faces comes from: between the cells on both sides, or from the
// law of a wall, face by face.
enum class FaceViscosity : std::uint8_t { of_cells, of_law };

// What a row of faces carries of a component: its deferred convection, and the explicit flux.
template <Component A>
struct FaceRow {
    const float* deferred;
    float* flux;
};

template <FaceViscosity viscosity>
[[gnu::always_inline]] inline float face_viscosity(const float* vis, const float* law, int i,
                                                   Place low, Place high, float weight) {
    if constexpr (viscosity == FaceViscosity::of_law) {
        return law[i];
    } else {
        return between(vis[low], vis[high], weight);
    }
}

// The explicit flux through the faces of a row, counted towards rising index: cross diffusion (a)
// and transposed stress (b) less the deferred convection of each face.
template <Axis L, FaceViscosity viscosity, Component... A>
[[gnu::flatten]] void stress_row(const MomentumFields& f, Place row, FaceRange range,
                                 const float* law, const CornerRows& u, const CornerRows& v,
                                 const CornerRows& w, FaceRow<A>... out) {
    const Place step = f.step<L>();
    const float* factor = f.factor<L>();
    const VectorField area_l = f.area<L>();
    const VectorField area_m = f.area<first_across<L>>();
    const VectorField area_n = f.area<second_across<L>>();
    const VectorField velocity = f.velocity;
    const float* vis = f.vis;
    const float* vol = f.vol;
    along_row(range.first, range.last, [=](int i) {
        const Place low = row + i;
        const Place high = low + step;
        const InFace du = in_face<L>(u, i);
        const InFace dv = in_face<L>(v, i);
        const InFace dw = in_face<L>(w, i);
        const FaceVectors d{
            velocity.at(high) - velocity.at(low), {du.m, dv.m, dw.m}, {du.n, dv.n, dw.n}};
        const FaceVectors areas_low{area_l.at(low), area_m.at(low), area_n.at(low)};
        const FaceVectors areas_high{area_l.at(high), area_m.at(high), area_n.at(high)};
        const float weight = factor[low];
        const float gain = face_viscosity<viscosity>(vis, law, i, low, high, weight) /
                           between(vol[low], vol[high], weight);
        ((out.flux[i] =
              gain * between(stress_side<A>(areas_low, d), stress_side<A>(areas_high, d), weight) -
              out.deferred[i]),
         ...);
    });
}

// Mass flux of the faces, and the coefficients that couple the two cells: to_high of the low cell
// towards the high one, to_low of the high cell towards the low one.
template <Axis L, FaceViscosity viscosity>
void coupling_row(const MomentumFields& f, Place row, FaceRange range, const float* law,
                  float* mass, float* to_high, float* to_low) {
    const Place step = f.step<L>();
    const float* factor = f.factor<L>();
    const float* volume_flux = f.flux<L>();
    const VectorField area = f.area<L>();
    const float* vis = f.vis;
    const float* vol = f.vol;
    const float* den = f.den;
    along_row(range.first, range.last, [=](int i) {
        const Place low = row + i;
        const Place high = low + step;
        const float weight = factor[low];
        const Vec3 l = area.at(low);
        const Vec3 h = area.at(high);
        const float diffusion = face_viscosity<viscosity>(vis, law, i, low, high, weight) *
                                between(dot(l, l), dot(h, h), weight) /
                                between(vol[low], vol[high], weight);
        const float F = between(den[low], den[high], weight) * volume_flux[low];
        mass[i] = F;
        to_high[i] = std::max(-F, 0.0F) + diffusion;
        to_low[i] = std::max(F, 0.0F) + diffusion;
    });
}

// Weights of the deferred convection.
struct Deferred {
    float amount;      // RATIO / 4
    float upwind;      // 1 - ETA, of the difference on the upwind side
    float downstream;  // 1 + ETA, of that across the face
};

// The deferred part of convection through a row of inner faces. F is the flux of face i at F[i].
inline void deferred_row(const Deferred& d, const float* phi, Place row, Place step,
                         FaceRange range, const float* F, float* deferred) {
    along_row(range.first, range.last, [=](int i) {
        const Place n = row + i;
        const float before = phi[n] - phi[n - step];
        const float across = phi[n + step] - phi[n];
        const float after = phi[n + 2 * step] - phi[n + step];
        const float forward = d.upwind * before + d.downstream * across;
        const float backward = d.downstream * across + d.upwind * after;
        deferred[i] = d.amount * (forward * std::max(F[i], 0.0F) - backward * std::min(F[i], 0.0F));
    });
}

// The fluxes about a row of cells, and where its source goes.
template <Component A, class T>
struct CellRow {
    const float *east, *north, *south, *top, *bottom;
    T* su;
};

// The sources of a row of cells from the fluxes through its faces and the pressure, whose face
// values act on the metrics of the cell itself.
template <class T, Component... A>
[[gnu::flatten]] void source_row(const MomentumFields& f, Place row, FaceRange range,
                                 CellRow<A, T>... out) {
    const Place south_step = f.row_step;
    const Place below_step = f.plane_step;
    const float* p = f.p;
    const float* fx = f.fx;
    const float* fy = f.fy;
    const float* fz = f.fz;
    const VectorField xi = f.xi;
    const VectorField et = f.et;
    const VectorField ze = f.ze;
    along_row(range.first, range.last, [=](int i) {
        const Place n = row + i;
        const Place s = n - south_step;
        const Place b = n - below_step;
        const float p_i = between(p[n - 1], p[n], fx[n - 1]) - between(p[n], p[n + 1], fx[n]);
        const float p_j = between(p[s], p[n], fy[s]) - between(p[n], p[n + south_step], fy[n]);
        const float p_k = between(p[b], p[n], fz[b]) - between(p[n], p[n + below_step], fz[n]);
        const auto source = [&]<Component C>(const CellRow<C, T>& cell) {
            const float viscous = (cell.east[i] - cell.east[i - 1]) +
                                  (cell.north[i] - cell.south[i]) + (cell.top[i] - cell.bottom[i]);
            const float pressure = p_i * xi.template of<C>()[n] + p_j * et.template of<C>()[n] +
                                   p_k * ze.template of<C>()[n];
            cell.su[n] = static_cast<T>(viscous + pressure);
        };
        (source(out), ...);
    });
}

}  // namespace torvex
