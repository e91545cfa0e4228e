#pragma once

#include "mesh/cell_nodes.hpp"
#include "mesh/grid_geometry.hpp"
#include "mesh/vec3.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// d: what a velocity component of a cell gains per unit of the pressure drop across the cell along
// one direction of the mesh [m3 s/kg], from the component's metric in that direction [m2] and the
// central coefficient ap of its equation [kg/s]. The momentum equations leave it in dUxi..dWze; the
// face fluxes, the equation of the pressure correction and the corrections all take it from there.
[[gnu::always_inline]] inline float pressure_gain(float metric, float ap) {
    return metric / ap;
}

// The gains of u, v and w in a cell along one direction, where each component has an ap of its own.
class StoredGains {
 public:
    explicit StoredGains(const FlowState& s) : s_(s) {}

    template <Axis A>
    [[gnu::always_inline]] Vec3 along(int i, int j, int k) const {
        if constexpr (A == Axis::i) {
            return {s_.dUxi(i, j, k), s_.dVxi(i, j, k), s_.dWxi(i, j, k)};
        } else if constexpr (A == Axis::j) {
            return {s_.dUet(i, j, k), s_.dVet(i, j, k), s_.dWet(i, j, k)};
        } else {
            return {s_.dUze(i, j, k), s_.dVze(i, j, k), s_.dWze(i, j, k)};
        }
    }
    // Asks for row (j,k) of the gains along i and j, and row (j,k_ze) of those along k.
    void fetch(int j, int k, int k_ze) const {
        fetch_row(j, k, s_.dUxi, s_.dVxi, s_.dWxi, s_.dUet, s_.dVet, s_.dWet);
        fetch_row(j, k_ze, s_.dUze, s_.dVze, s_.dWze);
    }

 private:
    const FlowState& s_;
};

// The same where all three share the unrelaxed centre 1/rap of their matrix and ap is that over the
// relaxation factor of the component.
class SharedGains {
 public:
    SharedGains(const GridGeometry& g, const Field3& rap, Vec3 urf) : g_(g), rap_(rap), urf_(urf) {}

    template <Axis A>
    [[gnu::always_inline]] Vec3 along(int i, int j, int k) const {
        const float rap = rap_(i, j, k);
        const float u = urf_.x * rap;
        const float v = urf_.y * rap;
        const float w = urf_.z * rap;
        if constexpr (A == Axis::i) {
            return {g_.xix(i, j, k) * u, g_.xiy(i, j, k) * v, g_.xiz(i, j, k) * w};
        } else if constexpr (A == Axis::j) {
            return {g_.etx(i, j, k) * u, g_.ety(i, j, k) * v, g_.etz(i, j, k) * w};
        } else {
            return {g_.zex(i, j, k) * u, g_.zey(i, j, k) * v, g_.zez(i, j, k) * w};
        }
    }
    void fetch(int j, int k, int k_ze) const {
        fetch_row(j, k, g_.xix, g_.xiy, g_.xiz, g_.etx, g_.ety, g_.etz);
        fetch_row(j, k_ze, g_.zex, g_.zey, g_.zez, rap_);
    }

 private:
    const GridGeometry& g_;
    const Field3& rap_;
    Vec3 urf_;
};

}  // namespace torvex
